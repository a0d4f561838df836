// bench/bench_flush.cpp
// What the frame flush costs: how long it holds simLock, its share of a core, how its cost grows with the objects, and
// what the engine's side of it allocates. The calls go through sim/transport to a peer on this machine that only drains
// them, and sends the frames; through the pipe, which is what the program takes where nothing else is configured.
// Prints "name = value unit"; an argument prints only the figures whose names contain it.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "bench/measuring.h"
#include "core/run_flags.h"
#include "platform/clock.h"
#include "platform/cpu_time.h"
#include "platform/files.h"
#include "platform/sockets.h"
#include "platform/stream_connection.h"
#include "platform/timer_resolution.h"
#include "sim/frame_flush.h"
#include "sim/sim_queues.h"
#include "sim/simulator_link.h"
#include "tests/support/allocation_count.h"

using namespace std::chrono;
namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t firstObjectId = 100;
constexpr int framesPerSecond = 30;
/// A head, five numbers and the position block.
constexpr std::size_t packetBytes = 16 + 5 * 4 + PositionUpdate::blockBytes;

/// What one run over a number of objects has shown.
struct Run {
    std::vector<double> lockMs; ///< of each frame, how long simLock was held
    /// Of a core, by all threads: the engine's appending, the flush, the writing, and the other end's reading.
    double cpuPercent = 0;
    double cpuUsPerObject = 0; ///< the same for one object in one frame
};

double atShare(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

[[noreturn]] void giveUp(const char* what) {
    fmt::print(stderr, "bench_flush: {}\n", what);
    std::exit(1);
}

/// The simulator's end.
class DrainingPeer {
public:
    DrainingPeer() {
        platform::setLocalPipeFolder(fs::temp_directory_path());
        if (listener_.listenPipe("\\\\.\\pipe\\" + name_) != 0) {
            giveUp("cannot listen");
        }
    }

    const std::string& name() const { return name_; }

    void accept() {
        const auto drain = [this](std::string_view bytes) {
            drained_ += bytes.size();
            return true;
        };
        if (listener_.accept(connection_, 10s) != 0 || connection_.startReceiving(drain) != 0) {
            giveUp("no client");
        }
    }

    void sendFrame() {
        SIMCONNECT_RECV_EVENT_FRAME frame{};
        frame.dwSize = sizeof frame;
        frame.dwID = SIMCONNECT_RECV_ID_EVENT_FRAME;
        if (connection_.send({reinterpret_cast<const char*>(&frame), sizeof frame}, 1s) != 0) {
            giveUp("the client is gone");
        }
    }

    /// Waits until so many bytes have come in.
    void drained(std::size_t bytes) const {
        const platform::SteadyTime begin = platform::steadyNow();
        while (drained_ < bytes) {
            if (platform::steadyNow() - begin > 10s) {
                giveUp("not everything arrived");
            }
            platform::sleepFor(1ms);
        }
    }
    std::size_t drained() const { return drained_; }

private:
    const std::string name_ = fmt::format("bench_flush_{}", std::random_device()());
    std::atomic<std::size_t> drained_{0};
    platform::StreamListener listener_;
    platform::StreamConnection connection_;
};

/// A folder that goes again, with the SimConnect.cfg that leads to the peer; it is the working directory as well.
class Configuration {
public:
    explicit Configuration(const std::string& pipe)
        : path_(fs::temp_directory_path() / ("bench_flush_" + std::to_string(std::random_device()()))) {
        fs::create_directories(path_ / "documents");
        fs::current_path(path_);
        platform::setDocumentsFolders(path_ / "documents");
        std::ofstream(path_ / "SimConnect.cfg") << fmt::format("[SimConnect]\nProtocol=Pipe\nPort={}\n", pipe);
    }
    ~Configuration() {
        std::error_code ignored;
        fs::current_path(fs::temp_directory_path(), ignored);
        fs::remove_all(path_, ignored);
    }
    Configuration(const Configuration&) = delete;
    Configuration& operator=(const Configuration&) = delete;

private:
    fs::path path_;
};

double elapsedMs(platform::SteadyTime begin) {
    return duration<double, std::milli>(platform::steadyNow() - begin).count();
}

void flushMeasured(SIMCONNECT_RECV*, DWORD, void* context) {
    const platform::SteadyTime begin = platform::steadyNow();
    flushFrame();
    static_cast<Run*>(context)->lockMs.push_back(elapsedMs(begin));
}

/// One tick of the engine.
void appendAll(int objects) {
    LiveAircraft aircraft;
    for (int i = 0; i < objects; ++i) {
        aircraft.objectId = firstObjectId + static_cast<std::uint32_t>(i);
        appendPosition(aircraft);
    }
    swapPositions();
}

/// The pump of the session: dispatches until the next frame has been flushed, or a second has passed.
void pumpOneFrame(Run& run) {
    const std::size_t before = run.lockMs.size();
    const platform::SteadyTime begin = platform::steadyNow();
    while (run.lockMs.size() == before) {
        if (elapsedMs(begin) > 1000) {
            giveUp("no frame came");
        }
        SimConnect_CallDispatch(simHandle, flushMeasured, &run);
        platform::sleepFor(1ms);
    }
}

Run flushFrames(DrainingPeer& peer, int objects, int frames, nanoseconds apart) {
    Run run;
    const nanoseconds cpuBefore = platform::cpuTimeOfThisProcess();
    const std::size_t drainedBefore = peer.drained();
    const platform::SteadyTime begin = platform::steadyNow();
    platform::SteadyTime due = begin;
    for (int frame = 0; frame < frames; ++frame) {
        appendAll(objects);
        peer.sendFrame();
        pumpOneFrame(run);
        due += apart;
        platform::sleepFor(due - platform::steadyNow());
    }
    peer.drained(drainedBefore + static_cast<std::size_t>(frames) * static_cast<std::size_t>(objects) * packetBytes);
    const double cpuSeconds = duration<double>(platform::cpuTimeOfThisProcess() - cpuBefore).count();
    run.cpuPercent = 100 * cpuSeconds / duration<double>(platform::steadyNow() - begin).count();
    run.cpuUsPerObject = 1e6 * cpuSeconds / frames / objects;
    return run;
}

/// The cost of one object in a frame of so many, microseconds.
double microsecondsPerObject(DrainingPeer& peer, int objects) {
    return flushFrames(peer, objects, 300, 5ms).cpuUsPerObject;
}

std::size_t allocationsOfAppending() {
    resetSimQueues();
    const std::size_t before = allocationsOfThisThread();
    for (int tick = 0; tick < 1000; ++tick) {
        appendAll(500);
    }
    return allocationsOfThisThread() - before;
}

} // namespace

int main(int argc, char** argv) {
    const std::string filter = argc > 1 ? argv[1] : "";
    platform::startSocketLibrary();
    const platform::TimerResolution resolution(1);
    print(filter, "append.allocations", fmt::format("{} allocations", allocationsOfAppending()));

    DrainingPeer peer;
    const Configuration configuration(peer.name());
    if (SimConnect_Open(&simHandle, "bench", nullptr, 0, nullptr, 0) < 0) {
        giveUp("cannot connect");
    }
    peer.accept();

    const Run run = flushFrames(peer, 500, 20 * framesPerSecond, nanoseconds(1s) / framesPerSecond);
    print(filter, "flush.lock_median_ms", fmt::format("{:.3f} ms", atShare(run.lockMs, 0.5)));
    print(filter, "flush.lock_p99_ms", fmt::format("{:.3f} ms", atShare(run.lockMs, 0.99)));
    print(filter, "flush.cpu_percent", fmt::format("{:.2f} %", run.cpuPercent));

    const double fewUs = microsecondsPerObject(peer, 50);
    const double manyUs = microsecondsPerObject(peer, 1000);
    print(filter, "flush.per_object_50_us", fmt::format("{:.3f} us", fewUs));
    print(filter, "flush.per_object_1000_us", fmt::format("{:.3f} us", manyUs));
    print(filter, "flush.per_object_1000_over_50", fmt::format("{:.2f} ratio", manyUs / fewUs));

    SimConnect_Close(simHandle);
    simHandle = nullptr;
    platform::cleanUpSocketLibrary();
    return 0;
}
