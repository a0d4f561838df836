#include <gmock/gmock.h>

#include <functional>

#include <fmt/format.h>

#include "core/run_flags.h"
#include "tests/sim/transport/client_test.h"
#include "tests/support/allocation_count.h"
#include "tests/support/eventually.h"

using platform::AddressFamily;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class SimConnectClientThreads : public ClientTest {
protected:
    SimConnectClientThreads() : ClientTest(Road::ipv4) {}
};

} // namespace

TEST_F(SimConnectClientThreads, openSendsTheNameAndTheVersionOfTheClient) {
    listen(peer_);
    ASSERT_EQ(openClient(), S_OK);
    ASSERT_TRUE(peer_.accepts());

    const std::string packet = peer_.packet();

    EXPECT_EQ(packet.size(), 16u + 256 + 4 + 4 + 16);
    EXPECT_EQ(packet, openPacket("Tarnwing"));
}

TEST_F(SimConnectClientThreads, eachCallIsAPacketWithItsParametersInTheirOrder) {
    connect();
    char data[] = {1, 2, 3, 4, 5, 6, 7, 8};
    const SIMCONNECT_DATA_INITPOSITION position{52.25, -4.5, 1000.0, -3.0, 2.0, 359.5, 1, 250};
    const struct {
        const char* name;
        std::function<HRESULT()> call;
        std::uint32_t operation;
        Bytes parameters;
    } table[] = {
        {"map client event", [&] { return SimConnect_MapClientEventToSimEvent(client_, 501, "GEAR_UP"); }, 0x04,
         Bytes().dword(501).text("GEAR_UP", 256)},
        {"transmit client event", [&] { return SimConnect_TransmitClientEvent(client_, 1, 2, 0xFFFFFFFF, 4, 16); },
         0x05, Bytes().dword(1).dword(2).dword(0xFFFFFFFF).dword(4).dword(16)},
        {"add event to notification group",
         [&] { return SimConnect_AddClientEventToNotificationGroup(client_, 11, 12, 1); }, 0x07,
         Bytes().dword(11).dword(12).dword(1)},
        {"set notification group priority",
         [&] { return SimConnect_SetNotificationGroupPriority(client_, 11, 10000000); }, 0x09,
         Bytes().dword(11).dword(10000000)},
        {"add to data definition",
         [&] {
             return SimConnect_AddToDataDefinition(client_, 401, "PLANE LATITUDE", "degrees",
                                                   SIMCONNECT_DATATYPE_FLOAT64, 0.5F, 3);
         },
         0x0C, Bytes().dword(401).text("PLANE LATITUDE", 256).text("degrees", 256).dword(4).float32(0.5F).dword(3)},
        {"add to data definition without a unit",
         [&] {
             return SimConnect_AddToDataDefinition(client_, 402, "ATC ID", nullptr, SIMCONNECT_DATATYPE_STRING32, 0,
                                                   SIMCONNECT_UNUSED);
         },
         0x0C, Bytes().dword(402).text("ATC ID", 256).text("", 256).dword(6).float32(0).dword(0xFFFFFFFF)},
        {"request data on object",
         [&] { return SimConnect_RequestDataOnSimObject(client_, 1, 2, 3, SIMCONNECT_PERIOD_SECOND, 5, 6, 7, 8); },
         0x0E, Bytes().dword(1).dword(2).dword(3).dword(4).dword(5).dword(6).dword(7).dword(8)},
        {"request data on object type",
         [&] {
             return SimConnect_RequestDataOnSimObjectType(client_, 1, 2, 200000, SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT);
         },
         0x0F, Bytes().dword(1).dword(2).dword(200000).dword(2)},
        {"set data on object: no array is one element",
         [&] { return SimConnect_SetDataOnSimObject(client_, 1, 2, 3, 0, 8, data); }, 0x10,
         Bytes().dword(1).dword(2).dword(3).dword(1).dword(8).raw({data, 8})},
        {"set data on object: an array", [&] { return SimConnect_SetDataOnSimObject(client_, 1, 2, 0, 2, 4, data); },
         0x10, Bytes().dword(1).dword(2).dword(0).dword(2).dword(4).raw({data, 8})},
        {"subscribe to system event", [&] { return SimConnect_SubscribeToSystemEvent(client_, 301, "ObjectAdded"); },
         0x17, Bytes().dword(301).text("ObjectAdded", 256)},
        {"create non-ATC aircraft",
         [&] { return SimConnect_AICreateNonATCAircraft(client_, "Boeing 737 KLM", "PH-EXF", position, 77); }, 0x29,
         Bytes()
             .text("Boeing 737 KLM", 256)
             .text("PH-EXF", 12)
             .float64(52.25)
             .float64(-4.5)
             .float64(1000)
             .float64(-3)
             .float64(2)
             .float64(359.5)
             .dword(1)
             .dword(250)
             .dword(77)},
        {"release control", [&] { return SimConnect_AIReleaseControl(client_, 1001, 78); }, 0x2B,
         Bytes().dword(1001).dword(78)},
        {"remove object", [&] { return SimConnect_AIRemoveObject(client_, 1001, 79); }, 0x2C,
         Bytes().dword(1001).dword(79)},
        {"set aircraft flight plan",
         [&] { return SimConnect_AISetAircraftFlightPlan(client_, 1001, "C:\\plans\\1", 80); }, 0x2D,
         Bytes().dword(1001).text("C:\\plans\\1", 260).dword(80)},
    };
    std::uint32_t packetId = 1;
    for (const auto& row : table) {
        EXPECT_EQ(row.call(), S_OK) << row.name;
        EXPECT_EQ(peer_.packet(), packetBytes(row.operation, ++packetId, row.parameters)) << row.name;
    }
}

TEST_F(SimConnectClientThreads, packetIdsCountFromTheOpenPacketWhichIsTheFirst) {
    connect();
    DWORD packetId = 0;
    EXPECT_EQ(SimConnect_GetLastSentPacketID(client_, &packetId), S_OK);
    EXPECT_EQ(packetId, 1u);
    SimConnect_AIRemoveObject(client_, 1, 2);
    SimConnect_AIRemoveObject(client_, 1, 2);
    EXPECT_EQ(SimConnect_GetLastSentPacketID(client_, &packetId), S_OK);
    EXPECT_EQ(packetId, 3u);
}

TEST_F(SimConnectClientThreads, aTextThatDoesNotFitIsRefusedAndNothingIsSent) {
    connect();
    const std::string longest(255, 'x');
    const std::string longestPath(259, 'p');
    const SIMCONNECT_DATA_INITPOSITION position{};
    const auto create = [&](const std::string& title, const char* tailNumber) {
        return SimConnect_AICreateNonATCAircraft(client_, title.c_str(), tailNumber, position, 1);
    };
    EXPECT_EQ(create(longest + "x", "PH-EXF"), E_INVALIDARG);
    EXPECT_EQ(create(longest, "1234567890123"), E_INVALIDARG);
    EXPECT_EQ(create(longest, "123456789012"), S_OK);
    EXPECT_EQ(peer_.packet().substr(16, 256 + 12), Bytes().text(longest, 256).text("123456789012", 12).str());
    EXPECT_EQ(SimConnect_AISetAircraftFlightPlan(client_, 1, (longestPath + "p").c_str(), 2), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AISetAircraftFlightPlan(client_, 1, longestPath.c_str(), 2), S_OK);
    EXPECT_EQ(peer_.packet(), packetBytes(0x2D, 3, Bytes().dword(1).text(longestPath, 260).dword(2)));
}

TEST_F(SimConnectClientThreads, aCallWithoutWhatItNeedsIsRefused) {
    connect();
    DWORD packetId = 0;
    const SIMCONNECT_DATA_INITPOSITION position{};
    EXPECT_EQ(SimConnect_MapClientEventToSimEvent(client_, 1, nullptr), E_INVALIDARG);
    EXPECT_EQ(SimConnect_SubscribeToSystemEvent(client_, 1, nullptr), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AddToDataDefinition(client_, 1, nullptr, nullptr, 1, 0, 0), E_INVALIDARG);
    EXPECT_EQ(SimConnect_SetDataOnSimObject(client_, 1, 2, 0, 0, 8, nullptr), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AICreateNonATCAircraft(client_, nullptr, "", position, 1), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AICreateNonATCAircraft(client_, "", nullptr, position, 1), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AISetAircraftFlightPlan(client_, 1, nullptr, 1), E_INVALIDARG);
    EXPECT_EQ(SimConnect_CallDispatch(client_, nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(SimConnect_GetLastSentPacketID(client_, nullptr), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AIRemoveObject(nullptr, 1, 2), E_INVALIDARG);
    EXPECT_EQ(SimConnect_CallDispatch(nullptr, keepRecord, nullptr), E_INVALIDARG);
    EXPECT_EQ(SimConnect_GetLastSentPacketID(nullptr, &packetId), E_INVALIDARG);
    EXPECT_EQ(SimConnect_Close(nullptr), E_INVALIDARG);
    EXPECT_EQ(SimConnect_Open(nullptr, "Tarnwing", nullptr, 0, nullptr, 0), E_INVALIDARG);
}

TEST_F(SimConnectClientThreads, dataLargerThanAPacketIsRefused) {
    connect();
    std::string data(65536 - 16 - 20, 'd');
    EXPECT_EQ(SimConnect_SetDataOnSimObject(client_, 1, 2, 0, 0, static_cast<DWORD>(data.size()), data.data()), S_OK);
    EXPECT_EQ(peer_.packet().size(), 65536u);
    data += 'd';
    EXPECT_EQ(SimConnect_SetDataOnSimObject(client_, 1, 2, 0, 0, static_cast<DWORD>(data.size()), data.data()),
              E_INVALIDARG);
    EXPECT_EQ(SimConnect_SetDataOnSimObject(client_, 1, 2, 0, 0xFFFFFFFF, 0xFFFFFFFF, data.data()), E_INVALIDARG);
}

TEST_F(SimConnectClientThreads, sendingTakesNothingFromTheHeap) {
    connect();
    double data[8] = {};
    const std::size_t before = allocationsOfThisThread();
    for (int i = 0; i < 100; ++i) {
        SimConnect_SetDataOnSimObject(client_, 1, 2, 0, 0, sizeof data, data);
        SimConnect_TransmitClientEvent(client_, 1, 2, 3, 4, 5);
    }
    EXPECT_EQ(allocationsOfThisThread(), before);
}

TEST_F(SimConnectClientThreads, everyWaitingRecordIsDispatchedOnceAndInOrder) {
    connect();
    const std::string open = recordBytes(2, std::string(296, 'o'));
    const std::string event = recordBytes(4, "twelve bytes");
    const std::string odd = recordBytes(8, "odd");

    peer_.sends(open + event + odd + event);

    ASSERT_TRUE(dispatchesUntil(4));
    EXPECT_EQ(dispatch(), S_OK);
    EXPECT_THAT(dispatched_.records, ElementsAre(open, event, odd, event));
    EXPECT_TRUE(dispatched_.aligned);
}

TEST_F(SimConnectClientThreads, withoutARecordADispatchDoesNothing) {
    connect();
    EXPECT_EQ(dispatch(), S_OK);
    EXPECT_THAT(dispatched_.records, IsEmpty());
}

TEST_F(SimConnectClientThreads, theProcedureMaySendAndDispatch) {
    connect();
    struct Context {
        HANDLE client = nullptr;
        Dispatched dispatched;
        HRESULT sent = E_FAIL;
    } context;
    context.client = client_;
    const std::string first = recordBytes(4, "1");
    const std::string second = recordBytes(4, "2");
    peer_.sends(first + second);
    const DispatchProc procedure = [](SIMCONNECT_RECV* record, DWORD size, void* pointer) {
        auto& given = *static_cast<Context*>(pointer);
        given.sent = SimConnect_AIRemoveObject(given.client, 1, 2);
        SimConnect_CallDispatch(given.client, keepRecord, &given.dispatched);
        keepRecord(record, size, &given.dispatched);
    };

    EXPECT_TRUE(eventually([&] {
        SimConnect_CallDispatch(client_, procedure, &context);
        return context.dispatched.records.size() == 2;
    }));

    EXPECT_EQ(context.sent, S_OK);
    EXPECT_THAT(context.dispatched.records, ::testing::UnorderedElementsAre(first, second));
}

TEST_F(SimConnectClientThreads, aRecordAboveTheBoundOfWhatWaitsIsTakenWhereTheSettingsAllowIt) {
    const std::string largest = recordBytes(8, std::string(80'000'000 - 12, 'x'));
    connect("MaxReceiveSize=80000000");
    ASSERT_TRUE(peer_.sends(largest));
    ASSERT_TRUE(dispatchesUntil(1));
    EXPECT_TRUE(dispatched_.records.front() == largest);
    EXPECT_EQ(dispatch(), S_OK);
}

TEST_F(SimConnectClientThreads, everyCallOnAFailedConnectionFails) {
    connect();
    peer_.sends(Bytes().dword(0));
    ASSERT_TRUE(fails());
    DWORD packetId = 0;
    double data = 0;
    EXPECT_EQ(SimConnect_CallDispatch(client_, keepRecord, &dispatched_), E_FAIL);
    EXPECT_EQ(SimConnect_GetLastSentPacketID(client_, &packetId), E_FAIL);
    EXPECT_EQ(SimConnect_SubscribeToSystemEvent(client_, 1, "Sim"), E_FAIL);
    EXPECT_EQ(SimConnect_MapClientEventToSimEvent(client_, 1, "GEAR_UP"), E_FAIL);
    EXPECT_EQ(SimConnect_AddClientEventToNotificationGroup(client_, 1, 1, 0), E_FAIL);
    EXPECT_EQ(SimConnect_SetNotificationGroupPriority(client_, 1, 1), E_FAIL);
    EXPECT_EQ(SimConnect_TransmitClientEvent(client_, 1, 1, 0, 1, 0), E_FAIL);
    EXPECT_EQ(SimConnect_AddToDataDefinition(client_, 1, "PLANE LATITUDE", "degrees", 4, 0, 0), E_FAIL);
    EXPECT_EQ(SimConnect_RequestDataOnSimObject(client_, 1, 1, 0, 4, 0, 0, 0, 0), E_FAIL);
    EXPECT_EQ(SimConnect_RequestDataOnSimObjectType(client_, 1, 1, 1000, 2), E_FAIL);
    EXPECT_EQ(SimConnect_SetDataOnSimObject(client_, 1, 1, 0, 0, sizeof data, &data), E_FAIL);
    EXPECT_EQ(SimConnect_AICreateNonATCAircraft(client_, "title", "PH-EXF", {}, 1), E_FAIL);
    EXPECT_EQ(SimConnect_AIReleaseControl(client_, 1, 1), E_FAIL);
    EXPECT_EQ(SimConnect_AIRemoveObject(client_, 1, 1), E_FAIL);
    EXPECT_EQ(SimConnect_AISetAircraftFlightPlan(client_, 1, "plan", 1), E_FAIL);
    EXPECT_EQ(SimConnect_Close(client_), S_OK);
    client_ = nullptr;
}

TEST_F(SimConnectClientThreads, withoutAConfigurationItIsTheSimulatorsOwnPipe) {
    // A version that no simulator on this machine has.
    gSimulatorVersion = 99;
    ASSERT_EQ(peer_.listensPipe("\\\\.\\pipe\\Lockheed Martin Prepar3D v99\\SimConnect"), 0);
    EXPECT_EQ(openClient(), S_OK);
    EXPECT_TRUE(peer_.accepts());
    EXPECT_EQ(peer_.packet(), openPacket("Tarnwing"));
    gSimulatorVersion = 0;
}

TEST_F(SimConnectClientThreads, theConfigurationIndexChoosesTheSection) {
    ASSERT_EQ(peer_.listensTcp(AddressFamily::ipv4), 0);
    writeFile("SimConnect.cfg", fmt::format("[SimConnect.3]\nProtocol=IPv4\nPort={}", peer_.port()));
    EXPECT_EQ(openClient(3), S_OK);
    EXPECT_TRUE(peer_.accepts());
}

TEST_F(SimConnectClientThreads, anOpenThatFailsGivesNoHandle) {
    const struct {
        const char* what;
        const char* lines;
    } table[] = {
        {"no such pipe", "Port=Tarnwing tests\\no such pipe"},
        {"a pipe's name above all lengths",
         "Port=xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"
         "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"},
        {"nobody listens", "Protocol=IPv4\nPort=1"},
        {"nobody listens", "Protocol=IPv6\nPort=1"},
        {"no port number", "Protocol=IPv4\nPort=none"},
        {"no such host", "Protocol=IPv4\nPort=1\nAddress=no..such..host"},
        {"an address of the other family", "Protocol=IPv6\nPort=1\nAddress=127.0.0.1"},
    };
    for (const auto& row : table) {
        configure(row.lines);
        client_ = this;
        EXPECT_EQ(openClient(), E_FAIL) << row.what;
        EXPECT_EQ(client_, nullptr) << row.what;
    }
}

TEST_F(SimConnectClientThreads, aFailedTransportIsNotReplacedByAnother) {
    // The simulator's own pipe would be there.
    gSimulatorVersion = 99;
    ASSERT_EQ(peer_.listensPipe("\\\\.\\pipe\\Lockheed Martin Prepar3D v99\\SimConnect"), 0);
    configure("Protocol=IPv4\nPort=1");
    EXPECT_EQ(openClient(), E_FAIL);
    gSimulatorVersion = 0;
}

TEST_F(SimConnectClientThreads, aClientWithoutAFittingNameIsRefused) {
    listen(peer_);
    HANDLE handle = this;
    EXPECT_EQ(SimConnect_Open(&handle, nullptr, nullptr, 0, nullptr, 0), E_INVALIDARG);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(SimConnect_Open(&handle, std::string(256, 'n').c_str(), nullptr, 0, nullptr, 0), E_INVALIDARG);
    EXPECT_EQ(handle, nullptr);
}
