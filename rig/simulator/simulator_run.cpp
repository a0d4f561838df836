// rig/simulator/simulator_run.cpp
#include "rig/simulator/simulator_run.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string_view>

#include <fmt/format.h>

#include "platform/clock.h"
#include "platform/console.h"
#include "platform/files.h"
#include "platform/sockets.h"
#include "platform/timer_resolution.h"
#include "rig/map/map_server.h"
#include "rig/map/world_json.h"
#include "rig/simulator/client_configuration.h"
#include "rig/simulator/status_line.h"
#include "rig/world/scene_reader.h"
#include "rig/world/trace_format.h"
#include "rig/world/wire_server.h"

using namespace std::chrono_literals;
using std::chrono::duration;
using std::chrono::duration_cast;

namespace rig {

namespace {

constexpr std::string_view pipePrefix = "\\\\.\\pipe\\";
constexpr auto terminalRefresh = 500ms;
constexpr auto plainRefresh = 5s;
constexpr auto mapRefresh = 200ms;
/// A computer that slept does not catch up on its world.
constexpr double longestFrameSeconds = 1;
/// For the last records of a simulator that has quit.
constexpr int framesAfterQuit = 10;

std::string pipeBelowPrefix(const std::string& name) {
    return name.starts_with(pipePrefix) ? name.substr(pipePrefix.size()) : name;
}

WaysIn wantedWays(const SimulatorOptions& options) {
    WaysIn ways{options.port, options.port6, std::nullopt};
    if (options.pipe) {
        ways.pipe = pipeBelowPrefix(*options.pipe);
    } else if (!options.port && !options.port6) {
        ways.pipe = defaultPipe;
    }
    return ways;
}

void check(int error, std::string_view what) {
    if (error != 0) {
        throw std::runtime_error(fmt::format("cannot listen on {}: {}", what, std::system_category().message(error)));
    }
}

/// Fills the ports in that the system has chosen.
void openWays(WireServer& server, WaysIn& ways, StatusDisplay& display) {
    if (ways.port) {
        check(server.listenTcp(platform::AddressFamily::ipv4, *ways.port), fmt::format("IPv4 port {}", *ways.port));
        display.say(fmt::format("IPv4 127.0.0.1 port {}", *ways.port));
    }
    if (ways.port6) {
        check(server.listenTcp(platform::AddressFamily::ipv6, *ways.port6), fmt::format("IPv6 port {}", *ways.port6));
        display.say(fmt::format("IPv6 ::1 port {}", *ways.port6));
    }
    if (ways.pipe) {
        check(server.listenPipe(std::string(pipePrefix) + *ways.pipe), fmt::format("pipe {}", *ways.pipe));
        display.say(fmt::format("pipe {}", *ways.pipe));
    }
}

void writeConfiguration(const std::filesystem::path& folder, const WaysIn& ways) {
    std::filesystem::create_directories(folder);
    std::ofstream file(folder / "SimConnect.cfg", std::ios::binary);
    file << clientConfiguration(ways);
    if (!file.flush()) {
        throw std::runtime_error(fmt::format("cannot write SimConnect.cfg in {}", platform::utf8FromPath(folder)));
    }
}

AircraftTitles installedTitles(const SimulatorOptions& options) {
    AircraftTitles titles;
    for (const std::filesystem::path& folder : options.titles) {
        if (!std::filesystem::is_directory(folder)) {
            throw std::runtime_error(fmt::format("no folder {}", platform::utf8FromPath(folder)));
        }
        titles.addFolder(folder);
    }
    return titles;
}

class TraceFile {
public:
    explicit TraceFile(const std::filesystem::path& path) {
        if (path.empty()) {
            return;
        }
        file_.open(path, std::ios::binary);
        if (!file_) {
            throw std::runtime_error(fmt::format("cannot write {}", platform::utf8FromPath(path)));
        }
        writer_ = std::make_unique<TraceWriter>(file_);
    }
    TraceWriter* writer() const { return writer_.get(); }
    void flush() {
        if (writer_ != nullptr) {
            writer_->flush();
        }
    }

private:
    std::ofstream file_;
    std::unique_ptr<TraceWriter> writer_;
};

/// The frames of the last refresh, as they really came.
class FrameRateMeter {
public:
    void count() { ++frames_; }
    double take(platform::SteadyTime now) {
        const double seconds = duration<double>(now - since_).count();
        const double rate = seconds > 0 ? frames_ / seconds : 0;
        frames_ = 0;
        since_ = now;
        return rate;
    }

private:
    int frames_ = 0;
    platform::SteadyTime since_ = platform::steadyNow();
};

/// The map, when the options want one.
class OptionalMap {
public:
    explicit OptionalMap(std::optional<std::uint16_t> port) {
        if (port) {
            server_ = std::make_unique<MapServer>(*port);
        }
    }
    void sayWhere(StatusDisplay& display) const {
        if (server_ != nullptr) {
            display.say(fmt::format("map http://127.0.0.1:{}/", server_->port()));
        }
    }
    void show(const World& world, platform::SteadyTime now) {
        if (server_ != nullptr && now >= next_) {
            server_->publish(worldJson(world));
            next_ = now + mapRefresh;
        }
    }

private:
    std::unique_ptr<MapServer> server_;
    platform::SteadyTime next_;
};

class SocketLibrary {
public:
    SocketLibrary() { platform::startSocketLibrary(); }
    ~SocketLibrary() { platform::cleanUpSocketLibrary(); }
    SocketLibrary(const SocketLibrary&) = delete;
    SocketLibrary& operator=(const SocketLibrary&) = delete;
};

/// So that what happens elsewhere on this machine can be found in the trace.
void markBegin(World& world) {
    const double wall = duration<double>(platform::wallNow().time_since_epoch()).count();
    world.note(TraceEventKind::act, 0, world.elapsedSeconds(), traceBeginsAct, fmt::format("{:.3f}", wall));
}

std::string_view endText(const World& world) {
    return world.hasQuit() ? "the simulator has quit" : platform::stopRequested() ? "stopped" : "time is up";
}

} // namespace

void runSimulator(const SimulatorOptions& options, std::ostream& out, bool outIsTerminal) {
    const SocketLibrary sockets;
    const platform::TimerResolution resolution(1);
    StatusDisplay display(out, outIsTerminal);
    AircraftTitles titles = installedTitles(options);
    display.say(fmt::format("{} titles", titles.count()));
    TraceFile trace(options.trace);
    World world(readScene(options.scene), std::move(titles), trace.writer());
    world.setDriveC(options.driveC);
    WireServer server(world);
    WaysIn ways = wantedWays(options);
    openWays(server, ways, display);
    if (!options.configurationFolder.empty()) {
        writeConfiguration(options.configurationFolder, ways);
    }
    OptionalMap map(options.mapPort);
    map.sayWhere(display);

    platform::watchStopRequests();
    markBegin(world);
    const platform::SteadyTime begin = platform::steadyNow();
    const auto refresh = outIsTerminal ? duration_cast<platform::SteadyTime::duration>(terminalRefresh)
                                       : duration_cast<platform::SteadyTime::duration>(plainRefresh);
    FrameRateMeter meter;
    const auto framePeriod = [&world] {
        return duration_cast<platform::SteadyTime::duration>(duration<double>(1 / world.framesPerSecond()));
    };
    platform::SteadyTime lastFrame = begin - framePeriod();
    platform::SteadyTime nextLine = begin + refresh;
    const auto isTimeUp = [&](platform::SteadyTime now) {
        return options.seconds && now - begin >= duration<double>(*options.seconds);
    };
    while (!world.hasQuit() && !platform::stopRequested() && !isTimeUp(platform::steadyNow())) {
        // A frame that comes late is a long one: what moves goes on meanwhile, and the trace tells by its times how
        // fast. Its time is that at which the last of what it shows has come: on a busy machine that takes a while.
        server.receive();
        const platform::SteadyTime frame = platform::steadyNow();
        server.step(options.speed * std::min(duration<double>(frame - lastFrame).count(), longestFrameSeconds));
        lastFrame = frame;
        meter.count();
        const platform::SteadyTime now = platform::steadyNow();
        map.show(world, now);
        if (now >= nextLine) {
            display.show(statusLine(world, meter.take(now)));
            trace.flush();
            nextLine = now + refresh;
        }
        // Not sooner for one that came late, as on a screen: what moves by the real time would jump in a short frame.
        platform::sleepFor(std::max(frame + framePeriod() - now, platform::SteadyTime::duration::zero()));
    }
    for (int i = 0; i < framesAfterQuit && world.hasQuit(); ++i) {
        server.frame(0);
        platform::sleepFor(framePeriod());
    }
    display.say(statusLine(world, world.framesPerSecond()));
    display.say(fmt::format("end: {}", endText(world)));
}

} // namespace rig
