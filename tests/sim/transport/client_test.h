// tests/sim/transport/client_test.h
// What tests of the simulator's client share: a client and its peer, and the roads between them.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "sim/simconnect.h"
#include "tests/sim/transport/peer.h"
#include "tests/support/temporary_folder.h"

enum class Road { pipe, ipv4, ipv6 };

/// What a dispatch has given.
struct Dispatched {
    std::vector<std::string> records;
    bool aligned = true;
};

/// The dispatch procedure that keeps records; the context is a Dispatched.
void keepRecord(SIMCONNECT_RECV* record, DWORD recordBytes, void* context);

std::string openPacket(std::string_view name);

/// A client and its peer; SimConnect.cfg says how they meet.
class ClientTest : public ::testing::Test {
protected:
    explicit ClientTest(Road road) : road_(road) {}

    void SetUp() override;
    void TearDown() override;

    static void configure(std::string_view lines);
    HRESULT openClient(DWORD configIndex = 0, HANDLE event = nullptr);
    void closeClient();

    /// The peer listens, and the configuration leads the client to it.
    void listen(Peer& peer, std::string_view moreLines = "");
    /// The two are connected, and the peer has read the open packet.
    void connect(Peer& peer, std::string_view moreLines = "");
    void connect(std::string_view moreLines = "") { connect(peer_, moreLines); }

    HRESULT dispatch() { return SimConnect_CallDispatch(client_, keepRecord, &dispatched_); }
    bool dispatchesUntil(std::size_t records);
    bool fails();

    TemporaryFolder folder_;
    Peer peer_;
    HANDLE client_ = nullptr;
    Dispatched dispatched_;

private:
    const Road road_;
    int pipes_ = 0;
};
