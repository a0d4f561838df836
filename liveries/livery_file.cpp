// liveries/livery_file.cpp
#include "liveries/livery_file.h"

#include <filesystem>
#include <fstream>
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
#include "core/user_error.h"
#include "liveries/livery_text.h"
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

void saveWhole(const std::string& text) {
    const fs::path file = scannedLiveriesFile;
    createFolders(file.parent_path());
    fs::path beside = file;
    beside += ".new";
    std::ofstream stream(beside, std::ios::binary | std::ios::trunc);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
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

/// The attributes of a livery that mean anything.
struct LiveryAttributes {
    pugi::xml_attribute airl;
    pugi::xml_attribute type;
    pugi::xml_attribute cargo;
    pugi::xml_attribute title;
    pugi::xml_attribute atcid;
};

/// Where an attribute of this name goes; null for one that means nothing.
pugi::xml_attribute* placeOf(std::string_view name, LiveryAttributes& attributes) {
    if (name == "airl") {
        return &attributes.airl;
    }
    if (name == "type") {
        return &attributes.type;
    }
    if (name == "title") {
        return &attributes.title;
    }
    if (name == "atcid") {
        return &attributes.atcid;
    }
    return name == "cargo" ? &attributes.cargo : nullptr;
}

/// In one pass: a search for each by its name would go through the others again and again. The first of a name counts.
LiveryAttributes attributesOf(pugi::xml_node element) {
    LiveryAttributes attributes;
    for (auto attribute = element.first_attribute(); attribute; attribute = attribute.next_attribute()) {
        if (pugi::xml_attribute* const place = placeOf(attribute.name(), attributes); place != nullptr && !*place) {
            *place = attribute;
        }
    }
    return attributes;
}

std::string_view required(pugi::xml_attribute attribute, const char* name, pugi::xml_node element) {
    if (!attribute) {
        throw kvd::UserErrorException(attributeMissingError,
                                      fmt::format("Missing required attribute '{}' in <{}>", name, element.name()));
    }
    return attribute.value();
}

LiveryView viewOf(pugi::xml_node element) {
    const LiveryAttributes attributes = attributesOf(element);
    return {required(attributes.airl, "airl", element), required(attributes.type, "type", element),
            required(attributes.title, "title", element), attributes.atcid.value(), attributes.cargo.as_bool()};
}

/// Empty when the file cannot be read.
std::string wholeText() {
    std::ifstream stream(scannedLiveriesFile, std::ios::binary | std::ios::ate);
    const std::streamoff size = stream ? static_cast<std::streamoff>(stream.tellg()) : 0;
    std::string text(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
    stream.seekg(0);
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

/// Any text that is XML.
ScannedLiveries readByLibrary() {
    const auto document = std::make_shared<pugi::xml_document>();
    if (!document->load_file(scannedLiveriesFile)) {
        throw kvd::UserErrorException(fileMissingError, fmt::format("File {} not found", fileText()));
    }
    const pugi::xml_node section = document->child("root").child("liveries");
    if (!section) {
        throw kvd::UserErrorException(sectionMissingError,
                                      fmt::format("{} does not contain a <liveries> section", fileText()));
    }
    std::vector<LiveryView> liveries;
    for (const pugi::xml_node element : section.children("liv")) {
        liveries.push_back(viewOf(element));
    }
    return {std::move(liveries), document};
}

ScannedLiveries readAny() {
    // A folder can be opened like a file on some machines, and then claims a size beyond all memory.
    if (std::error_code ignored; !fs::is_regular_file(scannedLiveriesFile, ignored)) {
        throw kvd::UserErrorException(fileMissingError, fmt::format("File {} not found", fileText()));
    }
    const auto text = std::make_shared<std::string>(wholeText());
    if (auto liveries = liveriesInText(*text)) {
        return {std::move(*liveries), text};
    }
    return readByLibrary();
}

} // namespace

void lf_writeLiveries() {
    saveWhole(liveriesText({{"author", programName},
                            {"version", versionText(thisVersion)},
                            {"date", timeLine(platform::wallNow())},
                            {"copyright", copyrightText}},
                           Liveries));
    log(fmt::format("{} liveries in {}", Liveries.size(), fileText()));
}

ScannedLiveries lf_readLiveries() {
    ScannedLiveries scanned = readAny();
    const std::size_t count = scanned.liveries.size();
    if (count == 0) {
        showMessage(fmt::format("{} does not contain liveries", fileText()), LogCopy::yes);
    }
    log(fmt::format("{} liveries read from {}", count, fileText()));
    return scanned;
}
