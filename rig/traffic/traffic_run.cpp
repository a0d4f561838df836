// rig/traffic/traffic_run.cpp
#include "rig/traffic/traffic_run.h"

#include <array>
#include <chrono>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "platform/clock.h"
#include "platform/console.h"
#include "platform/sockets.h"

using namespace std::chrono_literals;

namespace rig {

namespace {

using std::chrono::duration;

constexpr auto lookInterval = 5ms;
constexpr auto connectEvery = 1s;
constexpr auto longestConnect = 1s;
constexpr auto longestSend = 1s;
/// A recording may have hundreds of lines of one moment; a receiver has no room for them all at once.
constexpr std::size_t datagramsAtOnce = 20;
constexpr auto breath = 2ms;

double secondsSince1970() {
    return duration<double>(platform::wallNow().time_since_epoch()).count();
}

class SocketLibrary {
public:
    SocketLibrary() { platform::startSocketLibrary(); }
    ~SocketLibrary() { platform::cleanUpSocketLibrary(); }
    SocketLibrary(const SocketLibrary&) = delete;
    SocketLibrary& operator=(const SocketLibrary&) = delete;
};

/// The TCP side.
class Link {
public:
    Link(const TrafficOptions& options, std::ostream& out, TrafficResult& result)
        : options_(options), out_(out), result_(result) {}

    /// Connects when it is time to, and reads what has come.
    void look(platform::SteadyTime now) {
        if (!socket_.valid()) {
            tryToConnect(now);
        }
        if (socket_.valid()) {
            readAll();
        }
        result_.heard = messages_.counts();
    }

    bool hasBeenConnected() const { return result_.connects > 0; }
    bool saidGoodbye() const { return messages_.counts().goodbyes > 0; }
    /// The user's last position that has not been taken yet.
    std::optional<LatLon> takePosition() { return std::exchange(position_, std::nullopt); }

private:
    void say(std::string_view text) { out_ << text << std::endl; }

    void tryToConnect(platform::SteadyTime now) {
        if (now < nextTry_) {
            return;
        }
        nextTry_ = now + connectEvery;
        if (socket_.create() != 0 || socket_.connect(options_.host, options_.port, longestConnect) != 0) {
            socket_.close();
            return;
        }
        socket_.setNoDelay();
        socket_.setSendTimeout(longestSend);
        ++result_.connects;
        say(fmt::format("connected to {} port {}", options_.host, options_.port));
    }

    void readAll() {
        std::array<char, 4096> block{};
        for (;;) {
            const platform::SocketResult got = socket_.receive(block.data(), block.size());
            if (got.error == platform::socket_error::wouldBlock) {
                return;
            }
            if (got.error != 0 || got.bytes == 0) {
                lose();
                return;
            }
            for (const ServerMessage& message : messages_.take({block.data(), got.bytes})) {
                answer(message);
            }
        }
    }

    void lose() {
        socket_.close();
        messages_.forgetRest();
        ++result_.losses;
        say("the program has closed the link");
    }

    void answer(const ServerMessage& message) {
        switch (message.kind) {
        case ServerMessage::Kind::versionRequest:
            say("asked for the version");
            socket_.send(fmt::format(R"({{ "version":"{}","level": {} }})", options_.version, options_.level));
            break;
        case ServerMessage::Kind::userState: position_ = message.position; break;
        case ServerMessage::Kind::time: break;
        case ServerMessage::Kind::goodbye: say("the program says goodbye"); break;
        case ServerMessage::Kind::malformed:
            say(fmt::format("malformed message, {}: {}", message.fault, message.text));
            break;
        }
    }

    const TrafficOptions& options_;
    std::ostream& out_;
    TrafficResult& result_;
    platform::StreamSocket socket_;
    platform::SteadyTime nextTry_{};
    ServerMessages messages_;
    std::optional<LatLon> position_;
};

/// The UDP side.
class Sender {
public:
    explicit Sender(const TrafficOptions& options) : betweenBunches_(options.betweenBunches) {
        open(traffic_, options.udpHost, options.trafficPort);
        open(weather_, options.udpHost, options.weatherPort);
    }

    /// The count of those that the system refused.
    std::size_t sendAll(const std::vector<Datagram>& datagrams) {
        std::size_t failed = 0;
        for (const Datagram& datagram : datagrams) {
            failed += send(datagram) ? 0 : 1;
            sentTraffic_ += datagram.kind == DatagramKind::traffic ? 1 : 0;
            if (++sent_ % datagramsAtOnce == 0) {
                letReceiverCatchUp();
            }
        }
        return failed;
    }

private:
    void letReceiverCatchUp() const {
        if (betweenBunches_) {
            betweenBunches_(sentTraffic_);
        } else {
            platform::sleepFor(breath);
        }
    }

    /// False when the system refused. That nobody listens yet is no failure: the next datagram may be heard.
    bool send(const Datagram& datagram) {
        platform::DatagramSocket& socket = datagram.kind == DatagramKind::traffic ? traffic_ : weather_;
        if (socket.send(datagram.text).error == 0) {
            return true;
        }
        // The error may have been that of the datagram before, which nobody listened to.
        return socket.send(datagram.text).error == 0;
    }

    static void open(platform::DatagramSocket& socket, const std::string& host, std::uint16_t port) {
        if (socket.create() != 0 || socket.setDestination(host, port) != 0) {
            throw std::runtime_error(fmt::format("cannot send to {} port {}", host, port));
        }
    }

    platform::DatagramSocket traffic_;
    platform::DatagramSocket weather_;
    std::function<void(std::size_t)> betweenBunches_;
    std::size_t sent_ = 0;
    std::size_t sentTraffic_ = 0;
};

void tellCounts(const TrafficResult& result, std::ostream& out) {
    const PlayerCounts& played = result.played;
    out << fmt::format("lines {}, sent {}, lost {}, repeated {}, late {}, out of order {}, beyond the radius {}\n",
                       played.lines, played.sentLines, played.lost, played.repeated, played.late, played.outOfOrder,
                       played.beyondRadius)
        << fmt::format("weather {}, failed sends {}\n", played.sentWeather, result.failedSends)
        << fmt::format("connects {}, losses {}\n", result.connects, result.losses)
        << fmt::format("heard: version requests {}, user states {}, times {}, goodbyes {}, malformed {}\n",
                       result.heard.versionRequests, result.heard.userStates, result.heard.times, result.heard.goodbyes,
                       result.heard.malformed)
        << std::flush;
}

/// Of the whole recording, whatever is left out at its beginning; for "rig report --feed-start".
void tellFirstRow(const PlayerOptions& options, double present, std::ostream& out) {
    out << fmt::format("first row played at {:.3f}", present - options.offsetSeconds / options.speed) << std::endl;
}

} // namespace

TrafficResult runTraffic(const TrafficOptions& options, std::ostream& out) {
    const Recording recording = loadRecording(options.recording);
    const SocketLibrary library;
    TrafficResult result;
    Link link(options, out, result);
    Sender sender(options);
    std::optional<Player> player;
    std::optional<platform::SteadyTime> due;
    platform::SteadyTime begin;
    platform::watchStopRequests();
    while (!platform::stopRequested() && !(player && player->isOver()) &&
           !(options.endsWithGoodbye && link.saidGoodbye())) {
        const platform::SteadyTime now = platform::steadyNow();
        if (options.link) {
            link.look(now);
        }
        if (!due && (link.hasBeenConnected() || !options.link)) {
            // Nothing is played to a program that is not there.
            due = now +
                  std::chrono::duration_cast<platform::SteadyTime::duration>(duration<double>(options.delaySeconds));
        }
        if (!player && due && now >= *due) {
            const double present = secondsSince1970();
            player.emplace(recording, options.player, present);
            begin = now;
            tellFirstRow(options.player, present, out);
        }
        if (player) {
            if (const std::optional<LatLon> position = link.takePosition()) {
                player->tellPosition(*position);
            }
            result.failedSends += sender.sendAll(player->advanceTo(duration<double>(now - begin).count()));
            result.played = player->counts();
        }
        platform::sleepFor(lookInterval);
    }
    tellCounts(result, out);
    return result;
}

} // namespace rig
