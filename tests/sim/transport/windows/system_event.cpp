#include "tests/sim/transport/windows/system_event.h"

#include <windows.h>

SystemEvent::SystemEvent() : handle_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

SystemEvent::~SystemEvent() {
    CloseHandle(handle_);
}

bool SystemEvent::waits() {
    constexpr DWORD patienceMs = 10000;
    return WaitForSingleObject(handle_, patienceMs) == WAIT_OBJECT_0 && ResetEvent(handle_);
}

bool SystemEvent::isSet() const {
    return WaitForSingleObject(handle_, 0) == WAIT_OBJECT_0;
}
