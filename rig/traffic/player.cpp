// rig/traffic/player.cpp
#include "rig/traffic/player.h"

#include <algorithm>
#include <utility>

namespace rig {

namespace {

constexpr double leastLateness = 1; // seconds
constexpr double mostLateness = 30;
/// Between the last row of a loop and the first of the next.
constexpr double pauseBetweenLoops = 5;

} // namespace

Player::Player(const Recording& recording, const PlayerOptions& options, double present)
    : recording_(recording), options_(options),
      timeShift_(options.historic ? 0 : present - recording.begin() - options.offsetSeconds), chance_(options.seed) {
    next_ = firstRow();
}

std::size_t Player::firstRow() const {
    const double from = recording_.begin() + options_.offsetSeconds;
    const auto first = std::find_if(recording_.rows.begin(), recording_.rows.end(),
                                    [from](const RecordedRow& row) { return row.due >= from; });
    return static_cast<std::size_t>(first - recording_.rows.begin());
}

double Player::loopSeconds() const {
    return std::max(recording_.end() - recording_.begin() - options_.offsetSeconds, 0.0) + pauseBetweenLoops;
}

double Player::dueOf(const RecordedRow& row) const {
    return row.due - recording_.begin() - options_.offsetSeconds + loop_ * loopSeconds();
}

bool Player::isOver() const {
    return next_ >= recording_.rows.size() && delayed_.empty() && !held_;
}

void Player::goToNextRow() {
    ++next_;
    if (next_ >= recording_.rows.size() && loop_ + 1 < options_.loops) {
        ++loop_;
        next_ = firstRow();
    }
}

std::vector<Datagram> Player::advanceTo(double elapsed) {
    const double recorded = elapsed * options_.speed;
    std::vector<Datagram> out;
    while (next_ < recording_.rows.size() && dueOf(recording_.rows[next_]) <= recorded) {
        const RecordedRow& row = recording_.rows[next_];
        sendDelayedUntil(dueOf(row), out);
        sendRow(row, out);
        goToNextRow();
    }
    sendDelayedUntil(recorded, out);
    if (next_ >= recording_.rows.size()) {
        releaseHeld(out);
    }
    return out;
}

void Player::sendRow(const RecordedRow& row, std::vector<Datagram>& out) {
    if (row.kind == DatagramKind::weather) {
        ++counts_.sentWeather;
        out.push_back({row.kind, row.text});
    } else {
        sendLine(row, out);
    }
}

void Player::sendLine(const RecordedRow& row, std::vector<Datagram>& out) {
    ++counts_.lines;
    // All are drawn for each line, so that one rate does not change what another one hits.
    const bool isLost = chance_.happens(options_.loss);
    const bool isRepeated = chance_.happens(options_.repeat);
    const bool isLate = chance_.happens(options_.late);
    const bool isOutOfOrder = chance_.happens(options_.outOfOrder);
    const double lateness = chance_.between(leastLateness, mostLateness);

    if (isLost) {
        ++counts_.lost;
        return;
    }
    if (options_.radiusNm > 0) {
        const std::optional<LatLon> place = positionOf(row.text);
        if (!place || !position_ || greatCircleNm(*place, *position_) > options_.radiusNm) {
            ++counts_.beyondRadius;
            return;
        }
    }
    const Datagram datagram{row.kind, movedInTime(row.text, timeShift_ + loop_ * loopSeconds())};
    if (isLate) {
        ++counts_.late;
        const double due = dueOf(row) + lateness;
        const auto place = std::upper_bound(delayed_.begin(), delayed_.end(), due,
                                            [](double time, const Delayed& other) { return time < other.due; });
        delayed_.insert(place, Delayed{due, datagram});
        return;
    }
    if (isOutOfOrder && !held_) {
        ++counts_.outOfOrder;
        held_ = datagram;
        return;
    }
    put(datagram, out);
    if (isRepeated) {
        ++counts_.repeated;
        put(datagram, out);
    }
    releaseHeld(out);
}

void Player::put(const Datagram& datagram, std::vector<Datagram>& out) {
    ++counts_.sentLines;
    out.push_back(datagram);
}

void Player::releaseHeld(std::vector<Datagram>& out) {
    if (held_) {
        put(*std::exchange(held_, std::nullopt), out);
    }
}

void Player::sendDelayedUntil(double recorded, std::vector<Datagram>& out) {
    const auto end = std::find_if(delayed_.begin(), delayed_.end(),
                                  [recorded](const Delayed& waiting) { return waiting.due > recorded; });
    for (auto waiting = delayed_.begin(); waiting != end; ++waiting) {
        put(waiting->datagram, out);
    }
    delayed_.erase(delayed_.begin(), end);
}

} // namespace rig
