// engine/slot.h
// One slot of the engine, a hundred times a second, and the order of everything that happens in it. Run thread only.
#pragma once

/// One slot, while the flight runs. What fails in it, be it a message, a record, an aircraft or a step, costs itself and
/// a line or two in the log, and the rest of the slot is done; only kvd::UserErrorException is thrown, when the simulator
/// refuses too many liveries.
void lf_handleAddingStack();

/// What the simulator has told since the last slot, and the objects that are coming into being. While the flight is
/// paused this alone is served, so that removals and refusals are not lost. Throws like lf_handleAddingStack.
void readInbox();

/// Every aircraft leaves the simulator, or never gets into it.
void removeAllAircraft();

/// No aircraft, and nothing under way to the simulator or from it.
void resetEngine();
