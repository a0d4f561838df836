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

void load(pugi::xml_document& document) {
    // A folder can be opened like a file on some machines, and then claims a size beyond all memory.
    std::error_code ignored;
    if (!fs::is_regular_file(scannedLiveriesFile, ignored) || !document.load_file(scannedLiveriesFile)) {
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
    std::vector<LiveryView> liveries;
    for (const pugi::xml_node element : section.children("liv")) {
        liveries.push_back(viewOf(element));
    }
    const std::size_t count = liveries.size();
    if (count == 0) {
        showMessage(fmt::format("{} does not contain liveries", fileText()), LogCopy::yes);
    }
    log(fmt::format("{} liveries read from {}", count, fileText()));
    return {std::move(liveries), document};
}
