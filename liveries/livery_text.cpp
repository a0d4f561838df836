// liveries/livery_text.cpp
#include "liveries/livery_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <utility>

#include <fmt/format.h>

namespace {

constexpr std::string_view beginning = "<?xml version=\"1.0\"?>\n<root>\n\t<meta>\n";
constexpr std::string_view infoName = "\t\t<info name=\"";
constexpr std::string_view infoValue = "\" value=\"";
constexpr std::string_view behindMeta = "\t</meta>\n\t<liveries";
constexpr std::string_view listBegin = ">\n";
constexpr std::string_view noList = " />\n</root>\n";
constexpr std::string_view listEnd = "\t</liveries>\n</root>\n";
constexpr std::string_view airlKey = "\t\t<liv airl=\"";
constexpr std::string_view typeKey = "\" type=\"";
constexpr std::string_view cargoKey = "\" cargo=\"true";
constexpr std::string_view titleKey = "\" title=\"";
constexpr std::string_view atcidKey = "\" atcid=\"";
constexpr std::string_view elementEnd = "\" />\n";

/// Of a livery, rather too few: room that is too much is not touched, but too little room is copied.
constexpr std::size_t usualBytes = 64;

struct Entity {
    char character;
    std::string_view text;
};
constexpr std::array<Entity, 3> entities{{{'&', "&amp;"}, {'<', "&lt;"}, {'"', "&quot;"}}};

constexpr bool isControl(char c) {
    return static_cast<unsigned char>(c) < ' ';
}

// --- Writing ---

constexpr bool isPlain(char c) {
    return !isControl(c) && c != '&' && c != '<' && c != '"';
}

void appendCharacter(std::string& text, char c) {
    const auto entity =
        std::find_if(entities.begin(), entities.end(), [c](const Entity& e) { return e.character == c; });
    if (entity != entities.end()) {
        text += entity->text;
    } else {
        fmt::format_to(std::back_inserter(text), "&#{:02};", static_cast<int>(c));
    }
}

void appendValue(std::string& text, std::string_view value) {
    value = value.substr(0, value.find('\0')); // the library's texts end there
    while (!value.empty()) {
        const auto special = std::find_if_not(value.begin(), value.end(), isPlain);
        text.append(value.begin(), special);
        value.remove_prefix(static_cast<std::size_t>(special - value.begin()));
        if (!value.empty()) {
            appendCharacter(text, value.front());
            value.remove_prefix(1);
        }
    }
}

void appendLivery(std::string& text, const Livery& livery) {
    appendValue(text.append(airlKey), livery.airl);
    appendValue(text.append(typeKey), livery.type);
    text.append(livery.cargo ? cargoKey : "");
    appendValue(text.append(titleKey), livery.title);
    if (!livery.atcid.empty()) {
        appendValue(text.append(atcidKey), livery.atcid);
    }
    text.append(elementEnd);
}

// --- Reading ---

/// Puts the characters back that are written as entities. False for any other entity.
bool putBackCharacters(char* begin, std::string_view& value) {
    char* end = begin;
    for (std::string_view rest = value; !rest.empty();) {
        if (rest.front() != '&') {
            *end++ = rest.front();
            rest.remove_prefix(1);
            continue;
        }
        const auto entity = std::find_if(entities.begin(), entities.end(),
                                         [rest](const Entity& one) { return rest.starts_with(one.text); });
        if (entity == entities.end()) {
            return false;
        }
        *end++ = entity->character;
        rest.remove_prefix(entity->text.size());
    }
    value = std::string_view(begin, end);
    return true;
}

/// Goes through a text; what says false has not gone on.
class Reader {
public:
    explicit Reader(std::string& text) : at_(text.data()), end_(at_ + text.size()) {}

    bool isAtEnd() const { return at_ == end_; }

    bool skip(std::string_view expected) {
        if (!std::string_view(at_, end_).starts_with(expected)) {
            return false;
        }
        at_ += expected.size();
        return true;
    }

    /// What stands before the next quotation mark. The library knows what to make of control characters in it.
    bool take(std::string_view& value) {
        const std::string_view rest(at_, end_);
        const std::size_t size = rest.find('"');
        if (size == std::string_view::npos) {
            return false;
        }
        value = rest.substr(0, size);
        if (std::any_of(value.begin(), value.end(), isControl) ||
            (value.find('&') != std::string_view::npos && !putBackCharacters(at_, value))) {
            return false;
        }
        at_ += size;
        return true;
    }

private:
    char* at_;
    char* end_;
};

bool skipMeta(Reader& reader) {
    if (!reader.skip(beginning)) {
        return false;
    }
    std::string_view unused;
    while (reader.skip(infoName)) {
        if (!reader.take(unused) || !reader.skip(infoValue) || !reader.take(unused) || !reader.skip(elementEnd)) {
            return false;
        }
    }
    return reader.skip(behindMeta) && reader.skip(listBegin);
}

/// The rest of a livery whose first key has been read.
bool takeLivery(Reader& reader, LiveryView& livery) {
    if (!reader.take(livery.airl) || !reader.skip(typeKey) || !reader.take(livery.type)) {
        return false;
    }
    livery.cargo = reader.skip(cargoKey);
    if (!reader.skip(titleKey) || !reader.take(livery.title)) {
        return false;
    }
    return (!reader.skip(atcidKey) || reader.take(livery.atcid)) && reader.skip(elementEnd);
}

} // namespace

std::string liveriesText(std::initializer_list<MetaInfo> meta, const std::list<Livery>& liveries) {
    std::string text;
    text.reserve(liveries.size() * 2 * usualBytes);
    text.append(beginning);
    for (const MetaInfo& info : meta) {
        appendValue(text.append(infoName), info.name);
        appendValue(text.append(infoValue), info.value);
        text.append(elementEnd);
    }
    text.append(behindMeta);
    if (liveries.empty()) {
        return text.append(noList);
    }
    text.append(listBegin);
    for (const Livery& livery : liveries) {
        appendLivery(text, livery);
    }
    return text.append(listEnd);
}

std::optional<std::vector<LiveryView>> liveriesInText(std::string& text) {
    Reader reader(text);
    if (!skipMeta(reader)) {
        return std::nullopt;
    }
    std::vector<LiveryView> liveries;
    liveries.reserve(text.size() / usualBytes);
    while (reader.skip(airlKey)) {
        if (!takeLivery(reader, liveries.emplace_back())) {
            return std::nullopt;
        }
    }
    const bool isWhole = !liveries.empty() && reader.skip(listEnd) && reader.isAtEnd();
    return isWhole ? std::optional(std::move(liveries)) : std::nullopt;
}
