// window/controls.h
// The controls of the option area: making them, their labels, and what Enter in a field does. Window thread only.
#pragma once

#include "platform/window_system.h"

/// Makes every control, disabled and empty.
void createControls();

/// The texts beside the controls.
void paintLabels(window_system::Painter& painter);

/// Enter was pressed in the field with this identifier.
void enterPressed(int id);
