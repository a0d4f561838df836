// rig/world/wire_server.h
// The simulated world over the wire: clients reach it by TCP or by a pipe, as they would a simulator.
// Belongs to the thread that owns the world. What clients send arrives on threads of the system's and waits for the
// frame.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/stream_connection.h"
#include "rig/world/world.h"

namespace rig {

class WireServer {
public:
    /// The world must outlive the server.
    explicit WireServer(World& world);
    ~WireServer();
    WireServer(const WireServer&) = delete;
    WireServer& operator=(const WireServer&) = delete;

    // Each opens another way in; 0, or an error code of the system's.

    /// On this machine's own address. With port 0 the system chooses; `port` is then the one that it took.
    int listenTcp(platform::AddressFamily family, std::uint16_t& port);
    /// By the pipe's full name ("\\.\pipe\...").
    int listenPipe(std::string_view name);

    // One frame of the world, with all its clients. One that sends what is no packet, or does not take what it gets,
    // is let go, and the others notice nothing of it.

    /// What the clients have sent until now.
    void receive();
    /// The world goes on by so long, and its clients hear of it.
    void step(double seconds);
    void frame(double seconds);

    std::size_t clientCount() const { return clients_.size(); }

private:
    struct Client;

    void acceptClients();
    void takeRequests(Client& client);
    void sendRecords(Client& client);

    World& world_;
    std::vector<std::unique_ptr<platform::StreamListener>> listeners_;
    std::list<std::unique_ptr<Client>> clients_;
};

} // namespace rig
