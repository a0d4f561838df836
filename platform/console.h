// platform/console.h
// What a program without a window needs of its surroundings: where its output goes, and whether it is asked to end.
// Usable from any thread.
#pragma once

namespace platform {

/// Whether the standard output is a terminal, which can take a line back.
bool outputIsTerminal();

/// From now on Ctrl-C and the system's requests to end do not kill the program, but are remembered.
void watchStopRequests();
bool stopRequested();
void forgetStopRequests();

} // namespace platform
