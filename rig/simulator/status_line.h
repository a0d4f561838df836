// rig/simulator/status_line.h
// How a world stands, in one line.
// StatusDisplay belongs to the thread that writes.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "rig/world/world.h"

namespace rig {

/// "12:00:05Z  running   30.0 fps  clients 1  aircraft 12  user 52.30860 4.76390 heading 183 at 13 kt, on the ground".
std::string statusLine(const World& world, double framesPerSecond);

/// One line that is written over on a terminal, lines below each other elsewhere.
class StatusDisplay {
public:
    StatusDisplay(std::ostream& out, bool terminal) : out_(out), terminal_(terminal) {}

    void show(std::string_view line);
    /// A line that stays.
    void say(std::string_view line);

private:
    std::ostream& out_;
    bool terminal_;
    bool lineBegun_ = false;
};

} // namespace rig
