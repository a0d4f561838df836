// sim/transport/connection.h
// One connection to the simulator: packets out, records in.
// Packets may be sent from several threads, beside the one that dispatches; they go out on a thread of the connection's
// own, and what arrives comes in on a thread of the system's.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "platform/stream_connection.h"
#include "sim/simconnect.h"
#include "sim/transport/configuration.h"
#include "sim/transport/packet_writer.h"
#include "sim/transport/record_stream.h"

/// A simulator that loads scenery stands still for tens of seconds; one that has not taken a piece of what waits for so
/// long is gone.
inline constexpr std::chrono::seconds longestStandstill{30};

/// Opens the stream that the settings ask for. There is no other way when that one fails: 0, or an error code.
int connectStream(platform::StreamConnection& stream, const ConnectionSettings& settings);

/// No call waits for the peer: packets queue up and go out in the background. The connection has failed, and stays so,
/// once the peer has closed and its last records are dispatched, has sent a record whose size cannot be, or does not
/// take its packets: too many of them wait, or nothing has gone for too long.
class Connection {
public:
    /// Nothing when the simulator cannot be reached. Each arrival of records, and the end, sets `arrival`, when that is
    /// an event object.
    static std::unique_ptr<Connection> open(const ConnectionSettings& settings, void* arrival,
                                            std::chrono::milliseconds standstill = longestStandstill);

    /// What is still queued goes out, and the peer has time to read it, each for half a second at most. Alone, after
    /// all other calls have returned.
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Begins to send and to receive; packets may be queued before. False when the system does not let it.
    bool start();

    /// Queues a packet whose parameters write(PacketWriter&) gives. E_INVALIDARG when they do not fit in a packet,
    /// which is not sent then; E_FAIL when the connection has failed.
    template <typename Write>
    HRESULT send(Operation operation, Write write) {
        std::unique_lock lock(sendLock_);
        writer_.begin(operation, lastPacketId_ + 1);
        write(writer_);
        const HRESULT result = queueWritten();
        const bool wake = std::exchange(senderWaits_, false);
        lock.unlock();
        if (wake) {
            senderWakes_.notify_one();
        }
        return result;
    }

    /// That of the last packet that has been queued.
    HRESULT lastPacketId(DWORD& packetId);

    /// Runs the procedure for every record that has arrived whole. E_FAIL when no more will come; the last ones have
    /// been handed out then. The procedure may send, and must not close the connection. One thread at a time.
    HRESULT dispatch(DispatchProc procedure, void* context);

private:
    Connection(std::size_t maxRecordBytes, void* arrival, std::chrono::milliseconds standstill);

    bool failed() const { return sendFailed_ || ended_; }
    bool refusesPackets() const { return failed() && !lastWordsWait_; }

    HRESULT queueWritten();
    void failForGood();
    void sendAll();
    bool takeQueued();
    bool sendTaken();
    void finishReceiving();
    void finishSending();

    bool receive(std::string_view bytes);
    bool keepRecords(std::string_view bytes);
    bool handOver();
    void endReceiving(bool byThePeer);

    std::mutex sendLock_; // held for copying alone
    std::condition_variable senderWakes_;
    std::condition_variable senderLeft_;
    PacketWriter writer_;      // under sendLock_
    DWORD lastPacketId_ = 0;   // under sendLock_
    std::vector<char> queued_; // under sendLock_: packets that nobody sends yet
    bool senderWaits_ = false; // under sendLock_: for the next packet
    bool senderOut_ = false;   // under sendLock_

    std::vector<char> sending_; // the sender's
    const std::chrono::milliseconds standstill_;

    RecordStream received_; // the receiver's
    RecordBatch arrived_;   // the receiver's
    const std::size_t maxWaitingBytes_;

    std::mutex recordLock_;
    RecordBatch waiting_; // under recordLock_
    RecordBatch spare_;   // under recordLock_: memory for the next batch

    std::atomic<bool> sendFailed_{false}; // calls fail, unless last words wait; what still arrives is dispatched
    std::atomic<bool> ended_{false};      // nothing more is dispatched than what waits; set under recordLock_
    std::atomic<bool> closing_{false};    // set under sendLock_

    /// A peer that goes tells why in its last record. Calls must not fail before that is dispatched, or a quit would
    /// look like a fault.
    std::atomic<bool> lastWordsWait_{false}; // set under recordLock_
    bool dispatching_ = false;               // under recordLock_: records are with the procedure

    void* const arrival_;
    platform::StreamConnection stream_; // goes first, and its receiver with it
    std::thread sender_;                // out before the stream closes
};
