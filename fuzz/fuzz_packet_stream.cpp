// What a client sends over the wire: whatever arrives, and however it is cut into pieces, no byte outside is read, the
// pieces make no difference, and a world that gets the requests goes on.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include "rig/world/client_session.h"
#include "rig/world/packet_decoder.h"
#include "rig/world/world.h"

namespace {

constexpr int frames = 5;

struct Cut {
    std::vector<rig::SentRequest> requests;
    bool sound = true;
};

Cut cutInPieces(std::string_view bytes, std::size_t pieceBytes) {
    Cut cut;
    rig::PacketStream stream;
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, pieceBytes);
        cut.sound = stream.append(piece, cut.requests);
        bytes.remove_prefix(piece.size());
    }
    return cut;
}

rig::AircraftTitles titles() {
    rig::AircraftTitles known;
    known.addLines({"[fltsim.0]", "title=Airliner"});
    return known;
}

void letTheWorldHandle(Cut cut) {
    rig::World world({}, titles());
    rig::ClientSession session(world);
    for (rig::SentRequest& sent : cut.requests) {
        session.receive(sent.packetId, std::move(sent.request));
        world.step();
    }
    for (int i = 0; i < frames; ++i) {
        world.step();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::size_t pieceBytes = std::size_t{data[0]} + 1;

    Cut whole = cutInPieces(bytes, std::max<std::size_t>(bytes.size(), 1));
    const Cut pieces = cutInPieces(bytes, pieceBytes);

    if (whole.requests.size() != pieces.requests.size() || whole.sound != pieces.sound) {
        std::abort();
    }
    letTheWorldHandle(std::move(whole));
    return 0;
}
