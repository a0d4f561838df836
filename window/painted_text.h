// window/painted_text.h
// One text at a fixed place of the window. Window thread only.
#pragma once

#include <string_view>

#include "platform/window_system.h"

/// A text that cannot be painted is a log line.
void drawText(window_system::Painter& painter, std::string_view text, int x, int y, window_system::Colour colour);
