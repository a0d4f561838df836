// rig/world/client_session.cpp
#include "rig/world/client_session.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "rig/world/names.h"
#include "rig/world/world.h"

namespace rig {

namespace {

constexpr std::size_t applicationNameBytes = 256;
constexpr std::size_t fileNameBytes = 260;
/// The interface that the simulator speaks, beside its own version.
constexpr std::array<DWORD, 4> interfaceVersion{5, 0, 0, 0};
/// Texts longer than the interface allows are no tail numbers.
constexpr std::size_t maxTailNumberBytes = 12;

struct SystemEventName {
    std::string_view name;
    SystemEventKind kind;
};

constexpr SystemEventName systemEvents[] = {
    {"Sim", SystemEventKind::sim},
    {"ObjectAdded", SystemEventKind::objectAdded},
    {"ObjectRemoved", SystemEventKind::objectRemoved},
    {"PositionChanged", SystemEventKind::positionChanged},
    {"FlightLoaded", SystemEventKind::flightLoaded},
    {"Frame", SystemEventKind::frame},
};

std::optional<SystemEventKind> systemEventNamed(std::string_view name) {
    for (const SystemEventName& event : systemEvents) {
        if (sameName(event.name, name)) {
            return event.kind;
        }
    }
    return std::nullopt;
}

/// A record of this size by its own word, and whatever is behind it.
std::string recordHead(DWORD size) {
    std::string head;
    appendLittleEndian(head, size, sizeof size);
    appendLittleEndian(head, 5, sizeof(DWORD));
    appendLittleEndian(head, SIMCONNECT_RECV_ID_EVENT, sizeof(DWORD));
    return head;
}

} // namespace

ClientSession::ClientSession(World& world) : world_(world) {
    world_.enter(*this);
}

ClientSession::~ClientSession() {
    world_.leave(*this);
}

void ClientSession::receive(DWORD packetId, Request request) {
    waiting_.push_back({packetId, std::move(request)});
}

ClientSession::Output ClientSession::takeOutput() {
    return {records_.take(), std::exchange(lyingTail_, {}), ended_};
}

void ClientSession::handleRequests() {
    std::vector<SentRequest> requests;
    requests.swap(waiting_);
    for (const SentRequest& sent : requests) {
        if (ended_) {
            return;
        }
        packetId_ = sent.packetId;
        if (!opened_ && !std::holds_alternative<OpenRequest>(sent.request)) {
            refuse(SIMCONNECT_EXCEPTION_UNOPENED);
            continue;
        }
        std::visit([this](const auto& request) { handle(request); }, sent.request);
    }
    requests.clear();
    waiting_.swap(requests); // its memory serves the next frame
}

// --- What the client asks --------------------------------------------------------------------------------------------

void ClientSession::handle(const OpenRequest& request) {
    opened_ = true;
    clientName_ = request.clientName;
    world_.note(TraceEventKind::clientOpened, 0, 0, clientName_);
    const SimulatorIdentity& simulator = world_.scene().simulator;
    records_.begin(SIMCONNECT_RECV_ID_OPEN);
    records_.text(simulator.name, applicationNameBytes);
    for (const DWORD part : simulator.version) {
        records_.dword(part);
    }
    for (const DWORD part : interfaceVersion) {
        records_.dword(part);
    }
    records_.dword(0);
    records_.dword(0);
    records_.end();
}

void ClientSession::handle(const MapClientEventRequest& request) {
    const SimEvent* event = simEventNamed(request.name);
    if (event == nullptr) {
        refuse(SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED);
    } else if (!clientEvents_.emplace(request.eventId, event).second) {
        refuse(SIMCONNECT_EXCEPTION_EVENT_ID_DUPLICATE);
    }
}

void ClientSession::handle(const TransmitClientEventRequest& request) {
    const auto event = clientEvents_.find(request.eventId);
    WorldObject* object = world_.find(request.objectId);
    if (event == clientEvents_.end() || object == nullptr) {
        refuse(SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID);
        return;
    }
    event->second->apply(*object, request.data);
    world_.note(TraceEventKind::clientEvent, object->id, request.data, event->second->name);
}

void ClientSession::handle(const AddEventToGroupRequest& request) {
    if (!clientEvents_.contains(request.eventId)) {
        refuse(SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID);
    }
}

/// Nobody else listens for these events, so that priorities make no difference.
void ClientSession::handle(const GroupPriorityRequest&) {}

void ClientSession::handle(const AddToDefinitionRequest& request) {
    const SIMCONNECT_EXCEPTION result = definitions_[request.defineId].add(request);
    if (result != SIMCONNECT_EXCEPTION_NONE) {
        refuse(result);
    }
}

void ClientSession::handle(const ObjectDataRequest& request) {
    const WorldObject* object = world_.find(request.objectId);
    if (object == nullptr || definition(request.defineId) == nullptr) {
        refuse(SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID);
        return;
    }
    if (request.flags != 0 || request.origin != 0 || request.interval != 0 || request.limit != 0) {
        refuse(SIMCONNECT_EXCEPTION_OUT_OF_BOUNDS); // this simulator knows only the plain periods
        return;
    }
    periodicRequests_.erase(request.requestId);
    switch (request.period) {
    case SIMCONNECT_PERIOD_NEVER: break;
    case SIMCONNECT_PERIOD_ONCE:
        sendData(SIMCONNECT_RECV_ID_SIMOBJECT_DATA, request.requestId, request.defineId, object, {1, 1});
        break;
    case SIMCONNECT_PERIOD_VISUAL_FRAME:
    case SIMCONNECT_PERIOD_SIM_FRAME:
    case SIMCONNECT_PERIOD_SECOND: periodicRequests_[request.requestId] = request; break;
    default: refuse(SIMCONNECT_EXCEPTION_INVALID_ENUM); break;
    }
}

void ClientSession::handle(const DataByTypeRequest& request) {
    if (definition(request.defineId) == nullptr) {
        refuse(SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID);
        return;
    }
    if (request.objectType > SIMCONNECT_SIMOBJECT_TYPE_GROUND) {
        refuse(SIMCONNECT_EXCEPTION_INVALID_ENUM);
        return;
    }
    const std::vector<const WorldObject*> found = world_.objectsWithin(request.radiusMeters, request.objectType);
    const auto outOf = static_cast<DWORD>(found.size());
    if (found.empty()) {
        sendData(SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE, request.requestId, request.defineId, nullptr, {0, 0});
    }
    for (DWORD number = 1; number <= outOf; ++number) {
        sendData(SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE, request.requestId, request.defineId, found[number - 1],
                 {number, outOf});
    }
}

void ClientSession::handle(const SetDataRequest& request) {
    const DataDefinition* written = definition(request.defineId);
    WorldObject* object = world_.find(request.objectId);
    if (written == nullptr || object == nullptr) {
        refuse(SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID);
        return;
    }
    if (request.flags != 0) {
        refuse(SIMCONNECT_EXCEPTION_ILLEGAL_OPERATION); // tagged data are not known here
        return;
    }
    std::string_view data = request.data;
    const std::uint64_t elements = std::max(request.arrayCount, DWORD{1});
    if (request.unitSize == 0 || data.size() != elements * request.unitSize) {
        refuse(SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE);
        return;
    }
    written_.clear();
    for (; !data.empty(); data.remove_prefix(request.unitSize)) {
        const SIMCONNECT_EXCEPTION result = written->write(data.substr(0, request.unitSize), *object, written_);
        if (result != SIMCONNECT_EXCEPTION_NONE) {
            refuse(result);
            return;
        }
    }
    noteWrites(object->id);
}

void ClientSession::handle(const SubscribeRequest& request) {
    const std::optional<SystemEventKind> kind = systemEventNamed(request.name);
    if (!kind) {
        refuse(SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED);
        return;
    }
    for (const auto& [known, eventId] : subscriptions_) {
        if (known == *kind || eventId == request.eventId) {
            refuse(known == *kind ? SIMCONNECT_EXCEPTION_ALREADY_SUBSCRIBED : SIMCONNECT_EXCEPTION_EVENT_ID_DUPLICATE);
            return;
        }
    }
    subscriptions_[*kind] = request.eventId;
    if (*kind == SystemEventKind::sim) {
        sendEvent(SystemEventKind::sim, world_.isRunning() ? 1 : 0);
    }
}

void ClientSession::handle(const CreateAircraftRequest& request) {
    if (request.tailNumber.size() > maxTailNumberBytes) {
        refuse(SIMCONNECT_EXCEPTION_OUT_OF_BOUNDS);
        return;
    }
    const World::Creation creation = world_.create(request, this);
    if (creation.exception != SIMCONNECT_EXCEPTION_NONE) {
        refuse(creation.exception);
        return;
    }
    records_.begin(SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID);
    records_.dword(request.requestId);
    records_.dword(creation.objectId);
    records_.end();
}

void ClientSession::handle(const ReleaseControlRequest& request) {
    if (WorldObject* object = ownAircraft(request.objectId)) {
        object->released = true;
        world_.note(TraceEventKind::released, object->id, 0, {});
    }
}

void ClientSession::handle(const RemoveObjectRequest& request) {
    if (ownAircraft(request.objectId) != nullptr) {
        world_.remove(request.objectId);
    }
}

void ClientSession::handle(const FlightPlanRequest& request) {
    WorldObject* object = ownAircraft(request.objectId);
    if (object == nullptr) {
        return;
    }
    if (!world_.hasFile(request.path)) {
        refuse(SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED);
        return;
    }
    object->flightPlan = request.path;
    world_.note(TraceEventKind::flightPlan, object->id, 0, request.path);
}

const DataDefinition* ClientSession::definition(DWORD defineId) const {
    const auto found = definitions_.find(defineId);
    return found == definitions_.end() ? nullptr : &found->second;
}

WorldObject* ClientSession::ownAircraft(DWORD objectId) {
    WorldObject* object = world_.find(objectId);
    if (object == nullptr) {
        refuse(SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID);
        return nullptr;
    }
    if (object->owner != this) {
        refuse(SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE);
        return nullptr;
    }
    return object;
}

void ClientSession::noteWrites(DWORD objectId) {
    for (const DataDefinition::NamedValue& value : written_) {
        if (!value.ofPosition) {
            world_.note(TraceEventKind::written, objectId, value.value, value.name);
        }
    }
}

// --- What the client gets --------------------------------------------------------------------------------------------

void ClientSession::refuse(SIMCONNECT_EXCEPTION exception) {
    sendException(exception, packetId_);
}

void ClientSession::sendException(SIMCONNECT_EXCEPTION exception, DWORD packetId) {
    if (ended_) {
        return;
    }
    records_.begin(SIMCONNECT_RECV_ID_EXCEPTION);
    records_.dword(exception);
    records_.dword(packetId);
    records_.dword(SIMCONNECT_UNUSED);
    records_.end();
    world_.note(TraceEventKind::exception, 0, exception, {});
}

void ClientSession::sendData(SIMCONNECT_RECV_ID record, DWORD requestId, DWORD defineId, const WorldObject* object,
                             Entry entry) {
    const DataDefinition& data = definitions_.at(defineId);
    records_.begin(record);
    records_.dword(requestId);
    records_.dword(object == nullptr ? 0 : object->id);
    records_.dword(defineId);
    records_.dword(0);
    records_.dword(entry.number);
    records_.dword(entry.outOf);
    records_.dword(object == nullptr ? 0 : static_cast<DWORD>(data.count()));
    if (object != nullptr) {
        data.appendValues(world_.view(*object), records_.bytes());
    }
    records_.end();
}

void ClientSession::answerPeriodicRequests(bool secondBegins) {
    if (ended_) {
        return;
    }
    std::erase_if(periodicRequests_, [this](const auto& entry) { return !world_.find(entry.second.objectId); });
    for (const auto& [requestId, request] : periodicRequests_) {
        if (request.period != SIMCONNECT_PERIOD_SECOND || secondBegins) {
            sendData(SIMCONNECT_RECV_ID_SIMOBJECT_DATA, requestId, request.defineId, world_.find(request.objectId),
                     {1, 1});
        }
    }
}

bool ClientSession::isSubscribed(SystemEventKind kind) const {
    return !ended_ && subscriptions_.contains(kind);
}

void ClientSession::beginEvent(SIMCONNECT_RECV_ID record, SystemEventKind kind, DWORD data) {
    records_.begin(record);
    records_.dword(SIMCONNECT_UNUSED); // system events are in no group
    records_.dword(subscriptions_.at(kind));
    records_.dword(data);
}

void ClientSession::sendEvent(SystemEventKind kind, DWORD data) {
    if (!isSubscribed(kind)) {
        return;
    }
    const bool ofObject = kind == SystemEventKind::objectAdded || kind == SystemEventKind::objectRemoved;
    beginEvent(ofObject ? SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE : SIMCONNECT_RECV_ID_EVENT, kind, data);
    if (ofObject) {
        records_.dword(SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT);
    }
    records_.end();
}

void ClientSession::sendFlightLoaded(std::string_view file) {
    if (!isSubscribed(SystemEventKind::flightLoaded)) {
        return;
    }
    beginEvent(SIMCONNECT_RECV_ID_EVENT_FILENAME, SystemEventKind::flightLoaded, 0);
    records_.text(file, fileNameBytes);
    records_.dword(0);
    records_.end();
}

void ClientSession::sendFrame(float frameRate, float simSpeed) {
    if (!isSubscribed(SystemEventKind::frame)) {
        return;
    }
    beginEvent(SIMCONNECT_RECV_ID_EVENT_FRAME, SystemEventKind::frame, 0);
    records_.float32(frameRate);
    records_.float32(simSpeed);
    records_.end();
}

void ClientSession::quit() {
    if (!ended_) {
        records_.begin(SIMCONNECT_RECV_ID_QUIT);
        records_.end();
        ended_ = true;
    }
}

void ClientSession::drop() {
    ended_ = true;
    world_.removeObjectsOf(*this);
}

void ClientSession::lie(Lie lie) {
    constexpr DWORD soundBytes = 24;
    constexpr DWORD belowHead = 8;
    constexpr DWORD hundredMegabytes = 100'000'000;
    switch (lie) {
    case Lie::badSize: lyingTail_ = recordHead(belowHead); break;
    case Lie::half: lyingTail_ = recordHead(soundBytes); break;
    case Lie::zeroSize: lyingTail_ = recordHead(0); break;
    case Lie::huge: lyingTail_ = recordHead(hundredMegabytes); break;
    }
    drop();
}

} // namespace rig
