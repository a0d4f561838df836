// liveries/registration_codes.cpp
#include "liveries/registration_codes.h"

#include <cerrno>
#include <exception>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "core/folders.h"
#include "core/log.h"
#include "distribution/clear_file.h"
#include "distribution/sealed_file.h"
#include "liveries/livery_tables.h"
#include "platform/files.h"
#include "platform/text_encoding.h"
#include "window/window_state.h"

namespace fs = std::filesystem;

std::vector<std::string> DontUseTitles;
std::vector<std::string> OfflineReport;

namespace {

constexpr const char* sealedName = "AIG-regcodes.enc";
constexpr const char* clearName = "AIG-regcodes.xml";

fs::path inputFolder() {
    return "input";
}

fs::path ownFilesFolder() {
    return inputFolder() / "my_regcodes";
}

/// Also where the folder cannot be looked at: its reading then says why.
bool hasOwnFiles() {
    std::error_code error;
    const bool isEmpty = fs::is_empty(ownFilesFolder(), error);
    if (error) {
        return error != std::errc::no_such_file_or_directory && error != std::errc::not_a_directory;
    }
    return !isEmpty;
}

const char* pluralS(std::size_t count) {
    return count == 1 ? "" : "s";
}

template <typename Step>
void guarded(Step step) {
    try {
        step();
    } catch (const std::exception& failure) {
        logError(fmt::format("exception: {}", platform::readableText(failure.what())));
    }
}

/// Calls the step while the clear AIG-regcodes.xml is there; not at all without a file that opens.
template <typename Step>
void withAigRegcodes(Step step) {
    const ClearFile clear(inputFolder() / clearName);
    if (gf_streamDecrypt(inputFolder() / sealedName, clear.path())) {
        step(clear.path());
    }
}

/// False, with the reason in the log, when they cannot be written.
bool writeLines(const fs::path& file, const std::vector<std::string>& lines) {
    createFolders(file.parent_path());
    errno = 0;
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    for (const std::string& line : lines) {
        stream << line << '\n';
    }
    stream.close();
    if (!stream) {
        const std::string reason = std::generic_category().message(errno == 0 ? EIO : errno);
        logError(
            fmt::format("Error writing file {}: {}", platform::utf8FromPath(file), platform::readableText(reason)));
        return false;
    }
    return true;
}

/// Puts a report into the file and says so with `note`; where that fails the log has the lines in the file's place.
void writeReport(const fs::path& file, const std::vector<std::string>& lines, const std::string& note) {
    bool isWritten = false;
    guarded([&] { isWritten = writeLines(file, lines); });
    if (isWritten) {
        log(note);
        return;
    }
    for (const std::string& line : lines) {
        log(line);
    }
}

// --- Titles that must not be used ---

/// How many there are.
std::size_t takeDontUseTitles(const std::vector<RegEntry>& entries) {
    const std::size_t before = DontUseTitles.size();
    for (const RegEntry& entry : entries) {
        if (entry.regs.empty()) {
            DontUseTitles.push_back(entry.title);
        }
    }
    return DontUseTitles.size() - before;
}

void takeDontUseTitlesOfAig(const fs::path& file) {
    std::vector<RegEntry> entries;
    if (!lf_readAigRegcodes(file, entries)) {
        OfflineReport.push_back(
            fmt::format("There were errors in processing the file '{}', see the Log.txt", clearName));
    }
    const std::size_t count = takeDontUseTitles(entries);
    log(fmt::format("{} don't use title{} read", count, pluralS(count)));
}

void takeDontUseTitlesOfUser() {
    const std::string folder = platform::utf8FromPath(ownFilesFolder());
    std::vector<RegEntry> entries;
    if (!lf_readRegcodeFiles(ownFilesFolder(), entries)) {
        OfflineReport.push_back(
            fmt::format("There were errors in processing the regcode files in folder '{}', see the Log.txt", folder));
    }
    const std::size_t count = takeDontUseTitles(entries);
    log(fmt::format("{} don't use title{} read from files in {}", count, pluralS(count), folder));
}

// --- In-line registrations ---

/// The number is that of the livery among all.
void takeInlineRegcode(const LiveryView& livery, std::size_t number, std::vector<std::string>& clashes) {
    const std::string_view title = findTitle(livery.title, number);
    if (title.empty()) {
        clashes.push_back(fmt::format("==> [{:3} {:4}] {} '{}' not available, system error, should not happen?",
                                      livery.airl, livery.type, livery.atcid, livery.title));
        return;
    }
    const auto [entry, isNew] = RegcodeTable.try_emplace(livery.atcid, title);
    if (!isNew && entry->second != title) {
        clashes.push_back(fmt::format("{} '{}' => already in use by '{}'", livery.atcid, title, entry->second));
    }
}

// --- Offline registrations ---

struct MergeCounts {
    std::size_t added = 0;
    std::size_t replaced = 0;
    std::size_t special = 0;
};

void bindTitle(const std::string& reg, std::string_view title, MergeCounts& counts, std::vector<std::string>& report) {
    const auto [entry, isNew] = RegcodeTable.try_emplace(reg, title);
    if (isNew) {
        ++counts.added;
    } else if (entry->second != title) {
        report.push_back(
            fmt::format("   regcode {} for '{}', instead of the same for '{}'", reg, title, entry->second));
        entry->second = title;
        ++counts.replaced;
    }
}

void reserveTitle(const RegEntry& entry, std::string_view title) {
    SpecialRegcodes.insert(entry.regs.begin(), entry.regs.end());
    if (entry.regs.size() == 1) {
        UniqueRegcodes.insert(entry.regs.front());
    }
    ReservedTitles.push_back(title);
}

std::string textOf(const MergeCounts& counts) {
    std::string text = fmt::format("{} new regcode{} added", counts.added, pluralS(counts.added));
    if (counts.replaced > 0) {
        text += fmt::format(", {} regcode{} replaced", counts.replaced, pluralS(counts.replaced));
    }
    if (counts.special > 0) {
        text += fmt::format(", {} regcode{} defined as special", counts.special, pluralS(counts.special));
    }
    return text;
}

void mergeAig(const fs::path& file) {
    OfflineReport.push_back(fmt::format("Processing file {}", clearName));
    std::vector<RegEntry> entries;
    if (!lf_readAigRegcodes(file, entries)) {
        OfflineReport.push_back(
            fmt::format("There were errors processing the AIG-regcode file '{}', see Log.txt", clearName));
    }
    lf_mergeRegcodes(entries, OfflineReport);
}

void mergeOwnFiles() {
    const std::string folder = platform::utf8FromPath(ownFilesFolder());
    OfflineReport.push_back(fmt::format("Processing files in {}", folder));
    std::vector<RegEntry> entries;
    if (!lf_readRegcodeFiles(ownFilesFolder(), entries)) {
        const std::string text =
            fmt::format("There were errors processing the regcode files in folder '{}', see Log.txt", folder);
        OfflineReport.push_back(text);
        showMessage(text, LogCopy::no);
    }
    lf_mergeRegcodes(entries, OfflineReport);
}

void writeOfflineReport() {
    const fs::path file = fs::path("output") / "info" / "OfflineRegcodes.txt";
    guarded([&file] { removeFile(file); });
    const std::vector<std::string> lines = std::exchange(OfflineReport, {});
    if (!lines.empty()) {
        writeReport(
            file, lines,
            fmt::format("Offline regcode files processed, results can be found in '{}'", platform::utf8FromPath(file)));
    }
}

void logSpecialLiveries() {
    if (!SpecialRegcodes.empty()) {
        log(fmt::format("{} special liveries", SpecialRegcodes.size()));
    }
    if (!UniqueRegcodes.empty()) {
        log(fmt::format("{} unique liveries", UniqueRegcodes.size()));
    }
}

} // namespace

// What it says about the files stands in OfflineReport until gf_processOfflineRegcodes writes it.
void gf_loadDontUseTitles() {
    DontUseTitles.clear();
    OfflineReport.clear();
    guarded([] {
        withAigRegcodes(takeDontUseTitlesOfAig);
        if (hasOwnFiles()) {
            takeDontUseTitlesOfUser();
        }
    });
}

void gf_processInlineRegcodes(std::span<const LiveryView> liveries) {
    std::vector<std::string> clashes;
    RegcodeTable.reserve(liveries.size());
    for (std::size_t number = 0; number < liveries.size(); ++number) {
        if (!liveries[number].atcid.empty()) {
            takeInlineRegcode(liveries[number], number, clashes);
        }
    }
    if (clashes.empty()) {
        return;
    }
    const fs::path file = fs::path("output") / "errors" / "InlineRegcodes.txt";
    writeReport(file, clashes,
                fmt::format("{} in-line regcode clashes, see '{}'", clashes.size(), platform::utf8FromPath(file)));
}

void lf_mergeRegcodes(const std::vector<RegEntry>& entries, std::vector<std::string>& report) {
    MergeCounts counts;
    for (const RegEntry& entry : entries) {
        const std::string_view title = lf_findTitle(entry.title);
        if (title.empty()) {
            continue;
        }
        for (const std::string& reg : entry.regs) {
            bindTitle(reg, title, counts, report);
        }
        if (entry.special) {
            reserveTitle(entry, title);
            ++counts.special;
        }
    }
    report.push_back(textOf(counts));
}

void gf_processOfflineRegcodes() {
    guarded([] {
        withAigRegcodes(mergeAig);
        if (hasOwnFiles()) {
            mergeOwnFiles();
        }
        writeOfflineReport();
        logSpecialLiveries();
    });
}

void resetRegistrationCodes() {
    DontUseTitles.clear();
    OfflineReport.clear();
}
