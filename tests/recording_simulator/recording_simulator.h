// tests/recording_simulator/recording_simulator.h
// The simulator's calls as a test sees them: each is written down as a line of text, answers what the test has set, and
// the records that the test has queued reach the dispatch procedure. For executables that link no other simulator.
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "sim/simconnect.h"

/// Lock-protected: the program calls from several threads.
class RecordingSimulator {
public:
    /// The calls so far but for SimConnect_CallDispatch and SimConnect_GetLastSentPacketID, without handle:
    /// "SimConnect_TransmitClientEvent(7, 218, 3072, 301, 0)", texts in single quotes, data as hexadecimal bytes.
    std::vector<std::string> calls() const;
    /// Those that begin with this name.
    std::vector<std::string> calls(const std::string& name) const;
    void forgetCalls();

    /// The named call fails from now on, "SimConnect_Open" for instance.
    void letFail(const std::string& name, bool fails = true);
    bool fails(const std::string& name) const;

    /// A record for the next SimConnect_CallDispatch.
    void send(std::vector<std::byte> record);
    template <typename Record>
    void send(const Record& record) {
        const auto* bytes = reinterpret_cast<const std::byte*>(&record);
        send(std::vector<std::byte>(bytes, bytes + sizeof record));
    }

    /// Whether everything sent was dispatched.
    bool isDrained() const;
    bool isOpen() const;
    DWORD lastPacketId() const;

    // For the calls themselves.
    HRESULT record(const std::string& name, const std::string& arguments);
    HRESULT open(HANDLE* handle, const std::string& arguments);
    HRESULT close();
    HRESULT dispatch(DispatchProc procedure, void* context);

private:
    mutable std::mutex mutex_;
    std::vector<std::string> calls_;
    std::map<std::string, bool> failing_;
    std::vector<std::vector<std::byte>> records_;
    DWORD packetId_ = 0;
    bool open_ = false;
    bool dispatching_ = false;
};

/// The one that the calls go to while it lives; a test owns it.
class RecordingSimulatorScope {
public:
    RecordingSimulatorScope();
    ~RecordingSimulatorScope();
    RecordingSimulatorScope(const RecordingSimulatorScope&) = delete;
    RecordingSimulatorScope& operator=(const RecordingSimulatorScope&) = delete;

    RecordingSimulator* operator->() { return &simulator_; }
    RecordingSimulator& operator*() { return simulator_; }

private:
    RecordingSimulator simulator_;
};
