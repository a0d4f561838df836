// liveries/livery_file.cpp
#include "liveries/livery_file.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "core/folders.h"
#include "core/log.h"
#include "core/program_info.h"
#include "core/program_version.h"
#include "core/side_by_side.h"
#include "core/user_error.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/text_encoding.h"
#include "window/window_state.h"

namespace fs = std::filesystem;

namespace {

constexpr int fileMissingError = 51;
constexpr int sectionMissingError = 52;
constexpr int attributeMissingError = 999;

std::string fileText() {
    return platform::backslashText(scannedLiveriesFile);
}

// --- Writing ---

void addInfo(pugi::xml_node meta, const char* name, const std::string& value) {
    pugi::xml_node info = meta.append_child("info");
    info.append_attribute("name") = name;
    info.append_attribute("value") = value.c_str();
}

void addMeta(pugi::xml_node root) {
    const pugi::xml_node meta = root.append_child("meta");
    addInfo(meta, "author", programName);
    addInfo(meta, "version", versionText(thisVersion));
    addInfo(meta, "date", timeLine(platform::wallNow()));
    addInfo(meta, "copyright", copyrightText);
}

void addLivery(pugi::xml_node liveries, const Livery& livery) {
    pugi::xml_node element = liveries.append_child("liv");
    element.append_attribute("airl") = livery.airl.c_str();
    element.append_attribute("type") = livery.type.c_str();
    if (livery.cargo) {
        element.append_attribute("cargo") = true;
    }
    element.append_attribute("title") = livery.title.c_str();
    if (!livery.atcid.empty()) {
        element.append_attribute("atcid") = livery.atcid.c_str();
    }
}

void saveWhole(const pugi::xml_document& document) {
    const fs::path file = scannedLiveriesFile;
    createFolders(file.parent_path());
    fs::path beside = file;
    beside += ".new";
    std::ofstream stream(beside, std::ios::binary | std::ios::trunc);
    document.save(stream);
    stream.close();
    std::error_code error = stream ? std::error_code{} : std::make_error_code(std::errc::io_error);
    if (!error) {
        error = platform::replaceFile(beside, file);
    }
    if (error) {
        std::error_code ignored;
        fs::remove(beside, ignored);
        throw std::runtime_error(
            fmt::format("Error writing file {}: {}", fileText(), platform::readableText(error.message())));
    }
}

// --- Reading ---

/// The attributes of a livery that mean anything, in the order in which they are written.
constexpr std::array<std::string_view, 5> attributeNames{"airl", "type", "cargo", "title", "atcid"};
constexpr std::size_t cargoNumber = 2;

/// Their values; null for one that is not there.
struct LiveryValues {
    std::array<const char*, attributeNames.size()> texts{};
    bool cargo = false;
};

/// The number of a name, searched from `expected` on; none for one that means nothing.
std::optional<std::size_t> numberOf(std::string_view name, std::size_t expected) {
    for (std::size_t tried = 0; tried < attributeNames.size(); ++tried) {
        const std::size_t number = (expected + tried) % attributeNames.size();
        if (name == attributeNames[number]) {
            return number;
        }
    }
    return std::nullopt;
}

/// In one pass, with few calls of the library: a search for each by its name would go through the others again and
/// again. The first of a name counts.
LiveryValues valuesOf(pugi::xml_node element) {
    LiveryValues values;
    std::size_t expected = 0;
    for (auto attribute = element.first_attribute(); attribute; attribute = attribute.next_attribute()) {
        const auto number = numberOf(attribute.name(), expected);
        if (!number) {
            continue;
        }
        expected = *number + 1;
        if (values.texts[*number] == nullptr) {
            values.texts[*number] = attribute.value();
            values.cargo = *number == cargoNumber ? attribute.as_bool() : values.cargo;
        }
    }
    return values;
}

std::string_view required(const char* text, const char* name, pugi::xml_node element) {
    if (text == nullptr) {
        throw kvd::UserErrorException(attributeMissingError,
                                      fmt::format("Missing required attribute '{}' in <{}>", name, element.name()));
    }
    return text;
}

LiveryView viewOf(pugi::xml_node element) {
    const LiveryValues values = valuesOf(element);
    const auto [airl, type, unused, title, atcid] = values.texts;
    return {required(airl, "airl", element), required(type, "type", element), required(title, "title", element),
            atcid == nullptr ? std::string_view() : std::string_view(atcid), values.cargo};
}

bool isLivery(pugi::xml_node node) {
    return std::string_view(node.name()) == "liv";
}

/// Adds the liveries among the nodes that stand before the place in the file.
void addFront(pugi::xml_node section, std::ptrdiff_t end, std::vector<LiveryView>& liveries) {
    for (auto node = section.first_child(); node && node.offset_debug() < end; node = node.next_sibling()) {
        if (isLivery(node)) {
            liveries.push_back(viewOf(node));
        }
    }
}

/// And those at or behind it, from the end of the file on.
void addBack(pugi::xml_node section, std::ptrdiff_t begin, std::vector<LiveryView>& liveries) {
    for (auto node = section.last_child(); node && node.offset_debug() >= begin; node = node.previous_sibling()) {
        if (isLivery(node)) {
            liveries.push_back(viewOf(node));
        }
    }
}

/// From both ends at once: the library's nodes lie far apart, and to look at them takes longer than to make them.
std::vector<LiveryView> liveriesOf(pugi::xml_node section) {
    // What a livery takes in the file, rather less: room that is not used costs nothing, room that is missing a copy.
    constexpr std::ptrdiff_t bytesPerLivery = 64;
    const std::ptrdiff_t end = section.last_child().offset_debug();
    const std::ptrdiff_t middle = end / 2;
    std::vector<LiveryView> liveries;
    std::vector<LiveryView> rest;
    liveries.reserve(static_cast<std::size_t>(end / bytesPerLivery + 1));
    rest.reserve(liveries.capacity() / 2);
    try {
        runSideBySide([&] { addFront(section, middle, liveries); }, "LiveryFile",
                      [&] { addBack(section, middle, rest); });
    } catch (const kvd::UserErrorException&) {
        // Of several faults the first in the file is told.
        addFront(section, std::numeric_limits<std::ptrdiff_t>::max(), liveries);
    }
    liveries.insert(liveries.end(), rest.rbegin(), rest.rend());
    return liveries;
}

void load(pugi::xml_document& document) {
    // A folder can be opened like a file on some machines, and then claims a size beyond all memory.
    std::error_code ignored;
    const bool isFile = fs::is_regular_file(scannedLiveriesFile, ignored);
    const pugi::xml_parse_status status =
        isFile ? document.load_file(scannedLiveriesFile).status : pugi::status_io_error;
    // A text without an element has no section of liveries either, which is told in its place.
    if (status != pugi::status_ok && status != pugi::status_no_document_element) {
        throw kvd::UserErrorException(fileMissingError, fmt::format("File {} not found", fileText()));
    }
}

} // namespace

void lf_writeLiveries() {
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("root");
    addMeta(root);
    const pugi::xml_node liveries = root.append_child("liveries");
    for (const Livery& livery : Liveries) {
        addLivery(liveries, livery);
    }
    saveWhole(document);
    log(fmt::format("{} liveries in {}", Liveries.size(), fileText()));
}

ScannedLiveries lf_readLiveries() {
    const auto document = std::make_shared<pugi::xml_document>();
    load(*document);
    const pugi::xml_node section = document->child("root").child("liveries");
    if (!section) {
        throw kvd::UserErrorException(sectionMissingError,
                                      fmt::format("{} does not contain a <liveries> section", fileText()));
    }
    std::vector<LiveryView> liveries = liveriesOf(section);
    const std::size_t count = liveries.size();
    if (count == 0) {
        showMessage(fmt::format("{} does not contain liveries", fileText()), LogCopy::yes);
    }
    log(fmt::format("{} liveries read from {}", count, fileText()));
    return {std::move(liveries), document};
}
