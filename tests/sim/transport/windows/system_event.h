// tests/sim/transport/windows/system_event.h
// An event object of the system's, in a place of its own: the system's header and that of the simulator's calls each
// declare the same types.
#pragma once

class SystemEvent {
public:
    SystemEvent();
    ~SystemEvent();
    SystemEvent(const SystemEvent&) = delete;
    SystemEvent& operator=(const SystemEvent&) = delete;

    void* handle() const { return handle_; }
    /// Waits until it is set, at most ten seconds, and takes that back.
    bool waits();
    bool isSet() const;

private:
    void* handle_;
};
