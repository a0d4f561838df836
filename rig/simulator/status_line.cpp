// rig/simulator/status_line.cpp
#include "rig/simulator/status_line.h"

#include <ostream>

#include <fmt/format.h>

#include "rig/world/phase.h"

namespace rig {

std::string statusLine(const World& world, double framesPerSecond) {
    const ZuluTime zulu = world.zulu();
    const int seconds = static_cast<int>(zulu.seconds);
    const Position& user = world.user().position;
    const double groundFeet = world.groundFeet(user.place());
    const std::string height = isOnGround(world.user(), groundFeet)
                                   ? "on the ground"
                                   : fmt::format("{:.0f} ft above ground", user.altFeet - groundFeet);
    return fmt::format("{:02}:{:02}:{:02}Z  {:7}  {:5.1f} fps  clients {}  aircraft {}  "
                       "user {:.5f} {:.5f} heading {:03.0f} at {:.0f} kt, {}",
                       seconds / 3600, seconds / 60 % 60, seconds % 60, stateText(world), framesPerSecond,
                       world.clients().size(), world.aircraft().size(), user.lat, user.lon,
                       user.headingRad * degreesPerRadian, user.trueKnots, height);
}

void StatusDisplay::show(std::string_view line) {
    if (!terminal_) {
        out_ << line << '\n' << std::flush;
        return;
    }
    constexpr std::string_view eraseToEnd = "\x1b[K";
    out_ << '\r' << line << eraseToEnd << std::flush;
    lineBegun_ = true;
}

void StatusDisplay::say(std::string_view line) {
    if (lineBegun_) {
        out_ << '\n';
        lineBegun_ = false;
    }
    out_ << line << '\n' << std::flush;
}

} // namespace rig
