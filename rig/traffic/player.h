// rig/traffic/player.h
// Plays a recording: which datagrams are to be sent at what time, and what the network does to them on the way. It
// knows no sockets and no clock, so that the same recording, options and steps give the same datagrams. Belongs to one
// thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/geography.h"
#include "rig/traffic/chance.h"
#include "rig/traffic/recording.h"

namespace rig {

struct PlayerOptions {
    /// Time stamps stay what they are; otherwise they are moved so that the first row is of the moment of the start.
    bool historic = false;
    double offsetSeconds = 0; ///< of the recording, left out at its beginning
    double radiusNm = 0;      ///< only lines within it round the told position; 0 means all lines
    // Shares of the traffic lines, 0 to 1.
    double loss = 0;
    double repeat = 0;
    double late = 0;       ///< by 1 to 30 seconds
    double outOfOrder = 0; ///< behind the next one
    int loops = 1;
    double speed = 1; ///< recorded seconds in a real one
    std::uint32_t seed = 1;
};

struct Datagram {
    DatagramKind kind = DatagramKind::traffic;
    std::string text;

    friend bool operator==(const Datagram&, const Datagram&) = default;
};

struct PlayerCounts {
    std::size_t lines = 0; ///< that have come up; each is sent, lost, beyond the radius or still to come late
    std::size_t sentLines = 0;
    std::size_t sentWeather = 0;
    std::size_t lost = 0;
    std::size_t repeated = 0;
    std::size_t late = 0;
    std::size_t outOfOrder = 0;
    std::size_t beyondRadius = 0;
};

class Player {
public:
    /// The recording must outlive the player, and have rows. `present` is the moment of the start, seconds since 1970.
    Player(const Recording& recording, const PlayerOptions& options, double present);

    /// Where the user is now. With a radius nothing is sent before it is known.
    void tellPosition(const LatLon& position) { position_ = position; }

    /// What is to be sent from the last call until `elapsed` real seconds after the start, in its order.
    std::vector<Datagram> advanceTo(double elapsed);

    /// Nothing is left to be sent.
    bool isOver() const;
    const PlayerCounts& counts() const { return counts_; }
    /// Of one loop, recorded seconds.
    double loopSeconds() const;

private:
    struct Delayed {
        double due = 0; ///< recorded seconds since the start
        Datagram datagram;
    };

    std::size_t firstRow() const;
    double dueOf(const RecordedRow& row) const;
    void sendRow(const RecordedRow& row, std::vector<Datagram>& out);
    void sendLine(const RecordedRow& row, std::vector<Datagram>& out);
    void sendDelayedUntil(double recorded, std::vector<Datagram>& out);
    void put(const Datagram& datagram, std::vector<Datagram>& out);
    void releaseHeld(std::vector<Datagram>& out);
    void goToNextRow();

    const Recording& recording_;
    const PlayerOptions options_;
    const double timeShift_;
    Chance chance_;
    std::optional<LatLon> position_;
    std::size_t next_ = 0;
    int loop_ = 0;
    std::vector<Delayed> delayed_; // by due time
    std::optional<Datagram> held_; // waits for the next line
    PlayerCounts counts_;
};

} // namespace rig
