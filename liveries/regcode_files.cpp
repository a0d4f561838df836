// liveries/regcode_files.cpp
#include "liveries/regcode_files.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "core/log.h"
#include "core/text_files.h"
#include "core/text_parts.h"
#include "platform/files.h"
#include "platform/text_encoding.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t shortestRegcode = 3; // characters
constexpr std::size_t longestRegcode = 12; // characters
constexpr std::size_t usualLines = 1024;

/// What stands between the separators, trimmed; at least one.
std::vector<std::string_view> fieldsOf(std::string_view text, char separator) {
    std::vector<std::string_view> fields = partsOf(text, separator);
    std::transform(fields.begin(), fields.end(), fields.begin(), trimmed);
    return fields;
}

std::vector<std::string> registrationsOf(std::string_view list) {
    std::vector<std::string> regs;
    for (const std::string_view reg : fieldsOf(list, ',')) {
        if (!reg.empty()) {
            regs.emplace_back(reg);
        }
    }
    return regs;
}

const char* liveriesWord(std::size_t count) {
    return count == 1 ? "livery" : "liveries";
}

// --- AIG-regcodes.xml ---

void logNoRegistrationLeft(std::string_view title) {
    logError(fmt::format("{} ; regs empty?", title));
}

/// What has a value without a registration in it is left out: a title is barred by having no value at all.
void readLiveryElement(const pugi::xml_node& element, std::string_view title, std::vector<RegEntry>& entries) {
    const std::string_view value = element.attribute("reg").as_string();
    std::vector<std::string> regs = registrationsOf(value);
    if (regs.empty() && !value.empty()) {
        logNoRegistrationLeft(title);
        return;
    }
    entries.push_back({std::string(title), std::move(regs), element.attribute("special").as_bool()});
}

/// False when elements were left out as duplicates.
bool readLiveryElements(const pugi::xml_node& section, std::vector<RegEntry>& entries) {
    bool whole = true;
    std::string_view previous;
    for (const pugi::xml_node& element : section.children("livery")) {
        const std::string_view title = element.attribute("title").as_string();
        if (!title.empty() && title == previous) {
            logError(fmt::format("Duplicate title '{}' (same as previous)", title));
            whole = false;
            continue;
        }
        previous = title;
        readLiveryElement(element, title, entries);
    }
    return whole;
}

// --- The user's text files ---

bool isRegcodeLength(std::string_view reg) {
    const std::size_t length = utf8Length(reg);
    return length >= shortestRegcode && length <= longestRegcode;
}

std::string wrongLength(std::string_view reg, std::string_view file) {
    return fmt::format("wrong regcode length '{}' in {}", reg, file);
}

/// Reads the lines of one file.
class LineReader {
public:
    LineReader(std::string file, std::vector<RegEntry>& entries) : file_(std::move(file)), entries_(entries) {}

    void read(const std::string& line) {
        const std::vector<std::string_view> fields = fieldsOf(line, ';');
        switch (fields.size()) {
        case 1:
            if (!fields[0].empty()) {
                entries_.push_back({std::string(fields[0]), {}, false});
            }
            break;
        case 2: readRegistrations(fields[0], registrationsOf(fields[1]), false); break;
        case 3: readRegistrations(fields[0], registrationsOf(fields[1]), fields[2] == "#"); break;
        default: logError(fmt::format("{}: wrong format '{}'", file_, line));
        }
    }

private:
    void readRegistrations(std::string_view title, std::vector<std::string> regs, bool isMarkedSpecial) {
        if (regs.size() == 1) {
            readOnly(title, std::move(regs));
        } else if (!regs.empty()) {
            readSeveral(title, std::move(regs), isMarkedSpecial);
        }
    }

    /// A title with one registration is that aircraft's own.
    void readOnly(std::string_view title, std::vector<std::string> regs) {
        if (isRegcodeLength(regs[0])) {
            entries_.push_back({std::string(title), std::move(regs), true});
        } else {
            logError(wrongLength(regs[0], file_));
        }
    }

    /// Of which one may remain, and then it is as if it had stood there alone.
    void readSeveral(std::string_view title, std::vector<std::string> regs, bool isSpecial) {
        std::erase_if(regs, [this](const std::string& reg) {
            if (isRegcodeLength(reg)) {
                return false;
            }
            log(wrongLength(reg, file_));
            return true;
        });
        if (regs.empty()) {
            logNoRegistrationLeft(title);
            return;
        }
        isSpecial = isSpecial || regs.size() == 1;
        entries_.push_back({std::string(title), std::move(regs), isSpecial});
    }

    std::string file_;
    std::vector<RegEntry>& entries_;
};

bool isTextFile(const fs::directory_entry& entry) {
    // An entry that cannot be looked at, such as a link that loops, is none of ours, and the others go all the same.
    std::error_code ignored;
    if (!entry.is_regular_file(ignored)) {
        return false;
    }
    std::string extension = platform::utf8FromPath(entry.path().extension());
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return extension == ".TXT";
}

std::vector<fs::path> textFilesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (isTextFile(entry)) {
            files.push_back(entry.path());
        }
    }
    // The later entry wins, so it must not be the file system that decides which one that is.
    std::sort(files.begin(), files.end());
    return files;
}

/// The reader of lines leaves this one failure to its callers.
void logWhyNotOpened(const fs::path& path) {
    errno = 0;
    const std::ifstream file(path, std::ios::binary);
    const int reason = errno == 0 ? EIO : errno;
    logError(fmt::format("Read failed for '{}': {}", platform::utf8FromPath(path),
                         platform::readableText(std::generic_category().message(reason))));
}

/// False, with the reason in the log, when it cannot be read. A file without a byte in it is no fault.
bool readTextFile(const fs::path& path, std::vector<std::string>& lines, std::vector<RegEntry>& entries) {
    log(fmt::format("Processing regcodes file '{}'", platform::utf8FromPath(path)));
    if (std::error_code ignored; fs::file_size(path, ignored) == 0) {
        return true;
    }
    if (const std::string failure = readLines(charsetOfFile(path), path, lines); !failure.empty()) {
        if (failure == "open_failed") {
            logWhyNotOpened(path);
        }
        return false;
    }
    LineReader reader(platform::utf8FromPath(path.filename()), entries);
    for (const std::string& line : lines) {
        reader.read(line);
    }
    return true;
}

} // namespace

bool lf_readAigRegcodes(const fs::path& file, std::vector<RegEntry>& entries) {
    const std::string name = platform::utf8FromPath(file.filename());
    pugi::xml_document document;
    if (!document.load_file(file.c_str(), pugi::parse_default, pugi::encoding_auto)) {
        logError(fmt::format("Failed to load {}", name));
        std::error_code ignored;
        fs::remove(file, ignored);
        return false;
    }
    const pugi::xml_node root = document.child("root");
    const bool hasMeta = !root.child("meta").empty();
    if (!hasMeta) {
        logError("No <meta> node found in XML.");
    }
    const pugi::xml_node section = root.child("AIG-regcodes");
    if (!section) {
        logError("No <AIG-regcodes> node found in XML.");
        return false;
    }
    const std::size_t before = entries.size();
    const bool whole = readLiveryElements(section, entries);
    const std::size_t count = entries.size() - before;
    log(fmt::format("{} {} read from {}", count, liveriesWord(count), name));
    return whole && hasMeta;
}

bool lf_readRegcodeFiles(const fs::path& folder, std::vector<RegEntry>& entries) {
    const std::size_t before = entries.size();
    bool whole = true;
    try {
        std::vector<std::string> lines;
        lines.reserve(usualLines);
        for (const fs::path& path : textFilesIn(folder)) {
            whole = readTextFile(path, lines, entries) && whole;
        }
    } catch (const fs::filesystem_error& failure) {
        log(fmt::format("Error reading regcode files in {}, what: {}", platform::utf8FromPath(folder),
                        platform::readableText(failure.what())));
        whole = false;
    }
    const std::size_t count = entries.size() - before;
    log(fmt::format("{} {}", count, liveriesWord(count)));
    return whole;
}
