// fuzz/fuzz_hour_list.cpp
// The hour lists of airport files: whatever the text, the set holds half hours of a day and nothing else.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/hour_set.h"

namespace {

HourSet wholeDay() {
    HourSet day;
    for (int slot = 0; slot < HourSet::slotsPerDay; ++slot) {
        day.insert(slot);
    }
    return day;
}

HourSet slotsOfTheDayIn(HourSet set) {
    HourSet slots;
    for (int slot = 0; slot < HourSet::slotsPerDay; ++slot) {
        if (set.contains(slot)) {
            slots.insert(slot);
        }
    }
    return slots;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const HourSet slots = gf_hours2bitset(text);
    if (slots != slotsOfTheDayIn(slots)) {
        std::abort();
    }
    if (slots == wholeDay() && size < 4) {
        std::abort(); // "0:47" is the shortest text for it
    }
    return 0;
}
