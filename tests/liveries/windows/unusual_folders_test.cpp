// What only a machine with such names and locks can show.
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include <windows.h>

#include "liveries/folder_walk.h"
#include "liveries/regcode_files.h"
#include "platform/files.h"
#include "tests/liveries/scan_test.h"

namespace fs = std::filesystem;

using testing::Contains;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

/// A file or a folder that nobody else may open while this lives.
class Closed {
public:
    explicit Closed(const fs::path& path)
        : handle_(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS,
                              nullptr)) {}
    ~Closed() {
        if (isClosed()) {
            CloseHandle(handle_);
        }
    }
    Closed(const Closed&) = delete;
    Closed& operator=(const Closed&) = delete;

    bool isClosed() const { return handle_ != INVALID_HANDLE_VALUE; }

private:
    HANDLE handle_;
};

class UnusualFolders : public ScanTest {
protected:
    static fs::path makeLivery(const fs::path& folder, const std::string& title) {
        return makeAircraft(folder, general("A320") + section(0, "title=" + title + "\natc_parking_codes=KLM"));
    }
};

TEST_F(UnusualFolders, aNameThatIsNoTextIsReadAllTheSame) {
    const fs::path folder = fs::path("x") / (std::wstring(L"ac") + wchar_t{0xD800});
    EXPECT_EQ(platform::utf8FromPath(folder.filename()), "ac\xEF\xBF\xBD");
    std::error_code refused;
    fs::create_directories(folder, refused);
    if (refused) {
        GTEST_SKIP() << "this machine has no such names";
    }
    makeLivery(folder, "One");
    EXPECT_THAT(filesToScan("x"), ElementsAre("x\\ac\xEF\xBF\xBD\\aircraft.cfg"));
    EXPECT_TRUE(lf_scanFolders({"x"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("One"));
}

TEST_F(UnusualFolders, aFileThatIsClosedToTheUserCostsItself) {
    const Closed file(makeLivery("x/1", "Closed"));
    ASSERT_TRUE(file.isClosed());
    makeLivery("x/2", "Open");
    EXPECT_TRUE(lf_scanFolders({"x"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("Open"));
    EXPECT_THAT(log_.lines(), Contains("! No text encoding detected for x\\1\\aircraft.cfg"));
}

TEST_F(UnusualFolders, aFolderThatIsClosedToTheUserCostsItself) {
    makeLivery("x/1", "Closed");
    makeLivery("x/2", "Open");
    const Closed folder("x/1");
    ASSERT_TRUE(folder.isClosed());
    WIN32_FIND_DATAW found{};
    if (HANDLE search = FindFirstFileW(L"x\\1\\*", &found); search != INVALID_HANDLE_VALUE) {
        FindClose(search);
        GTEST_SKIP() << "this machine closes no folder to others";
    }
    EXPECT_TRUE(lf_scanFolders({"x"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("Open"));
}

TEST_F(UnusualFolders, aReportThatAnotherProgramHoldsDoesNotStopTheScan) {
    writeFile("output/errors/Fixes.txt", "old");
    const Closed report("output/errors/Fixes.txt");
    ASSERT_TRUE(report.isClosed());
    makeLivery("x/1", "One");
    EXPECT_TRUE(lf_scanFolders({"x"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("One"));
    EXPECT_THAT(log_.errors(), Contains(StartsWith("==> Failed to remove output\\errors\\Fixes.txt (")));
}

TEST_F(UnusualFolders, aStoppedScanWhoseOldResultAnotherProgramHoldsIsStillToBeDone) {
    writeFile(scannedLiveriesFile, "old");
    const Closed result(scannedLiveriesFile);
    ASSERT_TRUE(result.isClosed());
    makeLivery("x/1", "One");
    setFolder(0, "x");
    gf_stopRun(ExitReason::newSettings, 0);
    gf_scanLiveries();
    EXPECT_TRUE(SCAN_LIVERIES.value);
}

TEST_F(UnusualFolders, aFileOfRegistrationsThatIsClosedToTheUserIsNamed) {
    writeFile("own/a.txt", "One\n");
    writeFile("own/b.txt", "Two\n");
    const Closed file("own/a.txt");
    ASSERT_TRUE(file.isClosed());
    std::vector<RegEntry> entries;
    EXPECT_FALSE(lf_readRegcodeFiles("own", entries));
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].title, "Two");
    EXPECT_THAT(log_.errors(), ElementsAre(StartsWith("==> Read failed for 'own\\a.txt': ")));
}

} // namespace
