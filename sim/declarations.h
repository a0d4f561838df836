// sim/declarations.h
// What the program tells a simulator that it has just connected to: the events and data that it will speak of.
// SimClient only.
#pragma once

/// Declares everything on simHandle, under simLock. A call that fails is a failed request, and the last one.
void declareToSimulator();
