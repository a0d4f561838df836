#include "core/file_generations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

/// A folder in the place of a file, which no copy can overwrite.
void blockWithFolder(const fs::path& path) {
    writeFile(path / "inside", "x");
}

TEST(FileGenerations, oneGenerationIsKeptUnderAZeroBeforeTheDot) {
    const LogCapture log;
    writeFile("parameters.xml", "new");
    EXPECT_TRUE(gf_save1GenerationOf("parameters.xml"));
    EXPECT_EQ(readFile("parameters0.xml"), "new");
    EXPECT_EQ(readFile("parameters.xml"), "new");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(FileGenerations, theOneGenerationIsOverwritten) {
    const LogCapture log;
    writeFile("parameters.xml", "new");
    writeFile("parameters0.xml", "a much longer old one");
    EXPECT_TRUE(gf_save1GenerationOf("parameters.xml"));
    EXPECT_EQ(readFile("parameters0.xml"), "new");
}

TEST(FileGenerations, aMissingFileChangesNothing) {
    const LogCapture log;
    writeFile("parameters0.xml", "old");
    EXPECT_TRUE(gf_save1GenerationOf("parameters.xml"));
    EXPECT_EQ(readFile("parameters0.xml"), "old");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(FileGenerations, theLastDotOfTheNameCounts) {
    const LogCapture log;
    writeFile("folder.of/my.file.txt", "text");
    gf_save1GenerationOf("folder.of/my.file.txt");
    EXPECT_EQ(readFile("folder.of/my.file0.txt"), "text");
}

TEST(FileGenerations, aNameWithoutADotIsAnErrorAndNothingElse) {
    const LogCapture log;
    writeFile("folder.of/file", "text");
    EXPECT_FALSE(gf_save1GenerationOf("folder.of/file"));
    gf_saveUpto3GenerationsOf("folder.of/file");
    EXPECT_THAT(log.lines(), ElementsAre("==> gf_save1GenerationOf: no dot in filename: folder.of/file",
                                         "==> gf_saveUpto3GenerationsOf: no dot in filename: folder.of/file"));
    EXPECT_EQ(std::distance(fs::directory_iterator("folder.of"), fs::directory_iterator()), 1);
}

TEST(FileGenerations, aFailedCopyIsAnErrorAndChangesNothing) {
    const LogCapture log;
    writeFile("a.txt", "text");
    blockWithFolder("a0.txt");
    EXPECT_FALSE(gf_save1GenerationOf("a.txt"));
    EXPECT_THAT(log.errors(), ElementsAre(StartsWith("==> copy a.txt -> a0.txt failed: ")));
    EXPECT_EQ(readFile("a.txt"), "text");
    EXPECT_EQ(readFile("a0.txt/inside"), "x");
    EXPECT_FALSE(fs::exists("a0.txt.new"));
}

TEST(FileGenerations, aLeftOverOfABrokenCopyDoesNoHarm) {
    const LogCapture log;
    writeFile("a.txt", "text");
    writeFile("a0.txt.new", "a copy that broke off");
    EXPECT_TRUE(gf_save1GenerationOf("a.txt"));
    EXPECT_EQ(readFile("a0.txt"), "text");
    EXPECT_FALSE(fs::exists("a0.txt.new"));
}

TEST(FileGenerations, threeGenerationsMoveUp) {
    const LogCapture log;
    writeFile("a.txt", "now");
    writeFile("a0.txt", "one ago");
    writeFile("a00.txt", "two ago");
    writeFile("a000.txt", "three ago");
    gf_saveUpto3GenerationsOf("a.txt");
    EXPECT_EQ(readFile("a.txt"), "now");
    EXPECT_EQ(readFile("a0.txt"), "now");
    EXPECT_EQ(readFile("a00.txt"), "one ago");
    EXPECT_EQ(readFile("a000.txt"), "two ago");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(FileGenerations, aGapAmongThreeGenerationsIsSkipped) {
    const LogCapture log;
    writeFile("a0.txt", "one ago");
    gf_saveUpto3GenerationsOf("a.txt");
    EXPECT_FALSE(fs::exists("a.txt"));
    EXPECT_EQ(readFile("a0.txt"), "one ago");
    EXPECT_EQ(readFile("a00.txt"), "one ago");
    EXPECT_FALSE(fs::exists("a000.txt"));
}

TEST(FileGenerations, anOldCopyThatIsStuckDoesNotCostTheNewest) {
    const LogCapture log;
    writeFile("a.txt", "now");
    writeFile("a00.txt", "two ago");
    blockWithFolder("a000.txt");
    gf_saveUpto3GenerationsOf("a.txt");
    EXPECT_EQ(readFile("a0.txt"), "now");
    EXPECT_THAT(log.errors(), ElementsAre(StartsWith("==> copy a00.txt -> a000.txt failed: ")));
}

} // namespace
