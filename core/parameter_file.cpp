// core/parameter_file.cpp
#include "core/parameter_file.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "core/file_generations.h"
#include "core/injection_radius.h"
#include "core/log.h"
#include "core/parameter_migration.h"
#include "core/program_info.h"
#include "core/program_version.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/text_encoding.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* parameterFileName = "parameters.xml";
/// Comments that the user wrote into the file stay in it.
constexpr unsigned loadOptions = pugi::parse_default | pugi::parse_comments;

// --- The values of the three kinds as text, and back ---

std::string currentText(const BoolParameter& parameter, const ParameterLock&) {
    return fmt::format("{}", parameter.value.load());
}

std::string currentText(const IntParameter& parameter, const ParameterLock&) {
    return fmt::format("{}", parameter.value.load());
}

std::string currentText(const StringParameter& parameter, const ParameterLock& lock) {
    return parameter.value(lock);
}

std::string defaultText(const BoolParameter& parameter, const ParameterLock&) {
    return fmt::format("{}", parameter.defaultValue);
}

std::string defaultText(const IntParameter& parameter, const ParameterLock&) {
    return fmt::format("{}", parameter.defaultValue);
}

std::string defaultText(const StringParameter& parameter, const ParameterLock& lock) {
    return parameter.defaultValue(lock);
}

void take(BoolParameter& parameter, const pugi::xml_attribute& value, const ParameterLock&) {
    parameter.value = value.as_bool();
}

void take(IntParameter& parameter, const pugi::xml_attribute& value, const ParameterLock&) {
    parameter.value = std::clamp(value.as_int(), parameter.minimum, parameter.maximum);
}

void take(StringParameter& parameter, const pugi::xml_attribute& value, const ParameterLock& lock) {
    parameter.setValue(value.as_string(), lock);
}

/// In the order of the registration lists.
template <typename Visit>
void forEachRegistered(Visit visit) {
    const auto walk = [&visit](const auto& list) {
        for (auto* parameter : list) {
            visit(*parameter);
        }
    };
    walk(plainBooleans());
    walk(checkBoxes());
    walk(plainIntegers());
    walk(comboIntegers());
    walk(plainStrings());
    walk(editStrings());
}

// --- The document ---

/// Whether a load failed though the file may be sound: then nothing may replace it.
bool isOutOfReach(pugi::xml_parse_status status) {
    if (status == pugi::status_file_not_found) {
        std::error_code error;
        return fs::exists(gf_parameterFile(), error) || error;
    }
    return status == pugi::status_io_error || status == pugi::status_out_of_memory;
}

pugi::xml_parse_result loadOnce(pugi::xml_document& document) {
    // A folder can be opened like a file on some machines, and then claims a size beyond all memory.
    if (std::error_code ignored; !fs::is_regular_file(gf_parameterFile(), ignored)) {
        pugi::xml_parse_result none;
        none.status = pugi::status_file_not_found;
        return none;
    }
    return document.load_file(gf_parameterFile().c_str(), loadOptions);
}

/// A virus scanner or a backup may hold the file for a moment; that is waited out.
pugi::xml_parse_result load(pugi::xml_document& document) {
    constexpr int tries = 10;
    constexpr std::chrono::milliseconds pause{50};
    for (int i = 1;; ++i) {
        const pugi::xml_parse_result result = loadOnce(document);
        if (result || i == tries || !isOutOfReach(result.status)) {
            return result;
        }
        platform::sleepFor(pause);
    }
}

/// The element "parameters"; in files of old versions it has no "root" around it.
pugi::xml_node parametersOf(const pugi::xml_document& document) {
    const pugi::xml_node root = document.child("root");
    return root ? root.child("parameters") : document.child("parameters");
}

/// The same, with what is missing of it made.
pugi::xml_node makeParameters(pugi::xml_document& document) {
    pugi::xml_node root = document.child("root");
    if (!root) {
        root = document.append_child("root");
        root.append_move(document.child("parameters"));
    }
    const pugi::xml_node parameters = root.child("parameters");
    return parameters ? parameters : root.append_child("parameters");
}

pugi::xml_node find(const pugi::xml_node& parameters, std::string_view key) {
    return parameters.find_child([key](const pugi::xml_node& node) {
        return std::string_view(node.name()) == "parameter" && node.attribute("name").as_string() == key;
    });
}

void add(pugi::xml_node parameters, const std::string& key, const std::string& value) {
    pugi::xml_node element = parameters.append_child("parameter");
    const bool named = element.append_attribute("name").set_value(key.c_str());
    if (!named || !element.append_attribute("value").set_value(value.c_str())) {
        log(fmt::format("{}adding xml parameter {} with {} failed!", "===> ", key, value));
    }
}

/// Sets the value wherever the key stands, or appends it.
void setValue(pugi::xml_node parameters, const std::string& key, const std::string& value) {
    bool found = false;
    for (pugi::xml_node element : parameters.children("parameter")) {
        if (element.attribute("name").as_string() == key) {
            pugi::xml_attribute attribute = element.attribute("value");
            (attribute ? attribute : element.append_attribute("value")).set_value(value.c_str());
            found = true;
        }
    }
    if (!found) {
        add(parameters, key, value);
    }
}

// --- To the disk ---

void logSaveFailed() {
    logError(fmt::format("saving: {} failed", platform::utf8FromPath(gf_parameterFile())));
}

bool writeDocument(pugi::xml_document& document, const fs::path& file) {
    pugi::xml_node declaration = document.prepend_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    document.save(stream, "  ", pugi::format_default, pugi::encoding_utf8);
    stream.close();
    return stream.good();
}

/// The file is written beside the old one and put in its place when it is whole. False, with an error line, when it is
/// not.
bool save(pugi::xml_document& document) {
    fs::path beside = gf_parameterFile();
    beside += ".new";
    if (writeDocument(document, beside) && !platform::replaceFile(beside, gf_parameterFile())) {
        return true;
    }
    std::error_code ignored;
    fs::remove(beside, ignored);
    logSaveFailed();
    return false;
}

// --- Reading ---

template <typename AnyParameter>
void readParameter(AnyParameter& parameter, pugi::xml_node parameters, const ParameterLock& lock) {
    if (!find(parameters, parameter.key)) {
        add(parameters, parameter.key, defaultText(parameter, lock));
    }
    take(parameter, find(parameters, parameter.key).attribute("value"), lock);
    log(fmt::format("{}={}", parameter.key, currentText(parameter, lock)));
}

/// False when there is no file with parameters.
bool readFile() {
    const ParameterLock lock(gParameterMutex);
    pugi::xml_document document;
    const pugi::xml_parse_result loaded = load(document);
    if (!loaded && isOutOfReach(loaded.status)) {
        // Defaults in its place would be saved over the user's settings.
        throw std::runtime_error(fmt::format("{}: {}", parameterFileName, loaded.description()));
    }
    if (!loaded || !parametersOf(document)) {
        return false;
    }
    log(fmt::format("from '{}'", platform::utf8FromPath(gf_parameterFile())));
    forEachRegistered([&](auto& parameter) { readParameter(parameter, parametersOf(document), lock); });
    save(document);
    logHeading("");
    return true;
}

/// What hangs on the values: the numbers derived from them, and their controls.
void applyParameters() {
    MAX_FIT_FL.value = hoursFromMaxFit(MAX_FIT.value);
    const auto show = [](const auto& list) {
        for (const auto* parameter : list) {
            showParameter(*parameter);
        }
    };
    show(checkBoxes());
    show(comboIntegers());
    show(editStrings());
    showParameter(DESTINATION);
    showParameter(MAX_FIT_FL);
    gf_setInjectionRadius(RANGE.value);
}

void askForScan(CheckBoxParameter& scan) {
    scan.value = true;
    saveParameter(scan);
    showParameter(scan);
}

// --- Saving one value ---

template <typename AnyParameter>
void storeValue(const AnyParameter& parameter) {
    const ParameterLock lock(gParameterMutex);
    pugi::xml_document document;
    const pugi::xml_parse_result loaded = load(document);
    if (!loaded) {
        if (isOutOfReach(loaded.status)) {
            logSaveFailed();
            return;
        }
        if (!gf_save1GenerationOf(gf_parameterFile())) {
            logSaveFailed();
            return;
        }
        document.reset();
    }
    const bool isOldForm = loaded && !document.child("root");
    const pugi::xml_node parameters = makeParameters(document);
    const std::string value = currentText(parameter, lock);
    setValue(parameters, parameter.key, value);
    logUnlessStopping(fmt::format("{}={}", parameter.key, value));
    if (isOldForm) {
        log("\nPlacing a root level around a new parameters.xml to make it 100% xml compliance\n");
        forEachRegistered([&](const auto& other) {
            if (!find(parameters, other.key)) {
                add(parameters, other.key, currentText(other, lock));
            }
        });
    }
    save(document);
}

template <typename AnyParameter>
void saveOrLog(const AnyParameter& parameter) {
    try {
        storeValue(parameter);
    } catch (const std::exception&) {
        logSaveFailed();
    }
}

} // namespace

fs::path gf_parameterFolder() {
    return platform::roamingAppDataFolder() / programName;
}

fs::path gf_parameterFile() {
    return gf_parameterFolder() / parameterFileName;
}

void gf_readWindowPosition() {
    const fs::path file = gf_parameterFile();
    const ParameterLock lock(gParameterMutex);
    if (std::error_code ignored; !fs::exists(file, ignored)) {
        return;
    }
    pugi::xml_document document;
    if (const pugi::xml_parse_result loaded = load(document); !loaded) {
        if (isOutOfReach(loaded.status)) {
            logError(fmt::format("{}: {}", parameterFileName, loaded.description()));
            return;
        }
        logError(fmt::format("{} failed to load ({}). Saved as 0.xml and removed.", parameterFileName,
                             loaded.description()));
        // A copy that failed leaves the only one where it is.
        if (std::error_code error; gf_save1GenerationOf(file) && !fs::remove(file, error)) {
            logError(
                fmt::format("remove({}): {}", platform::utf8FromPath(file), platform::readableText(error.message())));
        }
        return;
    }
    for (IntParameter* parameter : {&MAIN_WINDOW_X, &MAIN_WINDOW_Y}) {
        if (const pugi::xml_node element = find(parametersOf(document), parameter->key)) {
            take(*parameter, element.attribute("value"), lock);
        } else {
            parameter->value = parameter->defaultValue;
        }
    }
}

bool gf_readParameters() {
    logHeading("parameters");
    if (readFile()) {
        applyParameters();
        gf_migrateParameters();
        return false;
    }
    log(fmt::format("{} not found, creating new with default values:", platform::utf8FromPath(gf_parameterFile())));
    gf_writeDefaultParameters();
    askForScan(SCAN_LIVERIES);
    askForScan(SCAN_AIRPORTS);
    return true;
}

void gf_writeDefaultParameters() {
    PROGRAM_VERSION.setDefault(versionText(thisVersion));
    resetParameters();
    applyParameters();
    const ParameterLock lock(gParameterMutex);
    if (!gf_save1GenerationOf(gf_parameterFile())) {
        logSaveFailed();
        return;
    }
    pugi::xml_document document;
    const pugi::xml_node parameters = makeParameters(document);
    forEachRegistered([&](const auto& parameter) {
        if (!find(parameters, parameter.key)) { // AIRP_HEIGHT is registered twice, but a key stands once in the file
            add(parameters, parameter.key, defaultText(parameter, lock));
        }
    });
    save(document);
}

void saveParameter(const BoolParameter& parameter) {
    saveOrLog(parameter);
}

void saveParameter(const IntParameter& parameter) {
    saveOrLog(parameter);
}

void saveParameter(const StringParameter& parameter) {
    saveOrLog(parameter);
}

bool removeParameter(std::string_view key) {
    const ParameterLock lock(gParameterMutex);
    pugi::xml_document document;
    if (!load(document)) {
        return false;
    }
    pugi::xml_node parameters = parametersOf(document);
    return parameters.remove_child(find(parameters, key)) && save(document);
}
