// liveries/livery_file.cpp
#include "liveries/livery_file.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "core/folders.h"
#include "core/log.h"
#include "core/program_info.h"
#include "core/program_version.h"
#include "core/user_error.h"
#include "liveries/livery.h"
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

/// The attributes come in the order in which they are written, so each is looked for from the last one on.
const char* required(pugi::xml_node element, const char* name, pugi::xml_attribute& last) {
    const pugi::xml_attribute attribute = element.attribute(name, last);
    if (!attribute) {
        throw kvd::UserErrorException(attributeMissingError,
                                      fmt::format("Missing required attribute '{}' in <{}>", name, element.name()));
    }
    return attribute.value();
}

void readLivery(pugi::xml_node element, Livery& livery) {
    pugi::xml_attribute last;
    livery.airl = required(element, "airl", last);
    livery.type = required(element, "type", last);
    livery.cargo = element.attribute("cargo", last).as_bool();
    livery.title = required(element, "title", last);
    livery.atcid = element.attribute("atcid", last).as_string();
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

void lf_readLiveries() {
    pugi::xml_document document;
    load(document);
    const pugi::xml_node liveries = document.child("root").child("liveries");
    if (!liveries) {
        throw kvd::UserErrorException(sectionMissingError,
                                      fmt::format("{} does not contain a <liveries> section", fileText()));
    }
    std::list<Livery> read;
    for (const pugi::xml_node element : liveries.children("liv")) {
        readLivery(element, read.emplace_back());
    }
    if (read.empty()) {
        showMessage(fmt::format("{} does not contain liveries", fileText()), LogCopy::yes);
    }
    log(fmt::format("{} liveries read from {}", read.size(), fileText()));
    Liveries.splice(Liveries.end(), read);
}
