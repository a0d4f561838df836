// rig/map/map_server.cpp
#include "rig/map/map_server.h"

#include <mutex>
#include <stdexcept>
#include <thread>

#include <fmt/format.h>
#include <httplib.h>

#include "platform/threads.h"
#include "rig/map/map_page.h"

namespace rig {

namespace {

constexpr const char* thisMachine = "127.0.0.1";

/// The port can be taken again right after an end, and not by two at once: the library's own options allow that.
void letListenAgain(socket_t socket) {
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&on), sizeof on);
}

} // namespace

struct MapServer::State {
    httplib::Server server;
    int port = 0;
    std::mutex lock;
    std::string json = "{}"; // under lock
    std::thread listening;
};

MapServer::MapServer(std::uint16_t port) : state_(std::make_unique<State>()) {
    httplib::Server& server = state_->server;
    server.Get("/", [](const httplib::Request&, httplib::Response& response) {
        response.set_content(std::string(mapPage), "text/html; charset=utf-8");
    });
    server.Get("/world.json", [state = state_.get()](const httplib::Request&, httplib::Response& response) {
        const std::lock_guard guard(state->lock);
        response.set_header("Cache-Control", "no-store");
        response.set_content(state->json, "application/json");
    });
    server.set_socket_options(letListenAgain);
    const bool chosen = port == 0;
    state_->port = chosen ? server.bind_to_any_port(thisMachine) : port;
    if (state_->port <= 0 || (!chosen && !server.bind_to_port(thisMachine, port))) {
        throw std::runtime_error(fmt::format("cannot listen on map port {}", port));
    }
    state_->listening = std::thread([&server] {
        platform::nameThisThread("Map");
        server.listen_after_bind();
    });
    // A stop before it listens would be without effect, and the end would wait for ever.
    while (!server.is_running()) {
        std::this_thread::yield();
    }
}

MapServer::~MapServer() {
    if (state_->listening.joinable()) {
        state_->server.stop();
        state_->listening.join();
    }
}

std::uint16_t MapServer::port() const {
    return static_cast<std::uint16_t>(state_->port);
}

void MapServer::publish(std::string json) {
    const std::lock_guard guard(state_->lock);
    state_->json = std::move(json);
}

} // namespace rig
