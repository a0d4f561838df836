// window/main_window.h
// The program's one window: making it and keeping it on a monitor. Window thread only.
#pragma once

#include <string_view>

#include "platform/window_system.h"

/// Reads the stored position, makes the window there and shows it. True on success.
bool initInstance(std::string_view title);

/// Where the window is to stand so that it can be reached: inside the work area as far as it fits, at least 48 pixels
/// of it on each side, or pinned to the left or top edge when it is wider or higher than the area.
window_system::Rectangle fittedToArea(const window_system::Rectangle& window, const window_system::Rectangle& area);

/// Moves the window to its fitted place at the stored position, and stores and saves a position that had to change.
void fitWindowToMonitor();

/// Stores and saves where the window stands, at its normal size, and re-fits it.
void storeWindowPosition();
