// parameters.xml when the machine fails: a process that dies during a save, a disk that is full, a file out of reach.
#include "core/parameter_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <mutex>
#include <random>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "platform/clock.h"
#include "platform/files.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/posix/full_disk.h"
#include "tests/support/posix/other_user.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;

namespace {

void toDefaults() {
    PROGRAM_VERSION.setDefault("");
    resetParameters();
}

/// Saves 1, 2, 3 ... for ever and tells each number that is saved.
[[noreturn]] void saveForEver(int tell) {
    for (int number = 1;; ++number) {
        MAIN_WINDOW_X.value = number;
        saveParameter(MAIN_WINDOW_X);
        if (write(tell, &number, sizeof number) != sizeof number) {
            _exit(1);
        }
    }
}

/// Lets a process save, kills it at some moment after its first save, and answers the last number that it told.
int lastToldBeforeTheKill(std::chrono::microseconds life) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    const pid_t child = fork();
    if (child == 0) {
        saveForEver(ends[1]);
    }
    close(ends[1]);
    int number = 0;
    EXPECT_EQ(read(ends[0], &number, sizeof number), static_cast<ssize_t>(sizeof number));
    platform::sleepFor(life);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    while (read(ends[0], &number, sizeof number) == static_cast<ssize_t>(sizeof number)) {
    }
    close(ends[0]);
    return number;
}

bool isComplete(const fs::path& file) {
    const std::string text = readFile(file);
    return text.starts_with("<?xml") && text.ends_with("</root>\n") &&
           text.find("\"BLOCK_CALLSIGN\"") != std::string::npos;
}

TEST(ParameterFilePowerCut, aProcessKilledDuringASaveLosesNothingThatWasSaved) {
    const TemporaryFolder folder;
    fs::create_directories(gf_parameterFolder());
    toDefaults();
    gf_writeDefaultParameters();
    std::mt19937 random(99);
    std::uniform_int_distribution<int> lifeMicroseconds(0, 20'000); // some saves, also on a slow disk
    fs::path beside = gf_parameterFile();
    beside += ".new";
    int killedDuringASave = 0;
    for (int round = 0; round < 100; ++round) {
        const int told = lastToldBeforeTheKill(std::chrono::microseconds(lifeMicroseconds(random)));
        killedDuringASave += fs::exists(beside) ? 1 : 0;
        ASSERT_TRUE(isComplete(gf_parameterFile())) << "round " << round;
        gf_readWindowPosition();
        ASSERT_GE(MAIN_WINDOW_X.value, told) << "round " << round;
        ASSERT_LE(MAIN_WINDOW_X.value, told + 1) << "round " << round;
    }
    EXPECT_GT(killedDuringASave, 0) << "no kill came in the middle of a save";
    toDefaults();
}

TEST(ParameterFilePowerCut, aFullDiskLeavesTheOldFileWhole) {
    const LogCapture log;
    fs::create_directories(gf_parameterFolder());
    toDefaults();
    gf_writeDefaultParameters();
    const std::string before = readFile(gf_parameterFile());
    ASSERT_GT(before.size(), 2000U);
    {
        const FullDisk disk(2000);
        RANGE.value = 12;
        saveParameter(RANGE);
    }
    EXPECT_EQ(readFile(gf_parameterFile()), before);
    EXPECT_THAT(log.errors(),
                testing::ElementsAre("==> saving: " + platform::utf8FromPath(gf_parameterFile()) + " failed"));
    EXPECT_EQ(std::distance(fs::directory_iterator(gf_parameterFolder()), fs::directory_iterator()), 1);

    saveParameter(RANGE);
    EXPECT_NE(readFile(gf_parameterFile()), before);
    toDefaults();
}

TEST(ParameterFileReach, aFileThatTheUserMayNotReadStopsTheReadingAndStays) {
    const LogCapture log;
    fs::create_directories(gf_parameterFolder());
    toDefaults();
    gf_writeDefaultParameters();
    const std::string before = readFile(gf_parameterFile());
    fs::permissions(gf_parameterFolder(), fs::perms::all); // a new file could be written
    fs::permissions(gf_parameterFile(), fs::perms::none);
    const platform::ManualClock clock(platform::wallNow());
    {
        const OtherUser user;
        if (!user.became()) {
            GTEST_SKIP() << "this process cannot become another user";
        }
        gf_readWindowPosition();
        EXPECT_THROW(gf_readParameters(), std::runtime_error);
        saveParameter(RANGE);
    }
    EXPECT_EQ(readFile(gf_parameterFile()), before);
    EXPECT_EQ(std::distance(fs::directory_iterator(gf_parameterFolder()), fs::directory_iterator()), 1);
    EXPECT_THAT(log.errors(),
                testing::ElementsAre("==> parameters.xml: File was not found",
                                     "==> saving: " + platform::utf8FromPath(gf_parameterFile()) + " failed"));
}

bool someThreadHoldsTheParameters() {
    const std::unique_lock lock(gParameterMutex, std::try_to_lock);
    return !lock.owns_lock();
}

TEST(ParameterFileReachThreads, aSaveWaitsForAFileThatIsHeldForAMoment) {
    const LogCapture log;
    fs::create_directories(gf_parameterFolder());
    toDefaults();
    gf_writeDefaultParameters();
    fs::rename(gf_parameterFile(), "sound.xml");
    fs::create_directory_symlink(fs::current_path(), gf_parameterFile()); // a folder is no readable file
    platform::ManualClock clock(platform::wallNow());
    clock.hold();
    std::atomic<bool> saved{false};
    std::thread saver([&saved] {
        RANGE.value = 12;
        saveParameter(RANGE);
        saved = true;
    });
    EXPECT_TRUE(eventually(someThreadHoldsTheParameters));
    fs::rename("sound.xml", gf_parameterFile());
    EXPECT_TRUE(eventually([&] {
        clock.advance(std::chrono::milliseconds(1));
        return saved.load();
    }));
    clock.release();
    saver.join();
    EXPECT_NE(readFile(gf_parameterFile()).find("name=\"RANGE\" value=\"12\""), std::string::npos);
    EXPECT_TRUE(isComplete(gf_parameterFile()));
    EXPECT_THAT(log.errors(), testing::IsEmpty());
    toDefaults();
}

} // namespace
