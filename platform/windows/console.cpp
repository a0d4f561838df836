// platform/windows/console.cpp
#include "platform/console.h"

#include <atomic>

#include <windows.h>

namespace platform {

namespace {

std::atomic<bool> stop = false;

/// Runs on a thread of the system's.
BOOL WINAPI rememberStop(DWORD) {
    stop = true;
    return TRUE;
}

} // namespace

bool outputIsTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

void watchStopRequests() {
    SetConsoleCtrlHandler(rememberStop, TRUE);
}

bool stopRequested() {
    return stop;
}

void forgetStopRequests() {
    stop = false;
}

} // namespace platform
