#include "tests/rig/world/world_client.h"

#include <gtest/gtest.h>

#include <bit>
#include <utility>

#include "sim/sim_ids.h"

using namespace rig;

namespace {

std::uint64_t numberAt(const std::string& bytes, std::size_t at, std::size_t size) {
    if (at + size > bytes.size()) {
        ADD_FAILURE() << "no " << size << " bytes at " << at << " of " << bytes.size();
        return 0;
    }
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
        value |= std::uint64_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
    }
    return value;
}

} // namespace

DWORD Received::dword(std::size_t at) const {
    return static_cast<DWORD>(numberAt(bytes, at, 4));
}

float Received::float32(std::size_t at) const {
    return std::bit_cast<float>(dword(at));
}

double Received::float64(std::size_t at) const {
    return std::bit_cast<double>(numberAt(bytes, at, 8));
}

std::int64_t Received::int64(std::size_t at) const {
    return static_cast<std::int64_t>(numberAt(bytes, at, 8));
}

std::string Received::text(std::size_t at) const {
    return at < bytes.size() ? bytes.substr(at, bytes.find('\0', at) - at) : "";
}

WorldClient::WorldClient(World& world) : world_(world), session_(world) {
    sends(OpenRequest{"Test"});
    world_.step();
    records();
}

DWORD WorldClient::sends(Request request) {
    session_.receive(++lastPacketId_, std::move(request));
    return lastPacketId_;
}

std::vector<Received> WorldClient::asks(Request request) {
    sends(std::move(request));
    world_.step();
    return records();
}

std::pair<DWORD, DWORD> WorldClient::exceptionOf(Request request) {
    records();
    const DWORD packetId = sends(std::move(request));
    world_.step();
    const std::vector<Received> exceptions = recordsOf(SIMCONNECT_RECV_ID_EXCEPTION);
    EXPECT_LE(exceptions.size(), 1u);
    if (exceptions.empty()) {
        return {0, 0};
    }
    EXPECT_EQ(exceptions[0].dword(16), packetId);
    return {exceptions[0].dword(12), exceptions[0].dword(16)};
}

void WorldClient::defines(DWORD defineId, std::string name, std::string unit, DWORD type) {
    sends(AddToDefinitionRequest{defineId, std::move(name), std::move(unit), type, 0, SIMCONNECT_UNUSED});
}

void WorldClient::subscribes(DWORD eventId, std::string name) {
    sends(SubscribeRequest{eventId, std::move(name)});
}

void WorldClient::declares() {
    constexpr DWORD f64 = SIMCONNECT_DATATYPE_FLOAT64;
    constexpr std::pair<const char*, const char*> position[] = {
        {"Plane Latitude", "degree"},
        {"Plane Longitude", "degree"},
        {"Plane Pitch degrees", "radians"},
        {"Plane Bank degrees", "radians"},
        {"Plane Heading degrees true", "radians"},
        {"Plane Altitude", "feet"},
        {"Vertical Speed", "feet per second"},
        {"Airspeed True", "knots"},
    };
    for (const auto& [name, unit] : position) {
        defines(definitionAiPosition, name, unit, f64);
    }
    defines(definitionObjectInRange, "Plane Alt Above Ground", "feet", f64);
    defines(definitionObjectInRange, "Ground Altitude", "feet", f64);
    defines(definitionObjectInRange, "SIM ON GROUND", "Bool", SIMCONNECT_DATATYPE_INT64);
    defines(definitionObjectInRange, "ATC ID", "", SIMCONNECT_DATATYPE_STRING32);
    defines(definitionStaticData, "Static CG to Ground", "feet", f64);
    defines(definitionStaticData, "Static Pitch", "radians", f64);
    sends(MapClientEventRequest{eventFreezeLatLon, "FREEZE_LATITUDE_LONGITUDE_SET"});
    sends(MapClientEventRequest{eventFreezeAltitude, "FREEZE_ALTITUDE_SET"});
    sends(MapClientEventRequest{eventFreezeAttitude, "FREEZE_ATTITUDE_SET"});
    sends(MapClientEventRequest{eventGear, "GEAR_SET"});
    world_.step();
    records();
}

DWORD WorldClient::creates(std::string tailNumber, SIMCONNECT_DATA_INITPOSITION position, std::string title) {
    records();
    sends(CreateAircraftRequest{std::move(title), std::move(tailNumber), position, requestCreate});
    for (int i = 0; i < framesUntilSeen; ++i) {
        world_.step();
    }
    const std::vector<Received> assigned = recordsOf(SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID);
    EXPECT_EQ(assigned.size(), 1u);
    return assigned.empty() ? 0 : assigned[0].dword(16);
}

DWORD WorldClient::createsHeld(std::string tailNumber, SIMCONNECT_DATA_INITPOSITION position) {
    const DWORD id = creates(std::move(tailNumber), position);
    sends(ReleaseControlRequest{id, requestRelease});
    for (const DWORD freeze : {eventFreezeLatLon, eventFreezeAltitude, eventFreezeAttitude}) {
        sendsEvent(id, freeze, 1);
    }
    world_.step();
    return id;
}

void WorldClient::sendsEvent(DWORD objectId, DWORD eventId, DWORD data) {
    sends(TransmitClientEventRequest{objectId, eventId, data, notificationGroup, 0});
}

std::vector<Received> WorldClient::records() {
    ClientSession::Output output = session_.takeOutput();
    closed_ = output.ends;
    lyingTail_ += output.lyingTail;
    std::vector<Received> received;
    std::string left = std::move(output.records);
    while (!left.empty()) {
        const auto size = numberAt(left, 0, 4);
        const auto id = static_cast<DWORD>(numberAt(left, 8, 4));
        if (size < 12 || size > left.size()) {
            ADD_FAILURE() << "a record of " << size << " bytes where there are " << left.size();
            break;
        }
        received.push_back({id, left.substr(0, size)});
        left.erase(0, size);
    }
    return received;
}

std::vector<Received> WorldClient::recordsOf(DWORD recordId) {
    std::vector<Received> all = records();
    std::erase_if(all, [recordId](const Received& record) { return record.id != recordId; });
    return all;
}

SIMCONNECT_DATA_INITPOSITION inTheAir() {
    return {52.4, 4.8, 3000, 0, 0, 90, 0, 0};
}

SIMCONNECT_DATA_INITPOSITION onTheGround() {
    return {52.31, 4.77, 0, 0, 0, 180, 1, 0};
}

Scene groundScene() {
    Scene scene;
    scene.ground.places.push_back({"Airport", scene.user.at, 3, 100});
    return scene;
}

AircraftTitles airliner() {
    AircraftTitles titles;
    AircraftType type;
    type.title = "Airliner";
    type.model = "B738";
    type.cgHeightFeet = 9;
    type.staticPitchRad = 0.01;
    titles.add(type);
    return titles;
}

std::string doubles(std::initializer_list<double> values) {
    std::string bytes;
    for (const double value : values) {
        appendLittleEndian(bytes, std::bit_cast<std::uint64_t>(value), sizeof value);
    }
    return bytes;
}
