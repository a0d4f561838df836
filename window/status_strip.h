// window/status_strip.h
// The strip below the title: the lamps of the simulator and of RealTraffic, and what stands beside them.
// Window thread only; what it paints stands in window/window_state.h.
#pragma once

#include "platform/window_system.h"

void paintStatusStrip(window_system::Painter& painter);
