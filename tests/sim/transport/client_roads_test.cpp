// How a connection goes and how it ends, on each of the roads to the simulator.
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <thread>

#include "platform/sockets.h"
#include "tests/sim/transport/client_test.h"
#include "tests/support/eventually.h"

using ::testing::ElementsAre;

namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;

class ClientRoadsThreads : public ClientTest, public ::testing::WithParamInterface<Road> {
protected:
    ClientRoadsThreads() : ClientTest(GetParam()) {}

    void SetUp() override {
        ClientTest::SetUp();
        if (GetParam() == Road::ipv6 && Peer().listensTcp(platform::AddressFamily::ipv6) != 0) {
            GTEST_SKIP() << "this machine has no IPv6";
        }
    }

    HRESULT sendLarge() {
        std::string data(60000, 'd');
        return SimConnect_SetDataOnSimObject(client_, 1, 2, 0, 0, static_cast<DWORD>(data.size()), data.data());
    }

    HRESULT sendSmall() { return SimConnect_AIRemoveObject(client_, 1, 2); }
    static std::string smallPacket(std::uint32_t packetId) {
        return packetBytes(0x2C, packetId, Bytes().dword(1).dword(2));
    }
};

INSTANTIATE_TEST_SUITE_P(Roads, ClientRoadsThreads, ::testing::Values(Road::pipe, Road::ipv4, Road::ipv6),
                         [](const auto& road) {
                             return road.param == Road::pipe ? "pipe" : road.param == Road::ipv4 ? "ipv4" : "ipv6";
                         });

} // namespace

TEST_P(ClientRoadsThreads, packetsGoOneWayAndRecordsTheOther) {
    const std::string record = recordBytes(4, "twelve bytes");
    connect();
    EXPECT_EQ(sendSmall(), S_OK);
    EXPECT_EQ(peer_.packet(), smallPacket(2));
    EXPECT_TRUE(peer_.sends(record));
    ASSERT_TRUE(dispatchesUntil(1));
    EXPECT_EQ(dispatched_.records.front(), record);
}

TEST_P(ClientRoadsThreads, recordsInPiecesArriveWhole) {
    connect();
    std::mt19937 random(34);
    std::vector<std::string> sent;
    std::string bytes;
    for (int i = 0; i < 100; ++i) {
        std::string body(random() % 300, 'x');
        std::generate(body.begin(), body.end(), [&] { return static_cast<char>(random()); });
        sent.push_back(recordBytes(8, body));
        bytes += sent.back();
    }
    for (std::size_t at = 0; at < bytes.size();) {
        const std::string_view piece = std::string_view{bytes}.substr(at, 1 + random() % 200);
        ASSERT_TRUE(peer_.sends(piece));
        at += piece.size();
    }
    ASSERT_TRUE(dispatchesUntil(sent.size()));
    EXPECT_EQ(dispatched_.records, sent);
}

TEST_P(ClientRoadsThreads, aFaultySizeEndsTheConnectionAfterTheRecordsBefore) {
    const std::string good = recordBytes(4, "good");
    for (const std::uint32_t size : {0u, 4u, 11u, 65537u, 100'000'000u, 0xFFFFFFFFu}) {
        Peer peer;
        connect(peer);
        dispatched_ = {};

        peer.sends(Bytes().raw(good).raw(good).dword(size).dword(5).dword(4).raw(good));

        EXPECT_TRUE(fails()) << size;
        EXPECT_THAT(dispatched_.records, ElementsAre(good, good)) << size;
        closeClient();
    }
}

TEST_P(ClientRoadsThreads, halfARecordIsNeverDispatched) {
    const std::string good = recordBytes(4, "good");
    for (const std::size_t half : {1u, 4u, 12u, 15u}) {
        Peer peer;
        connect(peer);
        dispatched_ = {};

        peer.sends(good + good.substr(0, half));
        peer.closes();

        EXPECT_TRUE(fails()) << half;
        EXPECT_THAT(dispatched_.records, ElementsAre(good)) << half;
        closeClient();
    }
}

TEST_P(ClientRoadsThreads, aPeerThatClosesEndsTheConnectionAfterTheRecordsBefore) {
    const std::string good = recordBytes(4, "good");
    connect();
    peer_.sends(good);
    peer_.closes();
    EXPECT_TRUE(fails());
    EXPECT_THAT(dispatched_.records, ElementsAre(good));
}

TEST_P(ClientRoadsThreads, aPeerThatClosesAtOnceFailsTheCallsAfterTheOpenCall) {
    listen(peer_);
    std::thread closing([this] {
        EXPECT_TRUE(peer_.acceptsWithoutReading());
        peer_.closes();
    });
    EXPECT_EQ(openClient(), S_OK);
    closing.join();
    EXPECT_TRUE(fails());
    EXPECT_EQ(sendSmall(), E_FAIL);
}

TEST_P(ClientRoadsThreads, callsWorkUntilTheQuitRecordOfAPeerThatHasGoneIsDispatched) {
    const std::string quit = recordBytes(3, "");
    connect();
    peer_.sends(quit);
    peer_.closes();
    for (int i = 0; i < 100; ++i) { // far longer than the peer's end takes to arrive
        ASSERT_EQ(sendSmall(), S_OK) << i;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_TRUE(fails());
    EXPECT_THAT(dispatched_.records, ElementsAre(quit));
    EXPECT_EQ(sendSmall(), E_FAIL);
}

TEST_P(ClientRoadsThreads, callsWorkAlsoWhenThePeerGoesWhileItsLastRecordIsDispatched) {
    struct Going {
        Peer& peer;
        HANDLE client;
        int records;
    };
    connect();
    ASSERT_TRUE(peer_.sends(recordBytes(3, "")));
    Going going{peer_, client_, 0};
    const auto seeOff = [](SIMCONNECT_RECV*, DWORD, void* context) {
        Going& one = *static_cast<Going*>(context);
        ++one.records;
        one.peer.closes();
        for (int i = 0; i < 100; ++i) { // far longer than the peer's end takes to arrive
            ASSERT_EQ(SimConnect_AIRemoveObject(one.client, 7, 1), S_OK) << i;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    };
    EXPECT_TRUE(eventually([&] { return SimConnect_CallDispatch(client_, seeOff, &going) == E_FAIL; }));
    EXPECT_EQ(going.records, 1);
    EXPECT_EQ(SimConnect_AIRemoveObject(client_, 7, 1), E_FAIL);
}

TEST_P(ClientRoadsThreads, aPeerThatGoesWithoutAWordFailsTheCallsByItself) {
    connect();
    peer_.closes();
    EXPECT_TRUE(eventually([&] { return sendSmall() == E_FAIL; }));
}

TEST_P(ClientRoadsThreads, maxReceiveSizeAllowsLargerRecords) {
    const std::string largest = recordBytes(8, std::string(100000 - 12, 'x'));
    connect("MaxReceiveSize=100000");
    ASSERT_TRUE(peer_.sends(largest));
    ASSERT_TRUE(dispatchesUntil(1));
    EXPECT_EQ(dispatched_.records.front(), largest);
    peer_.sends(Bytes().dword(100001));
    EXPECT_TRUE(fails());
}

TEST_P(ClientRoadsThreads, aSmallerMaxReceiveSizeIsIgnored) {
    const std::string largest = recordBytes(8, std::string(65536 - 12, 'x'));
    connect("MaxReceiveSize=100");
    ASSERT_TRUE(peer_.sends(largest));
    ASSERT_TRUE(dispatchesUntil(1));
    EXPECT_EQ(dispatched_.records.front(), largest);
}

TEST_P(ClientRoadsThreads, aClientThatNeverDispatchesKeeps64MegabytesAndFails) {
    const std::string record = recordBytes(8, std::string(1000 - 12, 'x'));
    std::string block;
    for (int i = 0; i < 60; ++i) {
        block += record;
    }
    connect();
    const std::jthread flood([&] {
        while (peer_.sends(block)) {
        }
    });
    EXPECT_TRUE(eventually([&] { return sendSmall() == E_FAIL; }));
    std::size_t bytes = 0;
    const auto count = [](SIMCONNECT_RECV*, DWORD size, void* sum) { *static_cast<std::size_t*>(sum) += size; };
    EXPECT_EQ(SimConnect_CallDispatch(client_, count, &bytes), E_FAIL);
    EXPECT_GT(bytes, 64 * mebibyte - record.size());
    EXPECT_LT(bytes, 65 * mebibyte);
    closeClient();
}

TEST_P(ClientRoadsThreads, packetsWaitUntilThePeerReadsThem) {
    constexpr DWORD count = 50;
    listen(peer_);
    ASSERT_EQ(openClient(), S_OK);
    ASSERT_TRUE(peer_.acceptsWithoutReading());
    for (DWORD i = 0; i < count; ++i) {
        ASSERT_EQ(sendLarge(), S_OK);
    }
    DWORD packetId = 0;
    EXPECT_EQ(SimConnect_GetLastSentPacketID(client_, &packetId), S_OK);
    EXPECT_EQ(packetId, 1 + count);

    ASSERT_TRUE(peer_.beginsToRead());

    EXPECT_EQ(peer_.packet(), openPacket("Tarnwing"));
    for (DWORD i = 0; i < count; ++i) {
        EXPECT_EQ(peer_.packet().substr(12, 4), Bytes().dword(2 + i).str());
    }
}

TEST_P(ClientRoadsThreads, aPeerThatNeverReadsBlocksNoCallAndFailsTheConnectionOnceTooMuchWaits) {
    const std::string record = recordBytes(4, "before");
    listen(peer_);
    ASSERT_EQ(openClient(), S_OK);
    ASSERT_TRUE(peer_.acceptsWithoutReading());
    ASSERT_TRUE(peer_.sends(record));
    int taken = 0;
    // More than any system buffers.
    while (taken < 2000 && sendLarge() == S_OK) {
        ++taken;
    }
    EXPECT_LT(taken, 2000);
    EXPECT_GE(taken, 4 * mebibyte / 60036);
    EXPECT_EQ(sendSmall(), E_FAIL);
    EXPECT_TRUE(fails());
    EXPECT_THAT(dispatched_.records, ElementsAre(record));
}

TEST_P(ClientRoadsThreads, closingGivesAPeerThatNeverReadsASecondAtMost) {
    listen(peer_);
    ASSERT_EQ(openClient(), S_OK);
    ASSERT_TRUE(peer_.acceptsWithoutReading());
    for (int i = 0; i < 60; ++i) {
        ASSERT_EQ(sendLarge(), S_OK);
    }
    const auto begin = std::chrono::steady_clock::now();
    closeClient();
    // Far from the time that a simulator may stand still.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST_P(ClientRoadsThreads, closingIsSeenByThePeer) {
    connect();
    closeClient();
    EXPECT_TRUE(peer_.seesTheClientClose());
}

TEST_P(ClientRoadsThreads, whatWasSentBeforeClosingArrivesAlthoughRecordsLieUnread) {
    constexpr std::uint32_t count = 100;
    const std::string block = recordBytes(8, std::string(1000, 'x'));
    connect();
    const std::jthread flood([&] {
        while (peer_.sends(block)) {
        }
    });
    EXPECT_TRUE(dispatchesUntil(1));
    for (std::uint32_t i = 0; i < count; ++i) {
        EXPECT_EQ(sendSmall(), S_OK);
    }
    closeClient();
    for (std::uint32_t i = 0; i < count; ++i) {
        ASSERT_EQ(peer_.packet(), smallPacket(2 + i));
    }
    EXPECT_TRUE(peer_.seesTheClientClose());
}

TEST_P(ClientRoadsThreads, closingWhileRecordsArriveIsSafe) {
    const std::string block = recordBytes(8, std::string(1000, 'x'));
    for (int i = 0; i < 20; ++i) {
        Peer peer;
        connect(peer);
        const std::jthread flood([&] {
            while (peer.sends(block)) {
            }
        });
        EXPECT_TRUE(dispatchesUntil(1));
        closeClient();
        dispatched_ = {};
    }
}

TEST_P(ClientRoadsThreads, sendingAndDispatchingGoOnSideBySide) {
    constexpr int count = 2000;
    connect();
    std::thread senders[2];
    for (std::thread& sender : senders) {
        sender = std::thread([this] {
            for (int i = 0; i < count; ++i) {
                EXPECT_EQ(sendSmall(), S_OK);
            }
        });
    }
    std::thread records([this] {
        for (int i = 0; i < count; ++i) {
            EXPECT_TRUE(peer_.sends(recordBytes(4, "twelve bytes")));
        }
    });
    EXPECT_TRUE(dispatchesUntil(count));
    for (std::uint32_t packetId = 2; packetId < 2 + 2 * count; ++packetId) {
        ASSERT_EQ(peer_.packet(), smallPacket(packetId));
    }
    senders[0].join();
    senders[1].join();
    records.join();
}
