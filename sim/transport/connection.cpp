// sim/transport/connection.cpp
#include "sim/transport/connection.h"

#include <algorithm>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include <fmt/printf.h>

#include "core/log.h"
#include "platform/threads.h"

using namespace std::chrono_literals;

namespace {

/// What a simulator on this machine or in the house needs at most, with room for one lost packet of the handshake.
constexpr auto connectLimit = 1500ms;
/// For what is still to go out or come in when a connection ends.
constexpr auto farewellLimit = 500ms;
/// What one write of the system's has. Within the time of a standstill one of them must have gone.
constexpr std::size_t pieceBytes = 65536;
/// Packets that the peer does not take are kept up to here. Between two frames there are hundreds of kilobytes, and a
/// simulator that stands still sends no frames.
constexpr std::size_t maxQueuedBytes = std::size_t{4} << 20;
/// Records that nobody dispatches are kept up to here, or up to the largest one where that is more.
constexpr std::size_t maxWaitingBytes = std::size_t{64} << 20;

std::atomic<int> eventFailureTold{0};

/// The program tries again many times a second; a failure is told once, until there is another outcome.
bool createEvents(platform::StreamConnection& stream) {
    const int error = stream.createEvents();
    if (eventFailureTold.exchange(error) != error && error != 0) {
        std::string text = fmt::sprintf("CreateEvent failed with %d.\n", error);
        text.pop_back(); // the log ends its lines itself
        logError(text);
    }
    return error == 0;
}

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

std::unique_ptr<Connection> Connection::open(const ConnectionSettings& settings, void* arrival,
                                             std::chrono::milliseconds standstill) {
    std::unique_ptr<Connection> connection(new Connection(settings.maxRecordBytes, arrival, standstill));
    if (!createEvents(connection->stream_) || connectStream(connection->stream_, settings) != 0) {
        return nullptr;
    }
    return connection;
}

/// Both queues have their whole size from the start, so that no call takes anything from the heap. The system gives the
/// memory only as far as it is used.
Connection::Connection(std::size_t maxRecordBytes, void* arrival, std::chrono::milliseconds standstill)
    : standstill_(standstill), received_(maxRecordBytes), maxWaitingBytes_(std::max(maxWaitingBytes, maxRecordBytes)),
      arrival_(arrival) {
    queued_.reserve(maxQueuedBytes);
    sending_.reserve(maxQueuedBytes);
}

/// Bytes that lie unread at the close would make the system throw away what the peer has not read: hence the wait for
/// its end, while the receiver reads on.
Connection::~Connection() {
    if (!sender_.joinable()) {
        return;
    }
    finishSending();
    if (!failed() && stream_.shutDownSending() == 0) {
        stream_.waitForEnd(farewellLimit);
    }
}

bool Connection::start() {
    if (stream_.startReceiving([this](std::string_view bytes) { return receive(bytes); }) != 0) {
        return false;
    }
    try {
        sender_ = std::thread([this] { sendAll(); });
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

/// Under sendLock_.
HRESULT Connection::queueWritten() {
    if (refusesPackets()) {
        return E_FAIL;
    }
    if (!writer_.valid()) {
        return E_INVALIDARG;
    }
    const std::string_view packet = writer_.packet();
    if (packet.size() > maxQueuedBytes - queued_.size()) {
        failForGood();
        stream_.cancelSending();
        return E_FAIL;
    }
    queued_.insert(queued_.end(), packet.begin(), packet.end());
    ++lastPacketId_;
    return S_OK;
}

/// Whatever the peer has still to say.
void Connection::failForGood() {
    const std::lock_guard lock(recordLock_);
    sendFailed_ = true;
    lastWordsWait_ = false;
}

/// The sender's thread.
void Connection::sendAll() {
    platform::nameThisThread("Sim Sender");
    while (takeQueued()) {
        if (!sendTaken()) {
            finishReceiving();
            sendFailed_ = true;
            break;
        }
    }
    const std::lock_guard lock(sendLock_);
    senderOut_ = true;
    senderLeft_.notify_one();
}

/// Waits for packets; false when there are none and the connection closes.
bool Connection::takeQueued() {
    sending_.clear();
    std::unique_lock lock(sendLock_);
    while (queued_.empty() && !closing_) {
        senderWaits_ = true;
        senderWakes_.wait(lock);
    }
    senderWaits_ = false;
    queued_.swap(sending_);
    return !sending_.empty();
}

bool Connection::sendTaken() {
    std::string_view bytes(sending_.data(), sending_.size());
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, pieceBytes);
        if (stream_.send(piece, standstill_) != 0) {
            return false;
        }
        bytes.remove_prefix(piece.size());
    }
    return true;
}

/// A peer that goes has told why before: that must still arrive.
void Connection::finishReceiving() {
    if (!closing_ && !stream_.waitForEnd(farewellLimit)) {
        endReceiving(false);
    }
}

void Connection::finishSending() {
    {
        std::unique_lock lock(sendLock_);
        closing_ = true;
        senderWakes_.notify_one();
        if (!failed()) {
            senderLeft_.wait_for(lock, farewellLimit, [this] { return senderOut_; });
        }
    }
    stream_.cancelSending();
    sender_.join();
}

HRESULT Connection::lastPacketId(DWORD& packetId) {
    const std::lock_guard lock(sendLock_);
    if (refusesPackets()) {
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
        last = ended_;
        dispatching_ = batch.bytes() > 0;
    }
    batch.forEach(
        [&](char* record, DWORD size) { procedure(reinterpret_cast<SIMCONNECT_RECV*>(record), size, context); });
    batch.clear();
    const std::lock_guard lock(recordLock_);
    spare_ = std::move(batch);
    dispatching_ = false;
    lastWordsWait_ = lastWordsWait_ && !last;
    return last ? E_FAIL : S_OK;
}

/// The receiver. Once the connection closes, it only reads.
bool Connection::receive(std::string_view bytes) {
    if (closing_ || (!ended_ && !bytes.empty() && keepRecords(bytes))) {
        return true;
    }
    endReceiving(bytes.empty());
    return false;
}

bool Connection::keepRecords(std::string_view bytes) {
    try {
        const bool sound = received_.append(bytes, arrived_);
        return (arrived_.empty() || handOver()) && sound;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

/// Whether there is room for more.
bool Connection::handOver() {
    bool room = false;
    {
        const std::lock_guard lock(recordLock_);
        waiting_.take(arrived_);
        room = waiting_.bytes() <= maxWaitingBytes_;
    }
    platform::signalEvent(arrival_);
    return room;
}

void Connection::endReceiving(bool byThePeer) {
    {
        const std::lock_guard lock(recordLock_);
        if (!ended_) {
            lastWordsWait_ = byThePeer && !sendFailed_ && (dispatching_ || waiting_.bytes() > 0);
            ended_ = true;
        }
    }
    platform::signalEvent(arrival_);
}
