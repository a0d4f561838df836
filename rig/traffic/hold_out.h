// A recording in two parts: what the program is given, and samples that are kept from it to be compared with
// afterwards. Functions without state: usable from any thread.
#pragma once

#include <cstdint>
#include <string>

#include "rig/traffic/recording.h"

namespace rig {

struct HoldOut {
    Recording given;
    Recording heldOut; ///< traffic lines alone
};

/// About this share, 0 to 1, of the samples is held out; the seed tells which. Lines of one aircraft with one time
/// stamp are one sample, however often it is told. The first row is always given, for all times count from it.
HoldOut holdOut(const Recording& recording, double share, std::uint32_t seed);

/// Rows of another recording, in its order, are due when they were due there: with most lines gone, the rest alone
/// tells it less well. Rows that are not found there keep their times.
void takeDueTimes(Recording& part, const Recording& whole);

/// As a file has it.
std::string textOf(const Recording& recording);

} // namespace rig
