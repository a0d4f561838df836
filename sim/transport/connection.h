// sim/transport/connection.h
// One connection to the simulator: packets out, records in.
// Packets may be sent and records dispatched from several threads; what arrives comes in on a thread of the system's.
#pragma once

#include <memory>
#include <mutex>
#include <string_view>

#include "platform/stream_connection.h"
#include "sim/simconnect.h"
#include "sim/transport/configuration.h"
#include "sim/transport/packet_writer.h"
#include "sim/transport/record_stream.h"

/// Opens the stream that the settings ask for. There is no other way when that one fails: 0, or an error code.
int connectStream(platform::StreamConnection& stream, const ConnectionSettings& settings);

/// It has failed, and stays so, once the peer has closed, has sent a record whose size cannot be, or takes no packets.
class Connection {
public:
    /// Nothing when the simulator cannot be reached. Each arrival of records sets `arrival`, when that is an event object.
    static std::unique_ptr<Connection> open(const ConnectionSettings& settings, void* arrival);

    ~Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Sends a packet whose parameters write(PacketWriter&) gives. E_INVALIDARG when they do not fit in a packet, which is
    /// not sent then; E_FAIL when the connection has failed.
    template <typename Write>
    HRESULT send(Operation operation, Write write) {
        const std::lock_guard lock(sendLock_);
        writer_.begin(operation, lastPacketId_ + 1);
        write(writer_);
        return sendWritten();
    }

    HRESULT lastPacketId(DWORD& packetId);

    /// Runs the procedure for every record that has arrived whole, also for those from before a failure. It may send, and
    /// must not close the connection.
    HRESULT dispatch(DispatchProc procedure, void* context);

private:
    Connection(std::size_t maxRecordBytes, void* arrival);

    HRESULT sendWritten();
    bool receive(std::string_view bytes);
    bool keepRecords(std::string_view bytes);
    bool failed();

    std::mutex sendLock_;    // held while a packet goes out; before recordLock_
    PacketWriter writer_;    // under sendLock_
    DWORD lastPacketId_ = 0; // under sendLock_

    RecordStream received_; // the receiver's

    std::mutex recordLock_;
    RecordBatch waiting_; // under recordLock_
    RecordBatch spare_;   // under recordLock_: memory for the next batch
    bool failed_ = false; // under recordLock_

    void* const arrival_;
    platform::StreamConnection stream_; // goes first, and its receiver with it
};
