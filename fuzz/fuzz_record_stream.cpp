// fuzz/fuzz_record_stream.cpp
// The simulator's stream: whatever arrives, and however it is cut into pieces, records are whole, within the limit and
// aligned, and the pieces make no difference.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "sim/transport/record_stream.h"

namespace {

constexpr std::size_t limit = 300;

struct Cut {
    std::vector<std::string> records;
    bool sound = true;
};

void keepRecords(RecordBatch& batch, std::vector<std::string>& records) {
    batch.forEach([&](char* record, std::uint32_t size) {
        if (size < 12 || size > limit || reinterpret_cast<std::uintptr_t>(record) % 8 != 0) {
            std::abort();
        }
        records.emplace_back(record, size);
        std::fill(record, record + size, '\xFF'); // the procedure may write
    });
    batch.clear();
}

Cut cutInPieces(std::string_view bytes, std::size_t pieceBytes) {
    Cut cut;
    RecordStream stream(limit);
    RecordBatch arrived;
    RecordBatch waiting;
    bool dispatching = false; // at every other piece
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, pieceBytes);
        cut.sound = stream.append(piece, arrived);
        bytes.remove_prefix(piece.size());
        waiting.take(arrived);
        if (dispatching) {
            keepRecords(waiting, cut.records);
        }
        dispatching = !dispatching;
    }
    keepRecords(waiting, cut.records);
    return cut;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::size_t pieceBytes = std::size_t{data[0]} + 1;

    const Cut whole = cutInPieces(bytes, std::max<std::size_t>(bytes.size(), 1));
    const Cut pieces = cutInPieces(bytes, pieceBytes);

    if (whole.records != pieces.records || whole.sound != pieces.sound) {
        std::abort();
    }
    return 0;
}
