// rig/world/wire_server.cpp
#include "rig/world/wire_server.h"

#include <chrono>
#include <mutex>
#include <string>
#include <utility>

#include "rig/world/packet_decoder.h"

using namespace std::chrono_literals;

namespace rig {

namespace {

/// A client that takes nothing for so long holds up all the others.
constexpr auto sendLimit = 500ms;
/// What a client may send during a stall of the simulator.
constexpr std::size_t maxWaitingBytes = std::size_t{64} << 20;
/// The last records reach the client before the connection closes over bytes that it still sends.
constexpr int framesBeforeClosing = 3;

} // namespace

struct WireServer::Client {
    Client(World& world, std::unique_ptr<platform::StreamConnection> accepted)
        : session(world), connection(std::move(accepted)) {}

    /// Runs on a thread of the system's.
    bool receive(std::string_view bytes) {
        const std::lock_guard guard(lock);
        received += bytes;
        gone = gone || bytes.empty() || received.size() > maxWaitingBytes;
        if (gone) {
            connection->shutDownSending(); // a client that closes waits for it
        }
        return !gone;
    }

    ClientSession session;
    PacketStream packets;
    int framesToLive = -1; // -1: for ever

    std::mutex lock;
    std::string received; // under lock
    bool gone = false;    // under lock

    std::unique_ptr<platform::StreamConnection> connection; // goes first, and its receiver with it
};

WireServer::WireServer(World& world) : world_(world) {}

WireServer::~WireServer() = default;

int WireServer::listenTcp(platform::AddressFamily family, std::uint16_t& port) {
    auto listener = std::make_unique<platform::StreamListener>();
    if (const int error = listener->listenTcp(family, port)) {
        return error;
    }
    port = listener->port();
    listeners_.push_back(std::move(listener));
    return 0;
}

int WireServer::listenPipe(std::string_view name) {
    auto listener = std::make_unique<platform::StreamListener>();
    if (const int error = listener->listenPipe(name)) {
        return error;
    }
    listeners_.push_back(std::move(listener));
    return 0;
}

void WireServer::frame(double seconds) {
    receive();
    step(seconds);
}

void WireServer::receive() {
    if (!world_.hasQuit()) {
        acceptClients();
    }
    for (const auto& client : clients_) {
        takeRequests(*client);
    }
}

void WireServer::step(double seconds) {
    world_.step(seconds);
    for (const auto& client : clients_) {
        sendRecords(*client);
    }
    clients_.remove_if([](const auto& client) { return client->framesToLive == 0; });
}

void WireServer::acceptClients() {
    for (const auto& listener : listeners_) {
        for (;;) {
            auto connection = std::make_unique<platform::StreamConnection>();
            if (listener->accept(*connection, 0ms) != 0) {
                break;
            }
            auto client = std::make_unique<Client>(world_, std::move(connection));
            Client* const receiver = client.get();
            if (client->connection->startReceiving(
                    [receiver](std::string_view bytes) { return receiver->receive(bytes); }) == 0) {
                clients_.push_back(std::move(client));
            }
        }
    }
}

void WireServer::takeRequests(Client& client) {
    std::string received;
    bool gone = false;
    {
        const std::lock_guard guard(client.lock);
        received.swap(client.received);
        gone = client.gone;
    }
    std::vector<SentRequest> requests;
    const bool sound = client.packets.append(received, requests);
    for (SentRequest& sent : requests) {
        client.session.receive(sent.packetId, std::move(sent.request));
    }
    if (gone || !sound) {
        client.framesToLive = 0;
    }
}

void WireServer::sendRecords(Client& client) {
    if (client.framesToLive >= 0) {
        client.framesToLive -= client.framesToLive > 0 ? 1 : 0;
        return;
    }
    const ClientSession::Output output = client.session.takeOutput();
    const std::string bytes = output.records + output.lyingTail;
    if (!bytes.empty() && client.connection->send(bytes, sendLimit) != 0) {
        client.framesToLive = 0;
    } else if (output.ends) {
        client.framesToLive = framesBeforeClosing;
    }
}

} // namespace rig
