// The world over the wire, served by a thread of its own.
#include "tests/rig/session/front.h"

#include <condition_variable>
#include <filesystem>
#include <future>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>

#include <fmt/format.h>

#include "platform/stream_connection.h"
#include "rig/world/wire_server.h"
#include "tests/rig/session/world_trace.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using platform::AddressFamily;

namespace {

constexpr const char* byIpv4 = "Ipv4";
constexpr const char* byIpv6 = "Ipv6";
constexpr const char* byPipe = "Pipe";

/// Does one thing after the other on a thread of its own. Not by a stop token: to take leave of one, while it is told to
/// stop, hangs now and then in the standard library of the Windows builds.
class Worker {
public:
    Worker() : thread_([this] { run(); }) {}
    ~Worker() {
        give({});
        thread_.join();
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Waits until the task is done. Throws what it throws.
    void finish(const std::function<void()>& task) {
        std::packaged_task<void()> packaged(task);
        std::future<void> done = packaged.get_future();
        give(std::move(packaged));
        done.get();
    }

private:
    /// No task is the last one.
    void give(std::packaged_task<void()> task) {
        const std::lock_guard lock(lock_);
        task_ = std::move(task);
        given_.notify_one();
    }

    std::packaged_task<void()> taken() {
        std::unique_lock lock(lock_);
        given_.wait(lock, [this] { return task_.has_value(); });
        return *std::exchange(task_, std::nullopt);
    }

    void run() {
        for (std::packaged_task<void()> task = taken(); task.valid(); task = taken()) {
            task();
        }
    }

    std::mutex lock_;
    std::condition_variable given_;
    std::optional<std::packaged_task<void()>> task_; // under lock_
    std::thread thread_;
};

void leadClients(std::string_view protocol, std::string_view port) {
    writeFile("SimConnect.cfg", fmt::format("[SimConnect]\nProtocol={}\nPort={}\n", protocol, port));
}

} // namespace

struct Front::State {
    struct Served {
        Served(rig::Scene scene, rig::AircraftTitles titles)
            : world(std::move(scene), std::move(titles), &trace.writer()), server(world) {}

        WorldTrace trace;
        rig::World world;
        rig::WireServer server;
    };

    void listen(const std::string& way) {
        if (way == byPipe) {
            listenPipe();
        } else {
            listenTcp(way == byIpv4 ? AddressFamily::ipv4 : AddressFamily::ipv6);
        }
    }

    void listenTcp(AddressFamily family) {
        std::uint16_t port = 0;
        if (const int error = served->server.listenTcp(family, port)) {
            throw std::runtime_error(fmt::format("no port to listen on: {}", error));
        }
        leadClients(family == AddressFamily::ipv4 ? "IPv4" : "IPv6", std::to_string(port));
    }

    void listenPipe() {
        const std::string name = "Tarnwing test " + fs::current_path().filename().string();
        if (const int error = served->server.listenPipe("\\\\.\\pipe\\" + name)) {
            throw std::runtime_error(fmt::format("no pipe to listen on: {}", error));
        }
        leadClients("Pipe", name);
    }

    std::mutex turn;              // whose task is under way
    std::optional<Served> served; // the worker's
    Worker worker;

    void finish(const std::function<void()>& task) {
        const std::lock_guard lock(turn);
        worker.finish(task);
    }
};

std::vector<std::string> Front::ways() {
    return {byIpv4, byIpv6, byPipe};
}

Front::Front(rig::Scene scene, rig::AircraftTitles titles, const std::string& way) : state_(std::make_unique<State>()) {
    state_->finish([&] {
        state_->served.emplace(std::move(scene), std::move(titles));
        state_->listen(way);
    });
}

Front::~Front() {
    state_->finish([this] { state_->served.reset(); });
}

void Front::frames(int count) {
    state_->finish([this, count] {
        for (int i = 0; i < count; ++i) {
            state_->served->server.frame(1 / state_->served->world.framesPerSecond());
        }
    });
}

void Front::atWorld(const std::function<void(rig::World&)>& look) {
    state_->finish([this, &look] { look(state_->served->world); });
}

std::vector<rig::TraceEvent> Front::events() {
    return with([this](rig::World&) { return state_->served->trace.events(); });
}
