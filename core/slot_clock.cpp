// core/slot_clock.cpp
#include "core/slot_clock.h"

std::atomic<std::int32_t> slotClock{0};
