// tests/liveries/folder_walk_test.cpp
#include "liveries/folder_walk.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

class FolderWalk : public testing::Test {
protected:
    static std::vector<std::string> filesIn(const fs::path& folder) {
        std::vector<std::string> files;
        walkFolder(
            folder, [](std::string_view) { return true; },
            [&files](const ScannedFile& file) {
                files.push_back(file.text);
                return true;
            });
        std::sort(files.begin(), files.end());
        return files;
    }

    TemporaryFolder folder_;
};

} // namespace

TEST_F(FolderWalk, findsAircraftAndSimFilesInAnyCase) {
    for (const char* name : {"1/aircraft.cfg", "2/Aircraft.CFG", "3/SIM.cfg", "3/deep/er/sim.cfg", "4/aircraft.cfg.bak",
                             "4/panel.cfg", "4/myaircraft.cfg", "4/aircraft"}) {
        writeFile(fs::path("x") / name, "");
    }
    EXPECT_THAT(filesIn("x"),
                ElementsAre("x\\1\\aircraft.cfg", "x\\2\\Aircraft.CFG", "x\\3\\SIM.cfg", "x\\3\\deep\\er\\sim.cfg"));
}

TEST_F(FolderWalk, aFolderWithAirportInItsPathIsNotEntered) {
    writeFile("x/my airports/ac/aircraft.cfg", "");
    writeFile("x/MyAirports/ac/aircraft.cfg", "");
    EXPECT_THAT(filesIn("x"), ElementsAre("x\\MyAirports\\ac\\aircraft.cfg"));
}

TEST_F(FolderWalk, aPathOfTwoHundredAndFiftyCharactersIsNotEntered) {
    const std::string longest(247, 'a'); // with "x\" 249
    EXPECT_TRUE(isFolderToScan("x\\" + longest));
    EXPECT_FALSE(isFolderToScan("x\\a" + longest));
    EXPECT_TRUE(isFolderToScan("x\\\xC3\xA4" + longest.substr(1))) << "one character of two bytes";
}

TEST_F(FolderWalk, aFolderOfThatNameIsNoFile) {
    fs::create_directories("x/aircraft.cfg");
    EXPECT_THAT(filesIn("x"), IsEmpty());
}

TEST_F(FolderWalk, ivaoPathsAreKnownByTheirText) {
    EXPECT_TRUE(isIvaoPath("C:\\ivao_x-csl\\B738\\aircraft.cfg"));
    EXPECT_TRUE(isIvaoPath("C:\\IVAO_MTL\\IVAO_B738\\aircraft.cfg"));
    EXPECT_FALSE(isIvaoPath("C:\\ivao_mtl\\IVAO_B738\\aircraft.cfg"));
    EXPECT_FALSE(isIvaoPath("C:\\IVAO_X-CSL\\B738\\aircraft.cfg"));
}

TEST_F(FolderWalk, tellsWhatLiesBesideAFile) {
    writeFile("x/aircraft.cfg", "");
    writeFile("x/S.air", "");
    fs::create_directories("x/model.M");
    walkFolder(
        "x", [](std::string_view) { return true; },
        [](const ScannedFile& file) {
            EXPECT_THAT(file.names->folders, ElementsAre("model.M"));
            EXPECT_THAT(file.names->files, UnorderedElementsAre("aircraft.cfg", "S.air"));
            return true;
        });
}

TEST_F(FolderWalk, endsWhenAVisitSaysSo) {
    writeFile("x/1/aircraft.cfg", "");
    writeFile("x/2/aircraft.cfg", "");
    int files = 0;
    EXPECT_FALSE(walkFolder(
        "x", [](std::string_view) { return true; }, [&files](const ScannedFile&) { return ++files < 1; }));
    EXPECT_EQ(files, 1);
    EXPECT_FALSE(walkFolder(
        "x", [](std::string_view path) { return path == "x"; }, [](const ScannedFile&) { return true; }));
}

TEST_F(FolderWalk, aFolderInsideThatCannotBeOpenedIsSkipped) {
    writeFile("x/aircraft.cfg", "");
    writeFile("x/1/aircraft.cfg", "");
    writeFile("x/2/aircraft.cfg", "");
    std::vector<std::string> files;
    EXPECT_TRUE(walkFolder(
        "x", [](std::string_view) { return true; },
        [&files](const ScannedFile& file) {
            files.push_back(file.text);
            fs::remove_all("x/1");
            return true;
        }));
    EXPECT_THAT(files, ElementsAre("x\\aircraft.cfg", "x\\2\\aircraft.cfg"));
}

TEST_F(FolderWalk, aFolderThatCannotBeOpenedItselfIsAnError) {
    EXPECT_THROW(filesIn("gone"), fs::filesystem_error);
}
