// tests/platform/files_test.cpp
#include "platform/files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "platform/text_encoding.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;

TEST(PathText, utf8TextComesBackFromItsPath) {
    for (const char* text : {"plain.txt", "caf\u00E9", "\u20AC \U0001F6EB", ""}) {
        EXPECT_EQ(platform::utf8FromPath(platform::pathFromUtf8(text)), text);
    }
}

TEST(PathText, aPathFromUtf8NamesTheFileOnDisk) {
    const TemporaryFolder folder;
    writeFile(platform::pathFromUtf8("caf\u00E9 \u20AC.txt"), "x");
    EXPECT_TRUE(fs::exists(fs::path(u"caf\u00E9 \u20AC.txt")));
}

TEST(PathText, aNameThatIsNoValidTextIsShownWithReplacements) {
    // An unpaired surrogate where paths are wide, a Latin-1 letter where they are bytes.
    fs::path::string_type name(1, 'a');
    name += static_cast<fs::path::value_type>(sizeof(fs::path::value_type) == 1 ? 0xE9 : 0xD83D);
    EXPECT_EQ(platform::utf8FromPath(name), "a\uFFFD");
}

TEST(PathText, rulesSeeBackslashesOnEveryMachine) {
    EXPECT_EQ(platform::backslashText(fs::path("SimObjects/Airplanes") / "A320"), "SimObjects\\Airplanes\\A320");
}

TEST(RoamingFolder, isTheOneThatATestPutsInItsPlaceAndThenTheSystemsAgain) {
    const fs::path former = platform::roamingAppDataFolder();
    platform::setRoamingAppDataFolder("elsewhere");
    EXPECT_EQ(platform::roamingAppDataFolder(), "elsewhere");
    platform::setRoamingAppDataFolder({});
    EXPECT_EQ(platform::roamingAppDataFolder(), former);
    EXPECT_FALSE(former.empty());
}

TEST(ProgramFilesFolders, areWholePaths) {
    const std::vector<fs::path> folders = platform::programFilesFolders();
    EXPECT_EQ(folders.size(), 2u);
    EXPECT_TRUE(std::all_of(folders.begin(), folders.end(), [](const fs::path& path) { return path.is_absolute(); }));
}

TEST(ReplaceFile, theNewFileTakesThePlaceOfTheOldOne) {
    const TemporaryFolder folder;
    writeFile("parameters.xml", "old and longer");
    writeFile("parameters.new", "new");

    EXPECT_FALSE(platform::replaceFile("parameters.new", "parameters.xml"));

    EXPECT_EQ(readFile("parameters.xml"), "new");
    EXPECT_FALSE(fs::exists("parameters.new"));
}

TEST(ReplaceFile, thereNeedBeNoOldOne) {
    const TemporaryFolder folder;
    writeFile("parameters.new", "new");
    EXPECT_FALSE(platform::replaceFile("parameters.new", "parameters.xml"));
    EXPECT_EQ(readFile("parameters.xml"), "new");
}

TEST(ReplaceFile, aMissingNewFileIsAnErrorAndTheOldOneStays) {
    const TemporaryFolder folder;
    writeFile("parameters.xml", "old");
    EXPECT_EQ(platform::replaceFile("absent", "parameters.xml"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(readFile("parameters.xml"), "old");
}

TEST(ReplaceFile, aFolderInTheWayIsAnErrorAndBothStay) {
    const TemporaryFolder folder;
    writeFile("parameters.xml/file", "old");
    writeFile("parameters.new", "new");
    EXPECT_TRUE(platform::replaceFile("parameters.new", "parameters.xml"));
    EXPECT_EQ(readFile("parameters.xml/file"), "old");
    EXPECT_EQ(readFile("parameters.new"), "new");
}

TEST(VanishingFile, isWrittenAndGone) {
    const TemporaryFolder folder;
    EXPECT_TRUE(platform::writeVanishingFile(folder.path() / "test.tmp"));
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(VanishingFile, failsWhereThereIsNoFolder) {
    const TemporaryFolder folder;
    EXPECT_FALSE(platform::writeVanishingFile(folder.path() / "absent" / "x.tmp"));
    EXPECT_FALSE(fs::exists("absent"));
}

namespace {

std::map<std::string, platform::FolderEntry::Kind> listed(const fs::path& folder) {
    std::map<std::string, platform::FolderEntry::Kind> entries;
    platform::listFolder(folder.native(), [&entries](const platform::FolderEntry& entry) {
        EXPECT_TRUE(entries.emplace(platform::utf8FromPath(entry.name), entry.kind).second);
    });
    return entries;
}

} // namespace

TEST(ListFolder, tellsEachFileAndFolderOnce) {
    using Kind = platform::FolderEntry::Kind;
    const TemporaryFolder folder;
    writeFile("x/one.txt", "1");
    writeFile("x/two/inside.txt", "2");
    writeFile(platform::pathFromUtf8("x/caf\u00E9"), "3");
    const std::map<std::string, Kind> expected{
        {"one.txt", Kind::file}, {"two", Kind::folder}, {"caf\u00E9", Kind::file}};
    EXPECT_EQ(listed("x"), expected);
    EXPECT_EQ(listed("x/"), expected);
    EXPECT_EQ(listed(fs::absolute("x") / ""), expected) << "with the machine's own separator at the end";
    EXPECT_TRUE(listed("x/two/missing").empty());
    EXPECT_TRUE(listed("x/one.txt").empty());
}
