// tests/recording_simulator/recording_simulator.cpp
#include "tests/recording_simulator/recording_simulator.h"

#include <cstring>
#include <utility>

#include <fmt/format.h>

namespace {

RecordingSimulator* simulator = nullptr;

// What the calls carry, in bytes.
constexpr std::size_t longestTailNumber = 12;
constexpr std::size_t longestTitle = 255;

std::string quoted(const char* text) {
    return text == nullptr ? "null" : fmt::format("'{}'", text);
}

std::string hex(const void* data, std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += fmt::format("{:02x}", static_cast<const unsigned char*>(data)[i]);
    }
    return text;
}

template <typename... Arguments>
HRESULT call(const char* name, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    if (simulator == nullptr) {
        return E_FAIL;
    }
    return simulator->record(name, fmt::format(format, std::forward<Arguments>(arguments)...));
}

} // namespace

std::vector<std::string> RecordingSimulator::calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
}

std::vector<std::string> RecordingSimulator::calls(const std::string& name) const {
    std::vector<std::string> found;
    for (const std::string& line : calls()) {
        if (line.starts_with(name)) {
            found.push_back(line);
        }
    }
    return found;
}

void RecordingSimulator::forgetCalls() {
    const std::lock_guard lock(mutex_);
    calls_.clear();
}

void RecordingSimulator::letFail(const std::string& name, bool fails) {
    const std::lock_guard lock(mutex_);
    failing_[name] = fails;
}

bool RecordingSimulator::fails(const std::string& name) const {
    const std::lock_guard lock(mutex_);
    const auto found = failing_.find(name);
    return found != failing_.end() && found->second;
}

void RecordingSimulator::send(std::vector<std::byte> record) {
    const std::lock_guard lock(mutex_);
    records_.push_back(std::move(record));
}

bool RecordingSimulator::isDrained() const {
    const std::lock_guard lock(mutex_);
    return records_.empty() && !dispatching_;
}

bool RecordingSimulator::isOpen() const {
    const std::lock_guard lock(mutex_);
    return open_;
}

DWORD RecordingSimulator::lastPacketId() const {
    const std::lock_guard lock(mutex_);
    return packetId_;
}

HRESULT RecordingSimulator::record(const std::string& name, const std::string& arguments) {
    const std::lock_guard lock(mutex_);
    calls_.push_back(fmt::format("{}({})", name, arguments));
    if (const auto found = failing_.find(name); found != failing_.end() && found->second) {
        return E_FAIL;
    }
    ++packetId_;
    return S_OK;
}

HRESULT RecordingSimulator::open(HANDLE* handle, const std::string& arguments) {
    const HRESULT result = record("SimConnect_Open", arguments);
    if (result >= 0) {
        *handle = this;
        const std::lock_guard lock(mutex_);
        open_ = true;
    }
    return result;
}

HRESULT RecordingSimulator::close() {
    const HRESULT result = record("SimConnect_Close", "");
    const std::lock_guard lock(mutex_);
    open_ = false;
    return result;
}

HRESULT RecordingSimulator::dispatch(DispatchProc procedure, void* context) {
    std::vector<std::vector<std::byte>> records;
    {
        const std::lock_guard lock(mutex_);
        records.swap(records_);
        dispatching_ = true;
    }
    for (std::vector<std::byte>& bytes : records) {
        procedure(reinterpret_cast<SIMCONNECT_RECV*>(bytes.data()), static_cast<DWORD>(bytes.size()), context);
    }
    const std::lock_guard lock(mutex_);
    dispatching_ = false;
    const auto found = failing_.find("SimConnect_CallDispatch");
    return found != failing_.end() && found->second ? E_FAIL : S_OK;
}

RecordingSimulatorScope::RecordingSimulatorScope() {
    simulator = &simulator_;
}

RecordingSimulatorScope::~RecordingSimulatorScope() {
    simulator = nullptr;
}

extern "C" {

HRESULT SimConnect_Open(HANDLE* handle, const char* name, HWND window, DWORD userEventWin32, HANDLE event,
                        DWORD configIndex) {
    if (simulator == nullptr) {
        return E_FAIL;
    }
    return simulator->open(handle,
                           fmt::format("{}, {}, {}, {}, {}", quoted(name), window == nullptr ? "null" : "window",
                                       userEventWin32, event == nullptr ? "null" : "event", configIndex));
}

HRESULT SimConnect_Close(HANDLE) {
    return simulator == nullptr ? E_FAIL : simulator->close();
}

HRESULT SimConnect_CallDispatch(HANDLE, DispatchProc procedure, void* context) {
    return simulator == nullptr ? E_FAIL : simulator->dispatch(procedure, context);
}

HRESULT SimConnect_GetLastSentPacketID(HANDLE, DWORD* packetId) {
    if (simulator == nullptr || simulator->fails("SimConnect_GetLastSentPacketID")) {
        return E_FAIL;
    }
    *packetId = simulator->lastPacketId();
    return S_OK;
}

HRESULT SimConnect_SubscribeToSystemEvent(HANDLE, DWORD eventId, const char* name) {
    return call("SimConnect_SubscribeToSystemEvent", "{}, {}", eventId, quoted(name));
}

HRESULT SimConnect_MapClientEventToSimEvent(HANDLE, DWORD eventId, const char* name) {
    return call("SimConnect_MapClientEventToSimEvent", "{}, {}", eventId, quoted(name));
}

HRESULT SimConnect_AddClientEventToNotificationGroup(HANDLE, DWORD groupId, DWORD eventId, std::int32_t maskable) {
    return call("SimConnect_AddClientEventToNotificationGroup", "{}, {}, {}", groupId, eventId, maskable);
}

HRESULT SimConnect_SetNotificationGroupPriority(HANDLE, DWORD groupId, DWORD priority) {
    return call("SimConnect_SetNotificationGroupPriority", "{}, {}", groupId, priority);
}

HRESULT SimConnect_TransmitClientEvent(HANDLE, DWORD objectId, DWORD eventId, DWORD data, DWORD groupId, DWORD flags) {
    return call("SimConnect_TransmitClientEvent", "{}, {}, {}, {}, {}", objectId, eventId, data, groupId, flags);
}

HRESULT SimConnect_AddToDataDefinition(HANDLE, DWORD defineId, const char* datumName, const char* unitsName,
                                       DWORD datumType, float epsilon, DWORD datumId) {
    return call("SimConnect_AddToDataDefinition", "{}, {}, {}, {}, {}, {}", defineId, quoted(datumName),
                quoted(unitsName), datumType, epsilon, static_cast<std::int32_t>(datumId));
}

HRESULT SimConnect_RequestDataOnSimObject(HANDLE, DWORD requestId, DWORD defineId, DWORD objectId, DWORD period,
                                          DWORD flags, DWORD origin, DWORD interval, DWORD limit) {
    return call("SimConnect_RequestDataOnSimObject", "{}, {}, {}, {}, {}, {}, {}, {}", requestId, defineId, objectId,
                period, flags, origin, interval, limit);
}

HRESULT SimConnect_RequestDataOnSimObjectType(HANDLE, DWORD requestId, DWORD defineId, DWORD radiusMeters,
                                              DWORD objectType) {
    return call("SimConnect_RequestDataOnSimObjectType", "{}, {}, {}, {}", requestId, defineId, radiusMeters,
                objectType);
}

HRESULT SimConnect_SetDataOnSimObject(HANDLE, DWORD defineId, DWORD objectId, DWORD flags, DWORD arrayCount,
                                      DWORD unitSize, void* data) {
    return call("SimConnect_SetDataOnSimObject", "{}, {}, {}, {}, {}, {}", defineId, objectId, flags, arrayCount,
                unitSize, hex(data, unitSize));
}

HRESULT SimConnect_AICreateNonATCAircraft(HANDLE, const char* title, const char* tailNumber,
                                          SIMCONNECT_DATA_INITPOSITION position, DWORD requestId) {
    if (std::strlen(tailNumber) > longestTailNumber || std::strlen(title) > longestTitle) {
        return E_INVALIDARG;
    }
    // Copied out: the record is packed, and the formatter takes references.
    const auto [lat, lon, alt, pitch, bank, heading, onGround, airspeed] = position;
    return call("SimConnect_AICreateNonATCAircraft", "{}, {}, {} {} {} {} {} {} {} {}, {}", quoted(title),
                quoted(tailNumber), +lat, +lon, +alt, +pitch, +bank, +heading, +onGround, +airspeed, requestId);
}

HRESULT SimConnect_AIReleaseControl(HANDLE, DWORD objectId, DWORD requestId) {
    return call("SimConnect_AIReleaseControl", "{}, {}", objectId, requestId);
}

HRESULT SimConnect_AIRemoveObject(HANDLE, DWORD objectId, DWORD requestId) {
    return call("SimConnect_AIRemoveObject", "{}, {}", objectId, requestId);
}

HRESULT SimConnect_AISetAircraftFlightPlan(HANDLE, DWORD objectId, const char* path, DWORD requestId) {
    return call("SimConnect_AISetAircraftFlightPlan", "{}, {}, {}", objectId, quoted(path), requestId);
}
}
