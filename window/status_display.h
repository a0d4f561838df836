// window/status_display.h
// Painting the window. Window thread only; what it paints stands in window/window_state.h.
#pragma once

#include "platform/window_system.h"

/// Paints everything.
void paintWindow(window_system::Painter& painter);

/// Asks for a repaint of the message line alone.
void repaintMessageLine();
