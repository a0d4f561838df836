// rig/map/map_server.h
// The map of a world for a browser on this machine.
// The world's thread publishes; requests are answered on threads of the server's own, which end with it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace rig {

class MapServer {
public:
    /// Listens on 127.0.0.1; with port 0 the system chooses. Throws std::runtime_error when the port is taken.
    explicit MapServer(std::uint16_t port);
    ~MapServer();
    MapServer(const MapServer&) = delete;
    MapServer& operator=(const MapServer&) = delete;

    std::uint16_t port() const;
    /// What the map shows from now on (worldJson).
    void publish(std::string json);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace rig
