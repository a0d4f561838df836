// core/text_files.cpp
#include "core/text_files.h"

#include <array>
#include <fstream>
#include <iterator>
#include <optional>

#include <fmt/format.h>

#include "core/log.h"
#include "platform/files.h"
#include "platform/text_encoding.h"

namespace {

constexpr std::array<std::string_view, 6> charsetNames{
    "ANSI", "Unicode", "Unicode_big_endian", "UTF8_with_BOM", "UTF8_without_BOM", "none_found",
};

constexpr std::string_view littleEndianMark = "\xFF\xFE";
constexpr std::string_view bigEndianMark = "\xFE\xFF";
constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

std::string nameOf(Charset charset) {
    const auto number = static_cast<std::size_t>(charset);
    return number < charsetNames.size() ? std::string(charsetNames[number]) : fmt::format("{}", number);
}

bool isText(Charset charset) {
    return charset >= Charset::ANSI && charset < Charset::none_found;
}

std::string_view withoutMark(std::string_view bytes, std::string_view mark) {
    return bytes.starts_with(mark) ? bytes.substr(mark.size()) : bytes;
}

enum class ByteOrder { littleEndian, bigEndian };

/// A last byte without a partner makes the whole text empty.
std::u16string utf16Units(std::string_view bytes, ByteOrder order) {
    std::u16string units;
    if (bytes.size() % 2 != 0) {
        return units;
    }
    units.reserve(bytes.size() / 2);
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        const unsigned first = static_cast<unsigned char>(bytes[at]);
        const unsigned second = static_cast<unsigned char>(bytes[at + 1]);
        units += static_cast<char16_t>(order == ByteOrder::bigEndian ? first << 8 | second : second << 8 | first);
    }
    return units;
}

std::string utf8From(Charset charset, std::string_view bytes) {
    switch (charset) {
    case Charset::ANSI: return platform::utf8FromCodePage(bytes);
    case Charset::Unicode:
        return platform::repairedUtf8(utf16Units(withoutMark(bytes, littleEndianMark), ByteOrder::littleEndian));
    case Charset::Unicode_big_endian:
        return platform::repairedUtf8(utf16Units(withoutMark(bytes, bigEndianMark), ByteOrder::bigEndian));
    case Charset::UTF8_with_BOM: return platform::repairedUtf8(withoutMark(bytes, utf8Mark));
    case Charset::UTF8_without_BOM: return platform::repairedUtf8(bytes);
    case Charset::none_found: break;
    }
    return {};
}

void splitLines(std::string_view text, std::vector<std::string>& lines) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        while (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        lines.emplace_back(line);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

/// Nothing when the file cannot be opened. Throws when reading fails.
std::optional<std::string> lf_wholeFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string lf_logged(std::string text) {
    logError(text);
    return text;
}

} // namespace

Charset charsetOf(std::string_view bytes) {
    if (bytes.starts_with(littleEndianMark)) {
        return Charset::Unicode;
    }
    if (bytes.starts_with(bigEndianMark)) {
        return Charset::Unicode_big_endian;
    }
    if (bytes.starts_with(utf8Mark)) {
        return Charset::UTF8_with_BOM;
    }
    if (bytes.empty() || bytes.find('\0') != std::string_view::npos) {
        return Charset::none_found;
    }
    return platform::isValidUtf8(bytes) ? Charset::UTF8_without_BOM : Charset::ANSI;
}

Charset charsetOfFile(const std::filesystem::path& path) {
    try {
        const std::optional<std::string> bytes = lf_wholeFile(path);
        return bytes ? charsetOf(*bytes) : Charset::none_found;
    } catch (const std::exception&) {
        return Charset::none_found;
    }
}

std::vector<std::string> linesOf(Charset charset, std::string_view bytes) {
    std::vector<std::string> lines;
    splitLines(utf8From(charset, bytes), lines);
    return lines;
}

std::string readLines(Charset charset, const std::filesystem::path& path, std::vector<std::string>& lines) {
    lines.clear();
    const std::string name = platform::utf8FromPath(path);
    try {
        const std::optional<std::string> bytes = lf_wholeFile(path);
        if (!bytes) {
            return "open_failed";
        }
        if (!isText(charset)) {
            return lf_logged(fmt::format("file {} has unknown charset: {}", name, nameOf(charset)));
        }
        splitLines(utf8From(charset, *bytes), lines);
        return {};
    } catch (const std::exception& error) {
        return lf_logged(fmt::format("Read failed for '{}': {}", name, error.what()));
    }
}
