// distribution/sealed_file.cpp
#include "distribution/sealed_file.h"

#include <fstream>
#include <ios>
#include <istream>
#include <stdexcept>
#include <string>

#include <fmt/format.h>
#include <sodium.h>

#include "core/log.h"
#include "platform/files.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t headerBytes = crypto_secretstream_xchacha20poly1305_HEADERBYTES;
constexpr std::size_t authenticationBytes = crypto_secretstream_xchacha20poly1305_ABYTES;
constexpr std::size_t clearChunkBytes = 4096;
constexpr std::size_t sealedChunkBytes = clearChunkBytes + authenticationBytes;
static_assert(std::tuple_size_v<DataKey> == crypto_secretstream_xchacha20poly1305_KEYBYTES);

using StreamState = crypto_secretstream_xchacha20poly1305_state;

// --- The key ---

constexpr int hexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

constexpr std::optional<DataKey> keyOfText(std::string_view text) {
    DataKey key{};
    if (text.size() == key.size()) {
        for (std::size_t i = 0; i < key.size(); ++i) {
            key[i] = static_cast<unsigned char>(text[i]);
        }
        return key;
    }
    if (text.size() != 2 * key.size()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < key.size(); ++i) {
        const int high = hexDigit(text[2 * i]);
        const int low = hexDigit(text[2 * i + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        key[i] = static_cast<unsigned char>(high * 16 + low);
    }
    return key;
}

constexpr std::optional<DataKey> keyOfBuild = keyOfText(TARNWING_DATA_KEY);
static_assert(keyOfBuild, "TARNWING_DATA_KEY must be 32 characters or 64 hexadecimal digits");

// --- The stream ---

void requireLibrary() {
    if (sodium_init() < 0) {
        throw std::runtime_error("libsodium does not start");
    }
}

std::ifstream openInput(const fs::path& path) {
    std::ifstream input(path, std::ios::binary);
    if (!input) {
        throw std::runtime_error("Could not open input file: " + platform::utf8FromPath(path));
    }
    return input;
}

std::ofstream openOutput(const fs::path& path) {
    std::ofstream output(path, std::ios::binary | std::ios::trunc);
    if (!output) {
        throw std::runtime_error("Could not open output file: " + platform::utf8FromPath(path));
    }
    return output;
}

void closeOutput(std::ofstream& output, const fs::path& path) {
    output.close();
    if (!output) {
        throw std::runtime_error("Could not write output file: " + platform::utf8FromPath(path));
    }
}

template <std::size_t Size>
std::size_t readBlock(std::istream& input, std::array<unsigned char, Size>& block) {
    input.read(reinterpret_cast<char*>(block.data()), Size);
    return static_cast<std::size_t>(input.gcount());
}

void writeBlock(std::ostream& output, const unsigned char* bytes, std::size_t count) {
    output.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(count));
}

StreamState beginOpening(std::istream& input, const DataKey& key) {
    std::array<unsigned char, headerBytes> header{};
    StreamState state{};
    if (readBlock(input, header) != headerBytes ||
        crypto_secretstream_xchacha20poly1305_init_pull(&state, header.data(), key.data()) != 0) {
        throw std::runtime_error("Invalid header or key");
    }
    return state;
}

/// Gives each clear chunk to `take`; whether the last one said that it is the last.
template <typename Take>
bool openChunks(std::istream& input, const DataKey& key, Take take) {
    requireLibrary();
    StreamState state = beginOpening(input, key);
    std::array<unsigned char, sealedChunkBytes> sealed{};
    std::array<unsigned char, clearChunkBytes> clear{};
    while (const std::size_t count = readBlock(input, sealed)) {
        unsigned long long clearCount = 0;
        unsigned char tag = 0;
        if (crypto_secretstream_xchacha20poly1305_pull(&state, clear.data(), &clearCount, &tag, sealed.data(), count,
                                                       nullptr, 0) != 0) {
            throw std::runtime_error("Decryption failed");
        }
        take(clear.data(), static_cast<std::size_t>(clearCount));
        if (tag == crypto_secretstream_xchacha20poly1305_TAG_FINAL) {
            return true;
        }
    }
    return false;
}

bool isAtEnd(std::istream& input) {
    return input.peek() == std::istream::traits_type::eof();
}

} // namespace

const DataKey& gf_dataKey() {
    static constexpr DataKey key = *keyOfBuild;
    return key;
}

std::optional<DataKey> parseDataKey(std::string_view text) {
    return keyOfText(text);
}

bool gf_streamDecrypt(const fs::path& input, const fs::path& output) {
    try {
        lf_streamDecryptFile(input, output, gf_dataKey());
        return true;
    } catch (const std::exception& exception) {
        logError(fmt::format("{} exception: {}", "gf_streamDecrypt", exception.what()));
        return false;
    }
}

void lf_streamDecryptFile(const fs::path& input, const fs::path& output, const DataKey& key) {
    std::ifstream sealed = openInput(input);
    std::ofstream clear = openOutput(output);
    openChunks(sealed, key, [&](const unsigned char* bytes, std::size_t count) { writeBlock(clear, bytes, count); });
    closeOutput(clear, output);
}

void lf_streamSealFile(const fs::path& input, const fs::path& output, const DataKey& key) {
    requireLibrary();
    std::ifstream clear = openInput(input);
    std::ofstream sealed = openOutput(output);
    std::array<unsigned char, headerBytes> header{};
    StreamState state{};
    crypto_secretstream_xchacha20poly1305_init_push(&state, header.data(), key.data());
    writeBlock(sealed, header.data(), header.size());
    std::array<unsigned char, clearChunkBytes> block{};
    std::array<unsigned char, sealedChunkBytes> chunk{};
    bool isLast = false;
    do {
        const std::size_t count = readBlock(clear, block);
        isLast = isAtEnd(clear);
        unsigned long long sealedCount = 0;
        crypto_secretstream_xchacha20poly1305_push(&state, chunk.data(), &sealedCount, block.data(), count, nullptr, 0,
                                                   isLast ? crypto_secretstream_xchacha20poly1305_TAG_FINAL : 0);
        writeBlock(sealed, chunk.data(), static_cast<std::size_t>(sealedCount));
    } while (!isLast);
    closeOutput(sealed, output);
}

bool gf_isWholeContainer(const fs::path& path, const DataKey& key) {
    try {
        std::ifstream sealed = openInput(path);
        return openChunks(sealed, key, [](const unsigned char*, std::size_t) {});
    } catch (const std::runtime_error&) {
        return false;
    }
}
