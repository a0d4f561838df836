// feed/traffic_reader.h
// Turns traffic lines into records for the engine, and decides which aircraft the program cares about at all.
// The Traffic Reader thread owns the object, but for what says otherwise.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "core/geography.h"
#include "core/text_hash.h"
#include "feed/feed_record.h"
#include "feed/line_outcome.h"
#include "feed/udp_reader.h"

/// The QNH of the standard atmosphere, hectopascal: what counts until one is known.
inline constexpr int standardQnh = 1013;

/// The airport whose ground traffic and stands the program looks after.
struct ParkingAirport {
    LatLon position;
    double elevationFt = 0;
};

/// What the run thread tells the reader about the user's surroundings.
struct TrafficSurroundings {
    LatLon userLatLon;
    double referenceElevation = 0; ///< feet
    bool hasReferenceElevation = false;
    std::optional<ParkingAirport> parkingAirport;
};

using CallSignSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;

class TrafficReader : public UdpReader {
public:
    void onDatagram() override;
    void onStopped() override;

    /// Puts the line's record into gLiveSampleQueue, or drops the line. The line must outlive the call only.
    LineOutcome processLine(std::string_view line);

    // Any thread; the reader sees the change with its next line.
    void setUserLatLon(const LatLon& position);
    void setReferenceElevation(double feet);
    void clearReferenceElevation();
    void setParkingAirport(const std::optional<ParkingAirport>& airport);

    /// A copy of the call signs seen within range while collectCallSigns was set. Any thread.
    CallSignSet seenCallSignsNow() const;
    /// Any thread.
    void clearSeenCallSigns();

    /// Written by the run thread.
    std::atomic<bool> collectCallSigns{false};
    /// Hectopascal. Written by the QNH Reader thread.
    std::atomic<int> qnh{standardQnh};
    /// The lines that came as datagrams, since the reader thread began. Read by any thread.
    LineCounter lineCounter;
    /// The time stamp of the last line whose time stamp could be read, accepted or not, seconds since 1970; 0 until the
    /// first. Read by any thread.
    std::atomic<double> lastFeedTime{0};

    /// Counts, stop flag, call signs, QNH and time stamp as at the start. Run thread.
    void reset();

private:
    LineOutcome processLineSub();
    LineOutcome judgeAndDecode(const TrafficSurroundings& around);
    TrafficSurroundings surroundingsNow() const;
    void collectCallSign();

    std::string_view field(std::size_t index) const { return fields[index]; }
    double number(const char* name, std::size_t index) const;
    std::string_view text(const char* name, std::size_t index) const;
    LatLon plausiblePosition() const;
    std::uint32_t hexid() const;
    double altitude(double gsKnots, const TrafficSurroundings& around) const;
    double track(const std::optional<double>& headingRad) const;
    std::optional<double> trueHeading() const;
    std::optional<double> roll() const;
    double tas(double altitudeFt) const;

    std::vector<std::string_view> fields;

    mutable std::mutex surroundingsMutex; // a leaf
    TrafficSurroundings surroundings;     // under surroundingsMutex

    mutable std::mutex callSignMutex; // a leaf
    CallSignSet seenCallSigns;        // under callSignMutex
};

/// The one reader, used again by each run.
extern TrafficReader gTrafficReader;

/// The body of the Traffic Reader thread; `local` when the sender is on this machine.
void runTrafficReader(std::uint16_t port, bool local);
