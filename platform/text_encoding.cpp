// platform/text_encoding.cpp
#include "platform/text_encoding.h"

#include <optional>
#include <stdexcept>

namespace platform {

namespace {

constexpr char32_t firstSurrogate = 0xD800;
constexpr char32_t firstLowSurrogate = 0xDC00;
constexpr char32_t lastSurrogate = 0xDFFF;
constexpr char32_t lastCodePoint = 0x10FFFF;
constexpr char32_t replacementCharacter = 0xFFFD;

struct SequenceForm {
    unsigned char mask, lead;
    int following;
    char32_t smallest; // anything smaller has a shorter form
};

constexpr SequenceForm sequenceForms[] = {
    {0x80, 0x00, 0, 0},
    {0xE0, 0xC0, 1, 0x80},
    {0xF0, 0xE0, 2, 0x800},
    {0xF8, 0xF0, 3, 0x10000},
};

/// Reads one code point at `at` and moves `at` behind it; nothing, and no move, when no valid sequence begins there.
std::optional<char32_t> nextCodePoint(std::string_view bytes, std::size_t& at) {
    const auto lead = static_cast<unsigned char>(bytes[at]);
    for (const SequenceForm& form : sequenceForms) {
        if ((lead & form.mask) != form.lead) {
            continue;
        }
        if (bytes.size() - at <= static_cast<std::size_t>(form.following)) {
            return std::nullopt;
        }
        char32_t code = lead & static_cast<unsigned char>(~form.mask);
        for (int i = 1; i <= form.following; ++i) {
            const auto byte = static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
            if ((byte & 0xC0) != 0x80) {
                return std::nullopt;
            }
            code = code << 6 | (byte & 0x3F);
        }
        if (code < form.smallest || code > lastCodePoint || (code >= firstSurrogate && code <= lastSurrogate)) {
            return std::nullopt;
        }
        at += static_cast<std::size_t>(form.following) + 1;
        return code;
    }
    return std::nullopt;
}

std::optional<char32_t> nextCodePoint(std::u16string_view units, std::size_t& at) {
    const char32_t unit = units[at];
    if (unit < firstSurrogate || unit > lastSurrogate) {
        ++at;
        return unit;
    }
    const bool paired = unit < firstLowSurrogate && at + 1 < units.size() && units[at + 1] >= firstLowSurrogate &&
                        units[at + 1] <= lastSurrogate;
    if (!paired) {
        return std::nullopt;
    }
    const char32_t low = units[at + 1];
    at += 2;
    return 0x10000 + ((unit - firstSurrogate) << 10) + (low - firstLowSurrogate);
}

void appendUtf8(std::string& text, char32_t code) {
    const auto byte = [](char32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    if (code < 0x80) {
        text += byte(code);
    } else if (code < 0x800) {
        text += {byte(0xC0 | code >> 6), byte(0x80 | (code & 0x3F))};
    } else if (code < 0x10000) {
        text += {byte(0xE0 | code >> 12), byte(0x80 | (code >> 6 & 0x3F)), byte(0x80 | (code & 0x3F))};
    } else {
        text += {byte(0xF0 | code >> 18), byte(0x80 | (code >> 12 & 0x3F)), byte(0x80 | (code >> 6 & 0x3F)),
                 byte(0x80 | (code & 0x3F))};
    }
}

template <typename Text>
std::string repaired(Text text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::optional<char32_t> code = nextCodePoint(text, at);
        at += code ? 0 : 1;
        appendUtf8(result, code.value_or(replacementCharacter));
    }
    return result;
}

} // namespace

std::u16string utf16FromUtf8(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::optional<char32_t> code = nextCodePoint(text, at);
        if (!code) {
            throw std::runtime_error("utf8_to_wide: invalid UTF-8");
        }
        if (*code < 0x10000) {
            result += static_cast<char16_t>(*code);
        } else {
            result += static_cast<char16_t>(firstSurrogate + ((*code - 0x10000) >> 10));
            result += static_cast<char16_t>(firstLowSurrogate + ((*code - 0x10000) & 0x3FF));
        }
    }
    return result;
}

std::string utf8FromUtf16(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::optional<char32_t> code = nextCodePoint(text, at);
        if (!code) {
            throw std::runtime_error("wide_to_utf8: invalid UTF-16");
        }
        appendUtf8(result, *code);
    }
    return result;
}

std::string repairedUtf8(std::string_view bytes) {
    return repaired(bytes);
}

std::string repairedUtf8(std::u16string_view units) {
    return repaired(units);
}

bool isValidUtf8(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        if (!nextCodePoint(bytes, at)) {
            return false;
        }
    }
    return true;
}

std::string readableText(std::string_view bytes) {
    std::string text;
    std::string foreign; // converted in one go: a code page may use several bytes for a character
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t begin = at;
        if (nextCodePoint(bytes, at)) {
            text.append(utf8FromCodePage(foreign)).append(bytes.substr(begin, at - begin));
            foreign.clear();
        } else {
            foreign += bytes[begin];
            at = begin + 1;
        }
    }
    return text + utf8FromCodePage(foreign);
}

} // namespace platform
