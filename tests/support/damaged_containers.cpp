// tests/support/damaged_containers.cpp
#include "tests/support/damaged_containers.h"

#include <filesystem>

#include <fmt/format.h>

#include "tests/support/sealed_input.h"

namespace {

constexpr std::size_t headerBytes = 24;
constexpr std::size_t clearChunkBytes = 4096;
constexpr std::size_t sealedChunkBytes = clearChunkBytes + 17;
constexpr const char* noHeader = "Invalid header or key";
constexpr const char* noChunk = "Decryption failed";

constexpr std::size_t chunkEnd(std::size_t chunks) {
    return headerBytes + chunks * sealedChunkBytes;
}

std::string sealed(std::string_view clear, const DataKey& key = gf_dataKey()) {
    writeSealed("sealed_for_damage", clear, key);
    std::string bytes = readFile("sealed_for_damage");
    std::filesystem::remove("sealed_for_damage");
    return bytes;
}

/// The last tag stands in the third chunk.
std::string widened(std::string_view xml) {
    std::string text(xml);
    text.insert(text.rfind("</"), 2 * clearChunkBytes + clearChunkBytes / 2 - xml.size(), ' ');
    return text;
}

std::string lengthened(std::string_view xml, std::size_t size) {
    std::string text(xml);
    text.resize(size, ' ');
    return text;
}

std::string flippedAt(std::string bytes, std::size_t place) {
    bytes.at(place) = static_cast<char>(bytes.at(place) ^ 1);
    return bytes;
}

std::string withFirstChunksSwapped(const std::string& sound) {
    return sound.substr(0, headerBytes) + sound.substr(chunkEnd(1), sealedChunkBytes) +
           sound.substr(headerBytes, sealedChunkBytes) + sound.substr(chunkEnd(2));
}

} // namespace

std::vector<DamagedContainer> damagedContainers(std::string_view xml) {
    const std::string clear = widened(xml);
    const std::string sound = sealed(clear);
    return {
        {"missing", std::nullopt, "Could not open input file: "},
        {"empty", "", noHeader},
        {"cut within the header", sound.substr(0, headerBytes - 1), noHeader},
        {"cut behind the header", sound.substr(0, headerBytes), ""},
        {"cut within chunk 1", sound.substr(0, headerBytes + 100), noChunk},
        {"cut a byte before the end of chunk 1", sound.substr(0, chunkEnd(1) - 1), noChunk},
        {"cut behind chunk 1", sound.substr(0, chunkEnd(1)), ""},
        {"cut a byte behind chunk 1", sound.substr(0, chunkEnd(1) + 1), noChunk},
        {"cut behind chunk 2", sound.substr(0, chunkEnd(2)), ""},
        {"cut a byte before the end", sound.substr(0, sound.size() - 1), noChunk},
        {"a bit flipped in the header's first byte", flippedAt(sound, 0), noChunk},
        {"a bit flipped in the header's last byte", flippedAt(sound, headerBytes - 1), noChunk},
        {"a bit flipped in the tag of chunk 1", flippedAt(sound, headerBytes), noChunk},
        {"a bit flipped in chunk 2", flippedAt(sound, chunkEnd(1) + 2000), noChunk},
        {"a bit flipped in the authentication of chunk 2", flippedAt(sound, chunkEnd(2) - 1), noChunk},
        {"a bit flipped in the tag of the last chunk", flippedAt(sound, chunkEnd(2)), noChunk},
        {"a bit flipped in the last byte", flippedAt(sound, sound.size() - 1), noChunk},
        {"chunks 1 and 2 swapped", withFirstChunksSwapped(sound), noChunk},
        {"under another key", sealed(clear, *parseDataKey("this is some other key, 32 bytes")), noChunk},
        // Only the file's end tells where a short chunk ends.
        {"more bytes behind a short last chunk", sound + "more", noChunk},
        {"no container at all", "just some text that is longer than a header", noChunk},
    };
}

std::vector<DamagedContainer> toleratedContainers(std::string_view xml) {
    return {
        {"no final chunk", sealed(lengthened(xml, 2 * clearChunkBytes + 1)).substr(0, chunkEnd(2)), ""},
        {"more bytes behind a full last chunk", sealed(lengthened(xml, 2 * clearChunkBytes)) + "more and more", ""},
    };
}

void install(const DamagedContainer& container, const char* path) {
    std::filesystem::remove(path);
    if (container.bytes) {
        writeFile(path, *container.bytes);
    }
}

bool isInstalled(const DamagedContainer& container, const char* path) {
    return std::filesystem::exists(path) ? container.bytes == readFile(path) : !container.bytes;
}
