// liveries/scan_reports.cpp
#include "liveries/scan_reports.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "core/folders.h"
#include "core/log.h"
#include "liveries/livery_file.h"
#include "platform/files.h"
#include "platform/text_encoding.h"

namespace fs = std::filesystem;

namespace {

enum class Order { sorted, sortedWithoutDuplicates, asAdded };

struct ReportForm {
    const char* file;
    Order order;
    bool isError;
    bool vanishesAtScan;
};

constexpr std::array<ReportForm, scanReportCount> forms{{
    {"output/errors/InvalidAirlineCodes.txt", Order::sorted, true, true},
    {"output/errors/InvalidAircraftCodes.txt", Order::sorted, true, true},
    {"output/errors/Fixes.txt", Order::asAdded, true, true},
    {"output/errors/InvalidAircraftCfgFiles.txt", Order::sorted, true, true},
    {"output/errors/IncompleFltsimSections.txt", Order::sortedWithoutDuplicates, true, true},
    {"output/info/AircraftCfgWithNoFltsimSection.txt", Order::sorted, false, true},
    {"output/info/AirlineModelConversions.txt", Order::sorted, false, false},
}};

constexpr const char* errorsFolder = "output/errors";
constexpr const char* inlineRegcodesFile = "output/errors/InlineRegcodes.txt";

std::string summaryOf(ScanReport report, std::size_t count) {
    const std::string_view plural = count == 1 ? "" : "s";
    switch (report) {
    case ScanReport::invalidAirlineCodes: return fmt::format("{} invalid airline code{}", count, plural);
    case ScanReport::invalidModelCodes: return fmt::format("{} invalid model code{}", count, plural);
    case ScanReport::codeFixes: return fmt::format("{} code fixes", count);
    case ScanReport::invalidFiles: return fmt::format("{} invalid aircraft.cfg files", count);
    case ScanReport::incompleteSections: return fmt::format("{} incomplete [fltsim.x] sections", count);
    case ScanReport::filesWithoutSections: return fmt::format("{} empty aircraft.cfg files", count);
    case ScanReport::corrections: return fmt::format("{} liveries updated with real live data from dbase", count);
    }
    return {};
}

std::vector<std::string> ordered(std::vector<std::string> lines, Order order) {
    if (order != Order::asAdded) {
        std::sort(lines.begin(), lines.end());
    }
    if (order == Order::sortedWithoutDuplicates) {
        lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
    }
    return lines;
}

void writeLines(const fs::path& file, const std::vector<std::string>& lines) {
    createFolders(file.parent_path());
    errno = 0;
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    for (const std::string& line : lines) {
        stream << line << '\n';
    }
    stream.close();
    if (!stream) {
        throw std::system_error(errno == 0 ? EIO : errno, std::generic_category());
    }
}

void logReport(ScanReport report, const std::vector<std::string>& lines) {
    log(summaryOf(report, lines.size()));
    for (const std::string& line : lines) {
        log("  " + line);
    }
}

/// Where the file cannot be written the log has its lines.
void writeReport(ScanReport report, const std::vector<std::string>& lines) {
    const char* const file = forms[static_cast<std::size_t>(report)].file;
    const std::string name = platform::backslashText(file);
    try {
        writeLines(file, lines);
        log(fmt::format("{}, see {}", summaryOf(report, lines.size()), name));
    } catch (const std::exception& error) {
        log(fmt::format("Error writing file {}: {}", name, platform::readableText(error.what())));
        logReport(report, lines);
    }
}

/// Hands each list that is not empty to `put`, in the order of its report, below the headings of the log.
template <typename Put>
void putReports(const ScanReports& reports, Put put) {
    std::array<std::vector<std::string>, scanReportCount> lists;
    bool anyError = false;
    for (std::size_t i = 0; i < scanReportCount; ++i) {
        lists[i] = ordered(reports.lines(static_cast<ScanReport>(i)), forms[i].order);
        anyError = anyError || (forms[i].isError && !lists[i].empty());
    }
    const auto putThose = [&lists, &put](bool errors) {
        for (std::size_t i = 0; i < scanReportCount; ++i) {
            if (forms[i].isError == errors && !lists[i].empty()) {
                put(static_cast<ScanReport>(i), lists[i]);
            }
        }
    };
    log(anyError ? "\nErrors:" : "\nNo errors");
    putThose(true);
    log("\nInformation:");
    putThose(false);
}

} // namespace

void ScanReports::add(ScanReport report, std::string line) {
    List& list = lists_[static_cast<std::size_t>(report)];
    const std::lock_guard lock(list.lock);
    list.lines.push_back(std::move(line));
}

std::vector<std::string> ScanReports::lines(ScanReport report) const {
    const List& list = lists_[static_cast<std::size_t>(report)];
    const std::lock_guard lock(list.lock);
    return list.lines;
}

void removeOldReports() {
    // One that stays is no reason to stop the scan.
    removeFileOrLog(scannedLiveriesFile);
    removeFileOrLog(inlineRegcodesFile);
    for (const ReportForm& form : forms) {
        if (form.vanishesAtScan) {
            removeFileOrLog(form.file);
        }
    }
    // Files of others may lie in the folder, which then stays.
    std::error_code notEmpty;
    fs::remove(errorsFolder, notEmpty);
}

void lf_writeScanReports(const ScanReports& reports) {
    putReports(reports, writeReport);
}

void logScanReports(const ScanReports& reports) {
    putReports(reports, logReport);
}
