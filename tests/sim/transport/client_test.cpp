#include "tests/sim/transport/client_test.h"

#include <fmt/format.h>

#include "platform/files.h"
#include "platform/sockets.h"
#include "tests/support/eventually.h"

using platform::AddressFamily;

void keepRecord(SIMCONNECT_RECV* record, DWORD recordBytes, void* context) {
    auto& dispatched = *static_cast<Dispatched*>(context);
    dispatched.records.emplace_back(reinterpret_cast<const char*>(record), recordBytes);
    dispatched.aligned = dispatched.aligned && reinterpret_cast<std::uintptr_t>(record) % 8 == 0;
}

std::string openPacket(std::string_view name) {
    return packetBytes(0x01, 1,
                       Bytes().text(name, 256).dword(0).raw({"\0XSF", 4}).dword(10).dword(0).dword(61259).dword(0));
}

void ClientTest::SetUp() {
    platform::startSocketLibrary();
    platform::setDocumentsFolders(folder_.path() / "documents");
    platform::setLocalPipeFolder(folder_.path());
}

void ClientTest::TearDown() {
    closeClient();
    platform::setDocumentsFolders({});
    platform::setLocalPipeFolder({});
    platform::cleanUpSocketLibrary();
}

void ClientTest::configure(std::string_view lines) {
    writeFile("SimConnect.cfg", fmt::format("[SimConnect]\n{}", lines));
}

HRESULT ClientTest::openClient(DWORD configIndex, HANDLE event) {
    return SimConnect_Open(&client_, "Tarnwing", nullptr, 0, event, configIndex);
}

void ClientTest::closeClient() {
    if (client_ != nullptr) {
        EXPECT_EQ(SimConnect_Close(client_), S_OK);
        client_ = nullptr;
    }
}

void ClientTest::listen(Peer& peer, std::string_view moreLines) {
    if (road_ == Road::pipe) {
        const std::string name = fmt::format("Tarnwing tests\\{}.{}", folder_.path().filename().string(), ++pipes_);
        ASSERT_EQ(peer.listensPipe("\\\\.\\pipe\\" + name), 0);
        configure(fmt::format("Protocol=Pipe\nPort={}\n{}", name, moreLines));
        return;
    }
    const bool four = road_ == Road::ipv4;
    ASSERT_EQ(peer.listensTcp(four ? AddressFamily::ipv4 : AddressFamily::ipv6), 0);
    configure(fmt::format("Protocol={}\nPort={}\n{}", four ? "IPv4" : "IPv6", peer.port(), moreLines));
}

void ClientTest::connect(Peer& peer, std::string_view moreLines) {
    ASSERT_NO_FATAL_FAILURE(listen(peer, moreLines));
    ASSERT_EQ(openClient(), S_OK);
    ASSERT_TRUE(peer.accepts());
    ASSERT_EQ(peer.packet(), openPacket("Tarnwing"));
}

bool ClientTest::dispatchesUntil(std::size_t records) {
    return eventually([&] {
        dispatch();
        return dispatched_.records.size() >= records;
    });
}

bool ClientTest::fails() {
    return eventually([&] { return dispatch() == E_FAIL; });
}
