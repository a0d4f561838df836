// core/run/simulator_detection.h
// Which simulator is installed, and where. Run thread only.
#pragma once

/// Shows the stored install path, or asks the registry when there is none, and takes the simulator's version from it.
/// Throws kvd::UserErrorException when the user has to type the path.
void gf_findSimulator();
