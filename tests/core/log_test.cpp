#include "core/log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "core/exit_reason.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace {

platform::WallTime moment(int year, unsigned month, unsigned day, int hour, int minute, int second) {
    using namespace std::chrono;
    return sys_days(std::chrono::year(year) / month / day) + hours(hour) + minutes(minute) + seconds(second);
}

std::tm brokenDown(int month, int weekday) {
    std::tm utc{};
    utc.tm_year = 124;
    utc.tm_mon = month;
    utc.tm_mday = 7;
    utc.tm_wday = weekday;
    utc.tm_hour = 1;
    utc.tm_min = 2;
    utc.tm_sec = 3;
    return utc;
}

TEST(LogOpening, theFirstLineTellsTimeProgramVersionAndSimulator) {
    const TemporaryFolder folder;
    const platform::ManualClock clock(moment(2024, 2, 29, 13, 4, 5));
    gf_openLog();
    gf_closeLog();
    EXPECT_EQ(readFile("Log.txt"), "Thu Feb 29 13:04:05 2024 (utc) Tarnwing_P3D version 11.10.8 for Prepar3D v5/v6\n");
}

void startAndStop(int run) {
    gf_openLog();
    log("run " + std::to_string(run));
    gf_closeLog();
}

TEST(LogOpening, fourStartsLeaveThreeOlderLogs) {
    const TemporaryFolder folder;
    for (int run = 1; run <= 4; ++run) {
        startAndStop(run);
    }
    EXPECT_THAT(readFile("Log.txt"), EndsWith("run 4\n"));
    EXPECT_THAT(readFile("Log0.txt"), EndsWith("run 3\n"));
    EXPECT_THAT(readFile("Log00.txt"), EndsWith("run 2\n"));
    EXPECT_THAT(readFile("Log000.txt"), EndsWith("run 1\n"));
}

TEST(LogOpening, theFifthStartDropsTheOldestLog) {
    const TemporaryFolder folder;
    for (int run = 1; run <= 5; ++run) {
        startAndStop(run);
    }
    EXPECT_THAT(readFile("Log.txt"), EndsWith("run 5\n"));
    EXPECT_THAT(readFile("Log000.txt"), EndsWith("run 2\n"));
    EXPECT_EQ(std::distance(fs::directory_iterator("."), fs::directory_iterator()), 4);
}

TEST(LogOpening, aLogThatIsStillOpenIsClosedFirst) {
    const TemporaryFolder folder;
    gf_openLog();
    log("before");
    startAndStop(2);
    EXPECT_THAT(readFile("Log.txt"), Not(HasSubstr("before")));
    EXPECT_THAT(readFile("Log.txt"), EndsWith("run 2\n"));
}

TEST(LogOpening, aLogThatCannotBeWrittenThrowsWithItsPath) {
    const TemporaryFolder folder;
    fs::create_directory("Log.txt");
    try {
        gf_openLog();
        FAIL() << "the log was opened";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), "Failed to write file " + platform::utf8FromPath(fs::absolute("Log.txt")));
    }
}

TEST(LogLines, aLineEndsInOneLineFeed) {
    const TemporaryFolder folder;
    gf_openLog();
    log("one");
    log("two");
    gf_closeLog();
    EXPECT_THAT(readFile("Log.txt"), EndsWith("\none\ntwo\n"));
    EXPECT_EQ(readFile("Log.txt").find('\r'), std::string::npos);
}

TEST(LogLines, anOrdinaryLineWaitsForTheFlush) {
    const TemporaryFolder folder;
    gf_openLog();
    log("ordinary");
    EXPECT_THAT(readFile("Log.txt"), Not(HasSubstr("ordinary")));
    gf_flushLog();
    EXPECT_THAT(readFile("Log.txt"), EndsWith("ordinary\n"));
    gf_closeLog();
}

TEST(LogLines, manyOrdinaryLinesWaitForTheFlush) {
    const TemporaryFolder folder;
    gf_openLog();
    gf_flushLog();
    const std::string before = readFile("Log.txt");
    for (int i = 0; i < 100; ++i) {
        log(std::string(99, 'x')); // more than any library buffers of its own
    }
    EXPECT_EQ(readFile("Log.txt"), before);
    gf_flushLog();
    EXPECT_EQ(readFile("Log.txt").size(), before.size() + 100 * 100);
    gf_closeLog();
}

TEST(LogLines, anErrorLineIsMarkedAndFlushesWhatStoodBefore) {
    const TemporaryFolder folder;
    gf_openLog();
    log("ordinary");
    logError("bad");
    EXPECT_THAT(readFile("Log.txt"), EndsWith("ordinary\n==> bad\n"));
    gf_closeLog();
}

TEST(LogLines, linesAreDroppedWhileTheLogIsNotOpen) {
    const TemporaryFolder folder;
    log("lost");
    logError("lost too");
    gf_flushLog();
    EXPECT_FALSE(fs::exists("Log.txt"));
    gf_openLog();
    gf_closeLog();
    log("late");
    EXPECT_THAT(readFile("Log.txt"), Not(HasSubstr("late")));
    EXPECT_THAT(readFile("Log.txt"), Not(HasSubstr("lost")));
}

TEST(LogLines, aStoppingRunDropsTheLinesOfItsReaders) {
    const LogCapture capture;
    logUnlessStopping("running");
    gf_stopRun(ExitReason::newFlight, 30);
    logUnlessStopping("stopping");
    gf_resetExitReason();
    gf_userCloses();
    logUnlessStopping("closing");
    gf_resetExitReason();
    logUnlessStopping("running again");
    EXPECT_THAT(capture.lines(), ElementsAre("running", "running again"));
}

TEST(LogHeadings, aHeadingIsARuleOfEightyCharactersWithItsTitle) {
    const LogCapture capture;
    logHeading("parameters");
    EXPECT_THAT(capture.lines(), ElementsAre("---------- parameters " + std::string(58, '-')));
    EXPECT_EQ(capture.lines().front().size(), 80U);
}

TEST(LogHeadings, theClosingRuleHasNoTitle) {
    const LogCapture capture;
    logHeading("");
    EXPECT_THAT(capture.lines(), ElementsAre(std::string(80, '-')));
}

TEST(LogHeadings, aTitleThatIsTooWideStandsInFull) {
    const LogCapture capture;
    const std::string title(100, 't');
    logHeading(title);
    EXPECT_THAT(capture.lines(), ElementsAre("---------- " + title + " "));
}

TEST(LogHeadings, aBannerIsOfAsterisks) {
    EXPECT_EQ(bannerLine("summary", 30), "********** summary " + std::string(11, '*'));
    EXPECT_EQ(bannerLine("", 100), std::string(100, '*'));
}

TEST(TimeTexts, everyMonthAndWeekdayHasItsName) {
    const std::array<std::string, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::array<std::string, 7> weekdays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    for (int month = 0; month < 12; ++month) {
        for (int weekday = 0; weekday < 7; ++weekday) {
            EXPECT_EQ(timeText(brokenDown(month, weekday)), weekdays[static_cast<std::size_t>(weekday)] + " " +
                                                                months[static_cast<std::size_t>(month)] +
                                                                " 07 01:02:03 2024");
        }
    }
}

TEST(TimeTexts, aMonthOrWeekdayOutOfRangeIsThreeQuestionMarks) {
    EXPECT_EQ(timeText(brokenDown(12, 0)), "Sun ??? 07 01:02:03 2024");
    EXPECT_EQ(timeText(brokenDown(-1, 0)), "Sun ??? 07 01:02:03 2024");
    EXPECT_EQ(timeText(brokenDown(0, 7)), "??? Jan 07 01:02:03 2024");
    EXPECT_EQ(timeText(brokenDown(0, -1)), "??? Jan 07 01:02:03 2024");
}

TEST(TimeTexts, aMomentIsToldInUtc) {
    EXPECT_EQ(timeLine(moment(1970, 1, 1, 0, 0, 0)), "Thu Jan 01 00:00:00 1970");
    EXPECT_EQ(timeLine(moment(2026, 12, 31, 23, 59, 59)), "Thu Dec 31 23:59:59 2026");
}

TEST(TimeTexts, aPartOfASecondIsCutOff) {
    EXPECT_EQ(timeLine(moment(2026, 1, 2, 3, 4, 5) + std::chrono::milliseconds(999)), "Fri Jan 02 03:04:05 2026");
}

TEST(TimeTexts, aMomentBefore1970IsInvalid) {
    EXPECT_EQ(timeLine(moment(1969, 12, 31, 23, 59, 59)), "Invalid time");
}

TEST(TimeTexts, randomMomentsReadAsTheCLibraryBreaksThemDown) {
    std::mt19937_64 random(20260101);
    std::uniform_int_distribution<std::int64_t> seconds(0, 7'000'000'000); // up to the year 2191
    for (int i = 0; i < 2000; ++i) {
        const std::time_t time = seconds(random);
        EXPECT_EQ(timeLine(std::chrono::system_clock::from_time_t(time)), timeText(*std::gmtime(&time))) << time;
    }
}

TEST(TimeTexts, theClockIsHoursMinutesAndSeconds) {
    const platform::ManualClock clock(moment(2026, 7, 4, 9, 8, 7));
    EXPECT_EQ(clockNow(), "09:08:07");
}

TEST(TimeTexts, theClockOfAnInvalidTimeSaysSo) {
    const platform::ManualClock clock(moment(1960, 1, 1, 0, 0, 0));
    EXPECT_EQ(clockNow(), "Invalid time");
}

TEST(LogThreads, linesFromSeveralThreadsDoNotMix) {
    const LogCapture capture;
    constexpr int linesEach = 500;
    std::vector<std::thread> threads;
    for (const char mark : {'a', 'b', 'c', 'd'}) {
        threads.emplace_back([mark] {
            for (int i = 0; i < linesEach; ++i) {
                i % 50 == 0 ? logError(std::string(120, mark)) : log(std::string(120, mark));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::vector<std::string> lines = capture.lines();
    EXPECT_EQ(lines.size(), 4U * linesEach);
    for (const std::string& line : lines) {
        const std::string text = line.starts_with("==> ") ? line.substr(4) : line;
        EXPECT_EQ(text, std::string(120, text.front()));
    }
}

} // namespace
