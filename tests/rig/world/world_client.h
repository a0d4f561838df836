// tests/rig/world/world_client.h
// A client of the simulated world as a test sees it: requests go in by name, records come out taken apart.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "rig/world/client_session.h"
#include "rig/world/world.h"

/// A record with checked access to what is behind its head.
struct Received {
    DWORD id = 0;
    std::string bytes; ///< the whole record

    DWORD dword(std::size_t at) const;
    float float32(std::size_t at) const;
    double float64(std::size_t at) const;
    std::int64_t int64(std::size_t at) const;
    /// Up to the first zero.
    std::string text(std::size_t at) const;
};

/// Where the data of an object data record begin.
inline constexpr std::size_t dataAt = 40;

class WorldClient {
public:
    /// The client has opened, and its first records are gone.
    explicit WorldClient(rig::World& world);

    /// The packet id of the request.
    DWORD sends(rig::Request request);
    /// The same, and one frame; what came of it.
    std::vector<Received> asks(rig::Request request);
    /// Number and packet id of the only exception that came of the request; {0, 0} when there was none.
    std::pair<DWORD, DWORD> exceptionOf(rig::Request request);

    void defines(DWORD defineId, std::string name, std::string unit, DWORD type);
    void subscribes(DWORD eventId, std::string name);
    /// The definitions of the program's own that most tests want, and its client events.
    void declares();
    /// Creates an aircraft and lets it be seen; its object id.
    DWORD creates(std::string tailNumber, SIMCONNECT_DATA_INITPOSITION position, std::string title = "Airliner");
    /// The same, released and frozen.
    DWORD createsHeld(std::string tailNumber, SIMCONNECT_DATA_INITPOSITION position);
    void sendsEvent(DWORD objectId, DWORD eventId, DWORD data);

    std::vector<Received> records();
    std::vector<Received> recordsOf(DWORD recordId);
    /// Whether the simulator has closed the connection.
    bool isClosed() const { return closed_; }
    const std::string& lyingTail() const { return lyingTail_; }

private:
    rig::World& world_;
    rig::ClientSession session_;
    DWORD lastPacketId_ = 0;
    bool closed_ = false;
    std::string lyingTail_;
};

/// Over the sea, high up.
SIMCONNECT_DATA_INITPOSITION inTheAir();
/// At the place of groundScene().
SIMCONNECT_DATA_INITPOSITION onTheGround();
/// A place 100 ft high round the user.
rig::Scene groundScene();
/// "Airliner", a B738, with its centre of gravity 9 ft above the ground.
rig::AircraftTitles airliner();

/// 8-byte numbers, as a client writes them.
std::string doubles(std::initializer_list<double> values);
