// liveries/livery_file.cpp
#include "liveries/livery_file.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
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
#include "liveries/livery_halves.h"
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
constexpr std::array<const char*, 5> attributeNames{"airl", "type", "cargo", "title", "atcid"};
constexpr std::size_t cargoNumber = 2;

/// Their values; null for one that is not there.
struct LiveryValues {
    std::array<const char*, attributeNames.size()> texts{};
    bool cargo = false;
};

/// The number of a name, searched from `expected` on; none for one that means nothing.
std::optional<std::size_t> numberOf(const char* name, std::size_t expected) {
    for (std::size_t tried = 0; tried < attributeNames.size(); ++tried) {
        const std::size_t number = (expected + tried) % attributeNames.size();
        if (std::strcmp(name, attributeNames[number]) == 0) {
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
    return std::strcmp(node.name(), "liv") == 0;
}

void takeLiveries(pugi::xml_node section, std::vector<LiveryView>& liveries) {
    for (const pugi::xml_node node : section) {
        if (isLivery(node)) {
            liveries.push_back(viewOf(node));
        }
    }
}

struct ReadHalf {
    LiveryHalf half;
    std::vector<LiveryView> liveries;
    bool isSound = false;
};

/// Of several faults the first in the file is told, so here it only matters whether there is one.
void readLoaded(ReadHalf& read, std::size_t expected) {
    read.liveries.reserve(expected);
    try {
        takeLiveries(liveriesIn(read.half.document), read.liveries);
        read.isSound = true;
    } catch (const kvd::UserErrorException&) {
        read.liveries.clear();
    }
}

/// Nothing when the file is not like ours or something is the matter with it, which the reading of all of it tells. The
/// library loads a text on one thread, and takes as long for it as all else that a start does with the liveries.
std::optional<ScannedLiveries> readInHalves() {
    // What a livery takes in the file, rather less: room that is not used costs nothing, room that is missing a copy.
    constexpr std::size_t bytesPerLivery = 64;
    const fs::path file = scannedLiveriesFile;
    const std::optional<LiveryCut> cut = cutOf(file);
    if (!cut) {
        return std::nullopt;
    }
    const std::size_t expected = cut->place / bytesPerLivery + 1;
    const auto halves = std::make_shared<std::array<ReadHalf, 2>>();
    ReadHalf& first = halves->front();
    ReadHalf& second = halves->back();
    const auto readFirst = [&] {
        if (loadFirstHalf(file, *cut, first.half)) {
            readLoaded(first, 2 * expected); // those of the second half join them
        }
    };
    const auto readSecond = [&] {
        if (loadSecondHalf(file, *cut, second.half)) {
            readLoaded(second, expected);
        }
    };
    runSideBySide(readFirst, "LiveryFile", readSecond);
    if (!first.isSound || !second.isSound) {
        return std::nullopt;
    }
    std::vector<LiveryView> liveries = std::move(first.liveries);
    liveries.insert(liveries.end(), second.liveries.begin(), second.liveries.end());
    second.liveries = {};
    return ScannedLiveries{std::move(liveries), halves};
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

ScannedLiveries readWhole() {
    const auto document = std::make_shared<pugi::xml_document>();
    load(*document);
    const pugi::xml_node section = liveriesIn(*document);
    if (!section) {
        throw kvd::UserErrorException(sectionMissingError,
                                      fmt::format("{} does not contain a <liveries> section", fileText()));
    }
    std::vector<LiveryView> liveries;
    takeLiveries(section, liveries);
    return {std::move(liveries), document};
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
    std::optional<ScannedLiveries> inHalves = readInHalves();
    ScannedLiveries scanned = inHalves ? std::move(*inHalves) : readWhole();
    const std::size_t count = scanned.liveries.size();
    if (count == 0) {
        showMessage(fmt::format("{} does not contain liveries", fileText()), LogCopy::yes);
    }
    log(fmt::format("{} liveries read from {}", count, fileText()));
    return scanned;
}
