// rig/world/world.cpp
#include "rig/world/world.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "platform/files.h"
#include "rig/world/idle_motion.h"

namespace fs = std::filesystem;

namespace rig {

namespace {

WorldObject userAt(const UserStart& start, const Ground& ground) {
    WorldObject user;
    user.id = userObjectId;
    user.type = start.type;
    user.tailNumber = "USER";
    user.position.lat = start.at.lat;
    user.position.lon = start.at.lon;
    user.position.headingRad = start.headingDegrees * radiansPerDegree;
    user.position.altFeet = start.altFeet.value_or(ground.elevationFeet(start.at) + start.type.cgHeightFeet);
    user.position.trueKnots = start.knots;
    return user;
}

/// The place is checked, the rest is as the client wants it.
bool isOnEarth(const SIMCONNECT_DATA_INITPOSITION& position) {
    const double altitude = position.Altitude;
    const double angles = position.Pitch + position.Bank + position.Heading;
    return std::abs(position.Latitude) <= 90 && std::abs(position.Longitude) <= 180 && std::isfinite(altitude) &&
           std::isfinite(angles);
}

Position positionFrom(const SIMCONNECT_DATA_INITPOSITION& position) {
    return {position.Latitude,
            position.Longitude,
            position.Pitch * radiansPerDegree,
            position.Bank * radiansPerDegree,
            position.Heading * radiansPerDegree,
            position.Altitude,
            0,
            static_cast<double>(position.Airspeed)};
}

bool wantsAircraft(DWORD objectType) {
    return objectType == SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT || objectType == SIMCONNECT_SIMOBJECT_TYPE_ALL;
}

} // namespace

World::World(Scene scene, AircraftTitles titles, TraceWriter* trace)
    : scene_(std::move(scene)), titles_(std::move(titles)), trace_(trace), framesPerSecond_(scene_.framesPerSecond),
      user_(userAt(scene_.user, scene_.ground)) {
    std::stable_sort(scene_.acts.begin(), scene_.acts.end(),
                     [](const Act& a, const Act& b) { return a.atSeconds < b.atSeconds; });
}

// --- A frame ---------------------------------------------------------------------------------------------------------

void World::step(double seconds) {
    if (quit_) {
        return;
    }
    elapsed_ += seconds;
    if (isStalled()) {
        stallSeconds_ -= seconds;
        return;
    }
    playDueActs();
    if (quit_ || isStalled()) {
        return;
    }
    for (ClientSession* client : clients_) {
        client->handleRequests();
    }
    bool secondBegins = false;
    if (running_) {
        secondBegins = std::floor(simulated_ + seconds) > std::floor(simulated_);
        simulated_ += seconds;
        userMotion_.advance(user_, scene_.ground, seconds);
        for (auto& [id, aircraft] : aircraft_) {
            moveIdly(aircraft, groundFeet(aircraft.position.place()), seconds);
        }
    }
    letObjectsBeSeen();
    tellClients(seconds, secondBegins);
    traceFrame();
}

void World::playDueActs() {
    while (nextAct_ < scene_.acts.size() && scene_.acts[nextAct_].atSeconds <= elapsed_ && !quit_ && !isStalled()) {
        std::visit([this](const auto& act) { play(act); }, scene_.acts[nextAct_++].kind);
    }
}

void World::letObjectsBeSeen() {
    for (auto& [id, aircraft] : aircraft_) {
        if (aircraft.isSeen() || --aircraft.framesUntilSeen > 0) {
            continue;
        }
        note(TraceEventKind::appeared, id, 0, aircraft.type.title, aircraft.tailNumber);
        for (ClientSession* client : clients_) {
            client->sendEvent(SystemEventKind::objectAdded, id);
        }
    }
}

void World::tellClients(double seconds, bool secondBegins) {
    const double simSpeed = running_ ? seconds * framesPerSecond_ : 0;
    for (ClientSession* client : clients_) {
        client->answerPeriodicRequests(secondBegins);
        client->sendFrame(static_cast<float>(framesPerSecond_), static_cast<float>(simSpeed));
    }
}

void World::traceFrame() {
    if (trace_ == nullptr) {
        return;
    }
    trace_->beginFrame(simulated_, elapsed_);
    trace_->object(user_.id, user_.position);
    for (const auto& [id, aircraft] : aircraft_) {
        if (aircraft.isSeen()) {
            trace_->object(id, aircraft.position);
        }
    }
    trace_->endFrame();
}

void World::note(TraceEventKind kind, DWORD objectId, double value, std::string_view name, std::string_view detail) {
    if (trace_ != nullptr) {
        trace_->event(kind, objectId, value, name, detail);
    }
}

// --- Acts ------------------------------------------------------------------------------------------------------------

void World::noteAct(std::string_view text) {
    note(TraceEventKind::act, 0, elapsed_, text);
}

void World::play(const TaxiAct& act) {
    noteAct("taxi");
    userMotion_.begin(act, user_);
}

void World::play(const FlyAct& act) {
    noteAct("fly");
    userMotion_.begin(act, user_);
}

void World::play(const ApproachAct& act) {
    noteAct("approach");
    userMotion_.begin(act, user_, scene_.ground);
}

void World::play(const TakeOffAct& act) {
    noteAct("take-off");
    userMotion_.begin(act, user_, scene_.ground);
}

void World::play(const JumpAct& act) {
    noteAct(fmt::format("jump {:.1f} nm", act.nm));
    userMotion_.forget();
    const double height = user_.position.altFeet - groundFeet(user_.position.place());
    const LatLon to = project(user_.position.place(), act.headingDegrees * radiansPerDegree, act.nm * feetPerNm);
    user_.position.lat = to.lat;
    user_.position.lon = to.lon;
    user_.position.altFeet = groundFeet(to) + height;
}

void World::play(const LoadFlightAct& act) {
    noteAct(fmt::format("load flight {}", act.file));
    for (ClientSession* client : clients_) {
        client->sendFlightLoaded(act.file);
    }
}

void World::play(const PositionChangedAct&) {
    noteAct("position changed");
    for (ClientSession* client : clients_) {
        client->sendEvent(SystemEventKind::positionChanged, 0);
    }
}

void World::setRunning(bool running) {
    running_ = running;
    for (ClientSession* client : clients_) {
        client->sendEvent(SystemEventKind::sim, running ? 1 : 0);
    }
}

void World::play(const PauseAct&) {
    noteAct("pause");
    setRunning(false);
}

void World::play(const ResumeAct&) {
    noteAct("resume");
    setRunning(true);
}

void World::play(const QuitAct&) {
    noteAct("quit");
    quit_ = true;
    for (ClientSession* client : clients_) {
        client->quit();
    }
}

void World::play(const StallAct& act) {
    noteAct(fmt::format("stall {:.1f} s", act.seconds));
    stallSeconds_ = act.seconds;
}

void World::play(const FrameRateAct& act) {
    noteAct(fmt::format("frame rate {:.0f}", act.framesPerSecond));
    framesPerSecond_ = std::clamp(act.framesPerSecond, leastFrameRate, mostFrameRate);
}

void World::play(const RefuseTitleAct& act) {
    noteAct(fmt::format("refuse {}", act.title));
    refusedTitles_.insert(act.title);
}

void World::play(const ForeignObjectAct& act) {
    noteAct(fmt::format("foreign object {}", act.tailNumber));
    CreateAircraftRequest request;
    request.title = act.title;
    request.tailNumber = act.tailNumber;
    request.position.Latitude = act.at.lat;
    request.position.Longitude = act.at.lon;
    request.position.Heading = act.headingDegrees;
    request.position.Altitude = act.altFeet.value_or(0);
    request.position.OnGround = act.altFeet ? 0 : 1;
    const Creation creation = create(request, nullptr);
    if (creation.exception == SIMCONNECT_EXCEPTION_NONE) {
        WorldObject& foreign = aircraft_.at(creation.objectId);
        foreign.released = true; // its add-on holds it
        foreign.freezes = {true, true, true};
    }
}

void World::play(const DropConnectionAct&) {
    noteAct("drop connection");
    for (ClientSession* client : clients_) {
        client->drop();
    }
}

void World::play(const ExceptionsAct& act) {
    noteAct(fmt::format("{} exceptions {}", act.count, act.exception));
    for (ClientSession* client : clients_) {
        for (int i = 0; i < act.count; ++i) {
            client->sendException(static_cast<SIMCONNECT_EXCEPTION>(act.exception), 0);
        }
    }
}

void World::play(const LyingRecordAct& act) {
    noteAct("lying record");
    for (ClientSession* client : clients_) {
        client->lie(act.lie);
    }
}

// --- Aircraft --------------------------------------------------------------------------------------------------------

void World::enter(ClientSession& client) {
    clients_.push_back(&client);
}

void World::leave(ClientSession& client) {
    std::erase(clients_, &client);
    removeObjectsOf(client);
    if (client.hasOpened()) {
        note(TraceEventKind::clientGone, 0, 0, client.clientName());
    }
}

WorldObject* World::find(DWORD objectId) {
    if (objectId == SIMCONNECT_OBJECT_ID_USER || objectId == userObjectId) {
        return &user_;
    }
    const auto found = aircraft_.find(objectId);
    return found != aircraft_.end() && found->second.isSeen() ? &found->second : nullptr;
}

World::Creation World::create(const CreateAircraftRequest& request, const ClientSession* owner) {
    const AircraftType* type = refusedTitles_.contains(request.title) ? nullptr : titles_.find(request.title);
    SIMCONNECT_EXCEPTION exception = SIMCONNECT_EXCEPTION_NONE;
    if (type == nullptr || !isOnEarth(request.position)) {
        exception = SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED;
    } else if (aircraft_.size() >= maxAircraft) {
        exception = SIMCONNECT_EXCEPTION_TOO_MANY_OBJECTS;
    }
    if (exception != SIMCONNECT_EXCEPTION_NONE) {
        note(TraceEventKind::refused, 0, exception, request.title, request.tailNumber);
        return {exception, 0};
    }
    const DWORD id = nextId_++;
    WorldObject& object = aircraft_[id];
    object.id = id;
    object.type = *type;
    object.tailNumber = request.tailNumber;
    object.owner = owner;
    object.framesUntilSeen = framesUntilSeen;
    object.position = positionFrom(request.position);
    if (request.position.OnGround != 0) {
        object.position.altFeet = groundFeet(object.position.place()) + type->cgHeightFeet;
        object.position.pitchRad = type->staticPitchRad;
    }
    note(TraceEventKind::created, id, 0, request.title, request.tailNumber);
    return {SIMCONNECT_EXCEPTION_NONE, id};
}

World::Aircraft::iterator World::erase(Aircraft::iterator aircraft) {
    const DWORD id = aircraft->first;
    const bool wasSeen = aircraft->second.isSeen();
    note(TraceEventKind::removed, id, 0, aircraft->second.type.title, aircraft->second.tailNumber);
    const auto next = aircraft_.erase(aircraft);
    if (wasSeen) {
        for (ClientSession* client : clients_) {
            client->sendEvent(SystemEventKind::objectRemoved, id);
        }
    }
    return next;
}

void World::remove(DWORD objectId) {
    if (const auto found = aircraft_.find(objectId); found != aircraft_.end()) {
        erase(found);
    }
}

void World::removeObjectsOf(const ClientSession& client) {
    for (auto it = aircraft_.begin(); it != aircraft_.end();) {
        it = it->second.owner == &client ? erase(it) : std::next(it);
    }
}

std::vector<const WorldObject*> World::objectsWithin(DWORD radiusMeters, DWORD objectType) const {
    std::vector<const WorldObject*> found;
    if (objectType == SIMCONNECT_SIMOBJECT_TYPE_USER || wantsAircraft(objectType)) {
        found.push_back(&user_);
    }
    if (!wantsAircraft(objectType)) {
        return found;
    }
    const double radiusNm = radiusMeters / metersPerNm;
    for (const auto& [id, aircraft] : aircraft_) {
        if (aircraft.isSeen() && greatCircleNm(user_.position.place(), aircraft.position.place()) <= radiusNm) {
            found.push_back(&aircraft);
        }
    }
    return found;
}

ObjectView World::view(const WorldObject& object) const {
    return {object, groundFeet(object.position.place()), zulu()};
}

ZuluTime World::zulu() const {
    using namespace std::chrono;
    const auto now = scene_.zuluStart + duration_cast<platform::WallTime::duration>(duration<double>(simulated_));
    const auto today = floor<days>(now);
    const year_month_day date(today);
    const auto newYear = sys_days{date.year() / January / 1};
    return {duration<double>(now - today).count(), static_cast<int>((today - newYear).count()) + 1,
            static_cast<int>(date.year())};
}

bool World::hasFile(const std::string& path) const {
    std::error_code ignored;
    try {
        if (fs::is_regular_file(platform::pathFromUtf8(path), ignored)) {
            return true;
        }
        const bool onDriveC = path.size() > 3 && (path[0] == 'C' || path[0] == 'c') && path[1] == ':';
        if (driveC_.empty() || !onDriveC) {
            return false;
        }
        std::string below = path.substr(3);
        std::replace(below.begin(), below.end(), '\\', '/');
        return fs::is_regular_file(driveC_ / platform::pathFromUtf8(below), ignored);
    } catch (const std::exception&) {
        return false; // no text that names a file
    }
}

} // namespace rig
