// The world over the wire, with the program's own client at the other end.
#include "rig/world/wire_server.h"

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <sstream>

#include <fmt/format.h>

#include "platform/files.h"
#include "platform/sockets.h"
#include "rig/world/trace_reader.h"
#include "sim/sim_ids.h"
#include "tests/rig/world/world_client.h"
#include "tests/support/eventually.h"
#include "tests/support/temporary_folder.h"

using namespace rig;
using platform::AddressFamily;
using ::testing::Contains;
using ::testing::ElementsAre;

namespace {

struct Dispatched {
    std::vector<DWORD> ids;
    std::vector<std::string> records;
};

void keepRecord(SIMCONNECT_RECV* record, DWORD recordBytes, void* context) {
    auto& dispatched = *static_cast<Dispatched*>(context);
    dispatched.ids.push_back(record->dwID);
    dispatched.records.emplace_back(reinterpret_cast<const char*>(record), recordBytes);
}

/// A world, and a client that SimConnect.cfg leads to it. The server's frames run on the test's thread.
class WorldOverTheWireThreads : public ::testing::Test {
protected:
    void SetUp() override {
        platform::startSocketLibrary();
        platform::setDocumentsFolders(folder_.path() / "documents");
        platform::setLocalPipeFolder(folder_.path());
    }
    void TearDown() override {
        close(client_);
        platform::setDocumentsFolders({});
        platform::setLocalPipeFolder({});
        platform::cleanUpSocketLibrary();
    }

    static void close(HANDLE& client) {
        if (client != nullptr) {
            SimConnect_Close(std::exchange(client, nullptr));
        }
    }

    void listenTcp(AddressFamily family) {
        std::uint16_t port = 0;
        ASSERT_EQ(server_.listenTcp(family, port), 0);
        ASSERT_NE(port, 0);
        port_ = port;
        writeFile("SimConnect.cfg", fmt::format("[SimConnect]\nProtocol={}\nPort={}\n",
                                                family == AddressFamily::ipv4 ? "IPv4" : "IPv6", port));
    }
    void listenPipe() {
        const std::string name = "Tarnwing test " + folder_.path().filename().string();
        ASSERT_EQ(server_.listenPipe("\\\\.\\pipe\\" + name), 0);
        writeFile("SimConnect.cfg", fmt::format("[SimConnect]\nProtocol=Pipe\nPort={}\n", name));
    }

    static HRESULT open(HANDLE& client) { return SimConnect_Open(&client, "Tarnwing", nullptr, 0, nullptr, 0); }

    bool framesUntil(const std::function<bool()>& condition) {
        return eventually([&] {
            server_.frame(1.0 / 30);
            last_ = SimConnect_CallDispatch(client_, keepRecord, &dispatched_);
            return condition();
        });
    }
    bool framesUntilRecord(DWORD id) {
        return framesUntil([&] { return std::count(dispatched_.ids.begin(), dispatched_.ids.end(), id) > 0; });
    }

    void connect() {
        listenTcp(AddressFamily::ipv4);
        ASSERT_EQ(open(client_), S_OK);
        ASSERT_TRUE(framesUntilRecord(SIMCONNECT_RECV_ID_OPEN));
    }

    TemporaryFolder folder_;
    World world_{groundScene(), airliner()};
    WireServer server_{world_};
    std::uint16_t port_ = 0;
    HANDLE client_ = nullptr;
    HRESULT last_ = S_OK;
    Dispatched dispatched_;
};

void createMoveAndRemove(HANDLE client, World& world, const std::function<bool(DWORD)>& recordComes) {
    SimConnect_SubscribeToSystemEvent(client, eventObjectAdded, "ObjectAdded");
    SimConnect_AddToDataDefinition(client, 402, "Plane Latitude", "degree", SIMCONNECT_DATATYPE_FLOAT64, 0,
                                   SIMCONNECT_UNUSED);
    SimConnect_MapClientEventToSimEvent(client, eventNavLights, "NAV_LIGHTS_SET");
    ASSERT_EQ(SimConnect_AICreateNonATCAircraft(client, "Airliner", "KLM123456789", onTheGround(), requestCreate),
              S_OK);
    ASSERT_TRUE(recordComes(SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE));
    ASSERT_EQ(world.aircraft().size(), 1u);
    const WorldObject& object = world.aircraft().begin()->second;
    EXPECT_EQ(object.tailNumber, "KLM123456789");
    double latitude = 52.25;
    ASSERT_EQ(SimConnect_SetDataOnSimObject(client, 402, object.id, 0, 0, sizeof latitude, &latitude), S_OK);
    ASSERT_EQ(SimConnect_TransmitClientEvent(client, object.id, eventNavLights, 1, notificationGroup, 0), S_OK);
    ASSERT_EQ(SimConnect_RequestDataOnSimObjectType(client, 101, 402, 50000, 2), S_OK);
    ASSERT_TRUE(recordComes(SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE));
    EXPECT_NEAR(object.position.lat, 52.25, 1e-4);
    EXPECT_EQ(object.controls.lights, DWORD{lightNav});
    ASSERT_EQ(SimConnect_AIRemoveObject(client, object.id, requestRemove), S_OK);
    ASSERT_EQ(SimConnect_AIRemoveObject(client, 4711, requestRemove), S_OK);
    ASSERT_TRUE(recordComes(SIMCONNECT_RECV_ID_EXCEPTION));
    EXPECT_TRUE(world.aircraft().empty());
}

} // namespace

TEST_F(WorldOverTheWireThreads, anAircraftLivesAndGoesByIpv4) {
    listenTcp(AddressFamily::ipv4);
    ASSERT_EQ(open(client_), S_OK);
    createMoveAndRemove(client_, world_, [this](DWORD id) { return framesUntilRecord(id); });
}

TEST_F(WorldOverTheWireThreads, anAircraftLivesAndGoesByIpv6) {
    listenTcp(AddressFamily::ipv6);
    ASSERT_EQ(open(client_), S_OK);
    createMoveAndRemove(client_, world_, [this](DWORD id) { return framesUntilRecord(id); });
}

TEST_F(WorldOverTheWireThreads, anAircraftLivesAndGoesByPipe) {
    listenPipe();
    ASSERT_EQ(open(client_), S_OK);
    createMoveAndRemove(client_, world_, [this](DWORD id) { return framesUntilRecord(id); });
}

TEST_F(WorldOverTheWireThreads, exceptionsNameThePacketOfTheirRequest) {
    connect();
    ASSERT_EQ(SimConnect_AICreateNonATCAircraft(client_, "Unknown", "A", onTheGround(), requestCreate), S_OK);
    DWORD packetId = 0;
    ASSERT_EQ(SimConnect_GetLastSentPacketID(client_, &packetId), S_OK);
    ASSERT_TRUE(framesUntilRecord(SIMCONNECT_RECV_ID_EXCEPTION));
    const Received exception{0, dispatched_.records.back()};
    EXPECT_EQ(exception.dword(12), SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED);
    EXPECT_EQ(exception.dword(16), packetId);
}

TEST_F(WorldOverTheWireThreads, severalClientsAreServedAtOnce) {
    connect();
    listenPipe();
    HANDLE other = nullptr;
    ASSERT_EQ(open(other), S_OK);
    SimConnect_SubscribeToSystemEvent(client_, eventObjectAdded, "ObjectAdded");
    SimConnect_AICreateNonATCAircraft(other, "Airliner", "OTHER", onTheGround(), requestCreate);
    EXPECT_TRUE(framesUntilRecord(SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE));
    EXPECT_EQ(server_.clientCount(), 2u);
    close(other);
    EXPECT_TRUE(framesUntil([&] { return server_.clientCount() == 1; }));
    EXPECT_TRUE(world_.aircraft().empty());
}

TEST_F(WorldOverTheWireThreads, aClientThatSendsNoPacketIsLetGoAndTheOthersStay) {
    connect();
    for (const std::string_view bytes :
         {std::string_view("\0\0\0\0", 4), std::string_view("GET / HTTP/1.1\r\n\r\n"),
          std::string_view("\x10\0\0\0\4\0\0\0\x7F\0\0\xF0\1\0\0\0", 16), std::string_view("\xFF\xFF\xFF\x7F", 4)}) {
        platform::StreamConnection stranger;
        ASSERT_EQ(stranger.createEvents(), 0);
        ASSERT_EQ(stranger.connectTcp(AddressFamily::ipv4, "127.0.0.1", port_, std::chrono::seconds(10)), 0);
        ASSERT_TRUE(framesUntil([&] { return server_.clientCount() == 2; }));
        ASSERT_EQ(stranger.send(bytes, std::chrono::seconds(10)), 0);
        EXPECT_TRUE(framesUntil([&] { return server_.clientCount() == 1; }));
        EXPECT_EQ(last_, S_OK);
    }
}

TEST_F(WorldOverTheWireThreads, aClientThatTakesNothingIsLetGo) {
    listenTcp(AddressFamily::ipv4);
    platform::StreamConnection deaf;
    ASSERT_EQ(deaf.createEvents(), 0);
    ASSERT_EQ(deaf.connectTcp(AddressFamily::ipv4, "127.0.0.1", port_, std::chrono::seconds(10)), 0);
    ASSERT_TRUE(eventually([&] {
        server_.frame(1.0 / 30);
        return server_.clientCount() == 1;
    }));
    EXPECT_TRUE(eventually([&] {
        world_.play(ExceptionsAct{100000, SIMCONNECT_EXCEPTION_ERROR});
        server_.frame(1.0 / 30);
        return server_.clientCount() == 0;
    }));
}

TEST_F(WorldOverTheWireThreads, aQuitIsToldBeforeTheConnectionCloses) {
    connect();
    world_.play(QuitAct{});
    EXPECT_TRUE(framesUntil([&] { return last_ == E_FAIL; }));
    EXPECT_THAT(dispatched_.ids, Contains(SIMCONNECT_RECV_ID_QUIT));
    EXPECT_EQ(server_.clientCount(), 0u);
}

TEST_F(WorldOverTheWireThreads, aDroppedConnectionFailsAndAnotherOneOpens) {
    connect();
    world_.play(DropConnectionAct{});
    EXPECT_TRUE(framesUntil([&] { return last_ == E_FAIL; }));
    close(client_);
    dispatched_ = {};
    ASSERT_EQ(open(client_), S_OK);
    EXPECT_TRUE(framesUntilRecord(SIMCONNECT_RECV_ID_OPEN));
}

TEST_F(WorldOverTheWireThreads, aLyingRecordFailsTheClientAndNotTheWorld) {
    listenTcp(AddressFamily::ipv4);
    for (const Lie lie : {Lie::badSize, Lie::half, Lie::zeroSize, Lie::huge}) {
        dispatched_ = {};
        ASSERT_EQ(open(client_), S_OK);
        ASSERT_TRUE(framesUntilRecord(SIMCONNECT_RECV_ID_OPEN));
        world_.play(LyingRecordAct{lie});
        EXPECT_TRUE(framesUntil([&] { return last_ == E_FAIL; }));
        EXPECT_THAT(dispatched_.ids, ElementsAre(SIMCONNECT_RECV_ID_OPEN));
        close(client_);
    }
}

TEST_F(WorldOverTheWireThreads, aStalledWorldKeepsRequestsForLater) {
    connect();
    world_.play(StallAct{2});
    SimConnect_AIRemoveObject(client_, 4711, requestRemove);
    for (int i = 0; i < 30; ++i) {
        server_.frame(1.0 / 30);
    }
    SimConnect_CallDispatch(client_, keepRecord, &dispatched_);
    EXPECT_THAT(dispatched_.ids, ElementsAre(SIMCONNECT_RECV_ID_OPEN));
    EXPECT_TRUE(framesUntilRecord(SIMCONNECT_RECV_ID_EXCEPTION));
}

/// So that the time of a step can be that at which the last of what it shows has come.
TEST_F(WorldOverTheWireThreads, whatComesBehindTheReceivingWaitsForTheNextOne) {
    connect();
    server_.receive();
    SimConnect_AIRemoveObject(client_, 4711, requestRemove);
    // Long enough for a request and its answer.
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
    while (std::chrono::steady_clock::now() < end) {
        server_.step(1.0 / 30);
        SimConnect_CallDispatch(client_, keepRecord, &dispatched_);
    }
    EXPECT_EQ(std::count(dispatched_.ids.begin(), dispatched_.ids.end(), SIMCONNECT_RECV_ID_EXCEPTION), 0);
    EXPECT_TRUE(framesUntilRecord(SIMCONNECT_RECV_ID_EXCEPTION));
}

TEST_F(WorldOverTheWireThreads, aPortThatIsTakenIsAnErrorCode) {
    listenTcp(AddressFamily::ipv4);
    std::uint16_t port = port_;
    EXPECT_NE(server_.listenTcp(AddressFamily::ipv4, port), 0);
}

TEST_F(WorldOverTheWireThreads, whoNeverOpensLeavesNothingInTheTrace) {
    std::ostringstream stream;
    TraceWriter writer(stream);
    World world(groundScene(), {}, &writer);
    WireServer server(world);
    std::uint16_t port = 0;
    ASSERT_EQ(server.listenTcp(AddressFamily::ipv4, port), 0);
    {
        platform::StreamConnection stranger;
        ASSERT_EQ(stranger.createEvents(), 0);
        ASSERT_EQ(stranger.connectTcp(AddressFamily::ipv4, "127.0.0.1", port, std::chrono::seconds(10)), 0);
        ASSERT_TRUE(eventually([&] {
            server.frame(1.0 / 30);
            return server.clientCount() == 1;
        }));
    }
    ASSERT_TRUE(eventually([&] {
        server.frame(1.0 / 30);
        return server.clientCount() == 0;
    }));
    writer.flush();
    std::istringstream trace(stream.str());
    TraceReader reader(trace);
    TraceItem item;
    while (reader.next(item)) {
        EXPECT_TRUE(std::holds_alternative<TraceFrame>(item));
    }
}
