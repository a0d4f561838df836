// sim/transport/connection.cpp
#include "sim/transport/connection.h"

#include <chrono>
#include <new>
#include <optional>
#include <utility>

#include <fmt/printf.h>

#include "core/log.h"

using namespace std::chrono_literals;

namespace {

/// What a simulator on this machine or in the house needs at most, with room for one lost packet of the handshake.
constexpr auto connectLimit = 1500ms;
/// Longer than a simulator stalls while it loads scenery; a peer that does not read for so long will not read again.
constexpr auto sendLimit = 3s;
/// Records that nobody dispatches are kept up to here.
constexpr std::size_t maxWaitingBytes = std::size_t{64} << 20;

} // namespace

int connectStream(platform::StreamConnection& stream, const ConnectionSettings& settings) {
    constexpr int noPort = -1;
    if (settings.protocol == Protocol::pipe) {
        return stream.openPipe(pipeName(settings));
    }
    const std::optional<std::uint16_t> port = portNumber(settings);
    if (!port) {
        return noPort;
    }
    const auto family =
        settings.protocol == Protocol::ipv6 ? platform::AddressFamily::ipv6 : platform::AddressFamily::ipv4;
    if (const int error = stream.connectTcp(family, hostName(settings), *port, connectLimit)) {
        return error;
    }
    return settings.disableNagle ? stream.disableNagle() : 0;
}

std::unique_ptr<Connection> Connection::open(const ConnectionSettings& settings, void* arrival) {
    std::unique_ptr<Connection> connection(new Connection(settings.maxRecordBytes, arrival));
    platform::StreamConnection& stream = connection->stream_;
    if (const int error = stream.createEvents()) {
        logError(fmt::sprintf("CreateEvent failed with %d.\n", error));
        return nullptr;
    }
    const auto receive = [receiver = connection.get()](std::string_view bytes) { return receiver->receive(bytes); };
    if (connectStream(stream, settings) != 0 || stream.startReceiving(receive) != 0) {
        return nullptr;
    }
    return connection;
}

Connection::Connection(std::size_t maxRecordBytes, void* arrival) : received_(maxRecordBytes), arrival_(arrival) {}

HRESULT Connection::sendWritten() {
    if (failed()) {
        return E_FAIL;
    }
    if (!writer_.valid()) {
        return E_INVALIDARG;
    }
    if (stream_.send(writer_.packet(), sendLimit) != 0) {
        const std::lock_guard lock(recordLock_);
        failed_ = true;
        return E_FAIL;
    }
    ++lastPacketId_;
    return S_OK;
}

HRESULT Connection::lastPacketId(DWORD& packetId) {
    const std::lock_guard lock(sendLock_);
    if (failed()) {
        return E_FAIL;
    }
    packetId = lastPacketId_;
    return S_OK;
}

HRESULT Connection::dispatch(DispatchProc procedure, void* context) {
    RecordBatch batch;
    bool last = false;
    {
        const std::lock_guard lock(recordLock_);
        batch = std::exchange(waiting_, std::move(spare_));
        last = failed_;
    }
    batch.forEach(
        [&](char* record, DWORD size) { procedure(reinterpret_cast<SIMCONNECT_RECV*>(record), size, context); });
    batch.clear();
    const std::lock_guard lock(recordLock_);
    spare_ = std::move(batch);
    return last ? E_FAIL : S_OK;
}

bool Connection::receive(std::string_view bytes) {
    bool going = false;
    {
        const std::lock_guard lock(recordLock_);
        going = !failed_ && !bytes.empty() && keepRecords(bytes);
        failed_ = !going;
    }
    platform::signalEvent(arrival_);
    return going;
}

bool Connection::keepRecords(std::string_view bytes) {
    try {
        return received_.append(bytes, waiting_) && waiting_.bytes() <= maxWaitingBytes;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool Connection::failed() {
    const std::lock_guard lock(recordLock_);
    return failed_;
}
