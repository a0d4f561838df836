// tests/liveries/folder_walk_test.cpp
#include "liveries/folder_walk.h"

#include <string>

#include <gmock/gmock.h>

#include "tests/liveries/scan_test.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

class FolderWalk : public testing::Test {
protected:
    TemporaryFolder folder_;
};

} // namespace

TEST_F(FolderWalk, findsAircraftAndSimFilesInAnyCase) {
    for (const char* name : {"1/aircraft.cfg", "2/Aircraft.CFG", "3/SIM.cfg", "3/deep/er/sim.cfg", "4/aircraft.cfg.bak",
                             "4/panel.cfg", "4/myaircraft.cfg", "4/aircraft"}) {
        writeFile(fs::path("x") / name, "");
    }
    EXPECT_THAT(filesToScan("x"),
                ElementsAre("x\\1\\aircraft.cfg", "x\\2\\Aircraft.CFG", "x\\3\\SIM.cfg", "x\\3\\deep\\er\\sim.cfg"));
}

TEST_F(FolderWalk, aFolderWithAirportInItsPathIsNotEntered) {
    writeFile("x/my airports/ac/aircraft.cfg", "");
    writeFile("x/MyAirports/ac/aircraft.cfg", "");
    EXPECT_THAT(filesToScan("x"), ElementsAre("x\\MyAirports\\ac\\aircraft.cfg"));
}

TEST_F(FolderWalk, ofAFirstFolderWithAirportInItsPathOnlyItsOwnFilesAreFound) {
    writeFile("x/my airports/aircraft.cfg", "");
    writeFile("x/my airports/ac/aircraft.cfg", "");
    EXPECT_THAT(filesToScan("x/my airports"), ElementsAre("x\\my airports\\aircraft.cfg"));
}

TEST_F(FolderWalk, aPathOfTwoHundredAndFiftyCharactersIsNotEntered) {
    const std::string longest(247, 'a'); // with "x\" 249
    EXPECT_TRUE(isFolderToScan("x\\" + longest));
    EXPECT_FALSE(isFolderToScan("x\\a" + longest));
    EXPECT_TRUE(isFolderToScan("x\\\xC3\xA4" + longest.substr(1))) << "one character of two bytes";
}

TEST_F(FolderWalk, aFolderOfThatNameIsNoFile) {
    fs::create_directories("x/aircraft.cfg");
    EXPECT_THAT(filesToScan("x"), IsEmpty());
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
    const FolderContents contents = contentsOf(rootToScan("x"));
    ASSERT_EQ(contents.cfgFiles.size(), 1U);
    const ScannedFile& file = contents.cfgFiles.front();
    EXPECT_THAT(file.names->folders, ElementsAre("model.M"));
    EXPECT_THAT(file.names->files, UnorderedElementsAre("aircraft.cfg", "S.air"));
}

TEST_F(FolderWalk, aFolderThatIsGoneMeanwhileHoldsNothing) {
    writeFile("x/1/aircraft.cfg", "");
    const FolderContents contents = contentsOf(rootToScan("x"));
    ASSERT_EQ(contents.folders.size(), 1U);
    fs::remove_all("x/1");
    EXPECT_THAT(contentsOf(contents.folders.front()).cfgFiles, IsEmpty());
}

TEST_F(FolderWalk, aSeparatorAtTheEndOfTheFirstFolderChangesNothing) {
    writeFile("x/1/aircraft.cfg", "");
    EXPECT_THAT(filesToScan("x/"), ElementsAre("x\\1\\aircraft.cfg"));
    EXPECT_EQ(rootToScan("x/").rootLength, 1U);
}

TEST_F(FolderWalk, aNameThatComesAgainInsideIsNoLoop) {
    writeFile("x/a/a/x/a/aircraft.cfg", "");
    EXPECT_THAT(filesToScan("x"), ElementsAre("x\\a\\a\\x\\a\\aircraft.cfg"));
}

TEST_F(FolderWalk, aFolderThatCannotBeOpenedItselfIsAnError) {
    EXPECT_THROW(filesToScan("gone"), fs::filesystem_error);
}
