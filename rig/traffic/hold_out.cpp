#include "rig/traffic/hold_out.h"

#include <string_view>
#include <unordered_map>
#include <vector>

#include "feed/traffic_line.h"
#include "rig/traffic/chance.h"

namespace rig {

namespace {

/// Decides sample by sample.
class Decision {
public:
    Decision(double share, std::uint32_t seed) : share_(share), chance_(seed) {}

    bool holdsOut(std::string_view line) {
        splitTrafficLine(line, fields_);
        if (fields_.size() <= traffic_field::timestamp) {
            return false;
        }
        Last& last = last_[std::string(fields_[traffic_field::hexid])];
        if (const std::string_view timestamp = fields_[traffic_field::timestamp]; last.timestamp != timestamp) {
            last = {std::string(timestamp), chance_.happens(share_)};
        }
        return last.isHeldOut;
    }

private:
    struct Last {
        std::string timestamp;
        bool isHeldOut = false;
    };

    double share_;
    Chance chance_;
    std::unordered_map<std::string, Last> last_; // by the aircraft's identity
    std::vector<std::string_view> fields_;
};

} // namespace

HoldOut holdOut(const Recording& recording, double share, std::uint32_t seed) {
    Decision decision(share, seed);
    HoldOut parts;
    for (const RecordedRow& row : recording.rows) {
        const bool isHeldOut = row.kind == DatagramKind::traffic && decision.holdsOut(row.text);
        (isHeldOut && !parts.given.rows.empty() ? parts.heldOut : parts.given).rows.push_back(row);
    }
    return parts;
}

void takeDueTimes(Recording& part, const Recording& whole) {
    std::size_t from = 0;
    for (RecordedRow& row : part.rows) {
        for (std::size_t i = from; i < whole.rows.size(); ++i) {
            if (whole.rows[i].text == row.text) {
                row.due = whole.rows[i].due;
                from = i + 1;
                break;
            }
        }
    }
}

std::string textOf(const Recording& recording) {
    std::string text;
    for (const RecordedRow& row : recording.rows) {
        text += row.text + '\n';
    }
    return text;
}

} // namespace rig
