// core/log.cpp
#include "core/log.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/file_generations.h"
#include "core/program_info.h"
#include "core/program_version.h"
#include "platform/files.h"

std::mutex gLogMutex;

namespace {

constexpr const char* logFile = "Log.txt";
constexpr const char* simulatorNames = "Prepar3D v5/v6";

constexpr std::size_t headingWidth = 80;
/// So that titles of all lengths begin in one column, which the eye finds when it skims the log.
constexpr std::size_t rulePrefix = 10;

/// Where the time of day begins in the text of a moment, counted from its end, and its length.
constexpr std::size_t clockFromEnd = 13;
constexpr std::size_t clockLength = 8;

constexpr std::array<const char*, 7> weekdayNames{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<const char*, 12> monthNames{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// Large enough that the lines between two flushes seldom cost a system call; the library's own is 512 bytes on Windows.
std::array<char, 65536> streamBuffer; // under gLogMutex
std::ofstream stream;                 // under gLogMutex

/// A disk that was full once must not silence the log for good.
bool isReady() {
    if (!stream.is_open()) {
        return false;
    }
    stream.clear();
    return true;
}

template <std::size_t count>
const char* nameOf(const std::array<const char*, count>& names, int index) {
    return index >= 0 && index < static_cast<int>(count) ? names[static_cast<std::size_t>(index)] : "???";
}

std::string rule(char mark, std::string_view title, std::size_t width) {
    std::string line;
    if (!title.empty()) {
        line.append(rulePrefix, mark).append(" ").append(title).append(" ");
    }
    if (line.size() < width) {
        line.append(width - line.size(), mark);
    }
    return line;
}

} // namespace

void gf_openLog() {
    gf_saveUpto3GenerationsOf(logFile);
    {
        const std::lock_guard lock(gLogMutex);
        stream.close();
        stream.clear();
        stream.rdbuf()->pubsetbuf(streamBuffer.data(), streamBuffer.size());
        // Binary, so that a line ends in one line feed on every machine.
        stream.open(logFile, std::ios::out | std::ios::trunc | std::ios::binary);
        if (!stream.is_open()) {
            throw std::runtime_error("Failed to write file " +
                                     platform::utf8FromPath(std::filesystem::absolute(logFile)));
        }
    }
    log(fmt::format("{} (utc) {} version {} for {}", timeLine(platform::wallNow()), programName,
                    versionText(thisVersion), simulatorNames));
}

void gf_closeLog() {
    const std::lock_guard lock(gLogMutex);
    stream.close();
}

void gf_flushLog() {
    const std::lock_guard lock(gLogMutex);
    if (isReady()) {
        stream.flush();
    }
}

void log(std::string_view text) {
    const std::lock_guard lock(gLogMutex);
    if (isReady()) {
        stream << text << '\n';
    }
}

void logError(std::string_view text) {
    const std::lock_guard lock(gLogMutex);
    if (isReady()) {
        stream << "==> " << text << '\n' << std::flush;
    }
}

void logUnlessStopping(std::string_view text) {
    if (!gf_isStopping()) {
        log(text);
    }
}

void logHeading(std::string_view title) {
    log(rule('-', title, headingWidth));
}

std::string bannerLine(std::string_view title, std::size_t width) {
    return rule('*', title, width);
}

std::string timeText(const std::tm& utc) {
    return fmt::format("{:3} {:3} {:02} {:02}:{:02}:{:02} {:4}", nameOf(weekdayNames, utc.tm_wday),
                       nameOf(monthNames, utc.tm_mon), utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec,
                       utc.tm_year + 1900);
}

std::string timeLine(platform::WallTime time) {
    using namespace std::chrono;
    if (time < platform::WallTime{}) {
        return "Invalid time";
    }
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(floor<seconds>(time - day));
    std::tm utc{};
    utc.tm_year = static_cast<int>(date.year()) - 1900;
    utc.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    utc.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    utc.tm_wday = static_cast<int>(weekday(day).c_encoding());
    utc.tm_hour = static_cast<int>(clock.hours().count());
    utc.tm_min = static_cast<int>(clock.minutes().count());
    utc.tm_sec = static_cast<int>(clock.seconds().count());
    return timeText(utc);
}

std::string clockNow() {
    const std::string text = timeLine(platform::wallNow());
    return text.size() < clockFromEnd ? text : text.substr(text.size() - clockFromEnd, clockLength);
}
