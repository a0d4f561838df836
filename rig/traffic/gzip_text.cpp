// rig/traffic/gzip_text.cpp
#include "rig/traffic/gzip_text.h"

#include <array>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

#include <fmt/format.h>
#include <zlib.h>

#include "platform/files.h"

namespace rig {

namespace {

constexpr std::string_view gzipBegin = "\x1F\x8B";
constexpr int gzipWindow = 15 + 16; // the library's largest window, and its mark for the gzip form
constexpr int memoryLevel = 8;
constexpr int unknownSystem = 255; // in the header's place for the machine that packed it

Bytef* bytesOf(std::string_view text) {
    // The library takes its input without const, and leaves it alone.
    return reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
}

/// Runs a step of the library over the input until it says that the stream has ended.
template <typename Step>
std::string pump(z_stream& stream, Step step) {
    std::string result;
    std::array<char, 65536> block{};
    int code = Z_OK;
    while (code == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef*>(block.data());
        stream.avail_out = static_cast<uInt>(block.size());
        code = step(&stream);
        result.append(block.data(), block.size() - stream.avail_out);
    }
    if (code != Z_STREAM_END) {
        throw std::runtime_error("the packed bytes are damaged or cut");
    }
    return result;
}

} // namespace

std::string gunzip(std::string_view packed) {
    z_stream stream{};
    if (inflateInit2(&stream, gzipWindow) != Z_OK) {
        throw std::runtime_error("no memory for unpacking");
    }
    const std::unique_ptr<z_stream, int (*)(z_stream*)> owner(&stream, inflateEnd);
    stream.next_in = bytesOf(packed);
    stream.avail_in = static_cast<uInt>(packed.size());
    std::string text;
    // Files that were joined have several parts.
    while (stream.avail_in > 0) {
        text += pump(stream, [](z_stream* s) { return inflate(s, Z_NO_FLUSH); });
        inflateReset(&stream);
    }
    return text;
}

std::string gzip(std::string_view text) {
    z_stream stream{};
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, gzipWindow, memoryLevel, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::runtime_error("no memory for packing");
    }
    const std::unique_ptr<z_stream, int (*)(z_stream*)> owner(&stream, deflateEnd);
    gz_header header{};
    header.os = unknownSystem;
    deflateSetHeader(&stream, &header);
    stream.next_in = bytesOf(text);
    stream.avail_in = static_cast<uInt>(text.size());
    return pump(stream, [](z_stream* s) { return deflate(s, Z_FINISH); });
}

std::string readText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file) {
        throw std::runtime_error(fmt::format("cannot read {}", platform::utf8FromPath(path)));
    }
    if (!bytes.starts_with(gzipBegin)) {
        return bytes;
    }
    try {
        return gunzip(bytes);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(fmt::format("{}: {}", platform::utf8FromPath(path), error.what()));
    }
}

void writeText(const std::filesystem::path& path, std::string_view text) {
    std::ofstream file(path, std::ios::binary);
    const std::string bytes = path.extension() == ".gz" ? gzip(text) : std::string(text);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) {
        throw std::runtime_error(fmt::format("cannot write {}", platform::utf8FromPath(path)));
    }
}

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(line.size() == text.size() ? line.size() : line.size() + 1);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        lines.push_back(line);
    }
    return lines;
}

} // namespace rig
