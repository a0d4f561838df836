// tests/core/folders_test.cpp
#include "core/folders.h"

#include <gmock/gmock.h>

#include <set>

#include "platform/files.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
namespace fs = std::filesystem;

namespace {

std::set<std::string> namesIn(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.insert(platform::utf8FromPath(entry.path().filename()));
    }
    return names;
}

/// What the file-system error that the call throws says first: the operation.
template <typename Call>
std::string failedOperation(Call call) {
    try {
        call();
    } catch (const fs::filesystem_error& error) {
        return error.what();
    }
    return "no exception";
}

} // namespace

TEST(ClearingFolders, removesEveryFileThatLiesDirectlyInTheFolder) {
    const LogCapture log;
    writeFile("out/a.txt", "");
    writeFile("out/b.xml", "");
    writeFile("out/noextension", "");
    writeFile("out/below/c.txt", "");

    gf_removeFilesFromDirectory("out");

    EXPECT_THAT(namesIn("out"), ElementsAre("below"));
    EXPECT_TRUE(fs::exists("out/below/c.txt"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(ClearingFolders, removesXmlFilesInWhateverCase) {
    const LogCapture log;
    for (const char* name : {"a.xml", "b.XML", "c.Xml", "d.xml.bak", "e.txt", "xml", ".xml", "f.xmlx"}) {
        writeFile(fs::path("airports") / name, "");
    }
    writeFile("airports/g.xml/h.xml", "");

    gf_removeXMLFilesFromDirectory("airports");

    EXPECT_THAT(namesIn("airports"), ElementsAre(".xml", "d.xml.bak", "e.txt", "f.xmlx", "g.xml", "xml"));
    EXPECT_TRUE(fs::exists("airports/g.xml/h.xml"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(ClearingFolders, aFolderThatDoesNotExistIsLeftAlone) {
    const LogCapture log;
    gf_removeFilesFromDirectory("absent");
    gf_removeXMLFilesFromDirectory("absent");
    EXPECT_FALSE(fs::exists("absent"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(ClearingFolders, anExceptionIsAnErrorLineWithTheRoutinesName) {
    const LogCapture log;
    writeFile("file", "");

    gf_removeFilesFromDirectory("file");
    gf_removeXMLFilesFromDirectory("file");

    EXPECT_THAT(log.errors(), ElementsAre(StartsWith("==> gf_removeFilesFromDirectory exception: "),
                                          StartsWith("==> gf_removeXMLFilesFromDirectory exception: ")));
    EXPECT_TRUE(fs::exists("file"));
}

TEST(WriteTest, aFolderThatTakesAFileIsWritableAndStaysEmpty) {
    const TemporaryFolder folder;
    fs::create_directory("program");
    EXPECT_TRUE(isWritableFolder("program"));
    EXPECT_TRUE(isWritableFolder(folder.path() / "program"));
    EXPECT_THAT(namesIn("program"), IsEmpty());
}

TEST(WriteTest, aFolderThatDoesNotExistIsNotWritable) {
    const TemporaryFolder folder;
    writeFile("file", "");
    EXPECT_FALSE(isWritableFolder("absent"));
    EXPECT_FALSE(isWritableFolder("file"));
    EXPECT_FALSE(fs::exists("absent"));
}

TEST(WriteTest, theProgramFilesFoldersAndWhatLiesInThemAreNotWritable) {
    const std::vector<fs::path> folders = platform::programFilesFolders();
    ASSERT_FALSE(folders.empty());
    for (const fs::path& folder : folders) {
        EXPECT_FALSE(isWritableFolder(folder)) << folder;
        EXPECT_FALSE(isWritableFolder(folder / "")) << folder;
        EXPECT_FALSE(isWritableFolder(folder / "lib")) << folder;
        EXPECT_FALSE(isWritableFolder(folder / "lib" / "..")) << folder;
    }
}

TEST(CheckedFileCalls, tellWhatIsThere) {
    const TemporaryFolder folder;
    writeFile("file", "");
    EXPECT_TRUE(fileExists("file"));
    EXPECT_EQ(fileStatus("file").type(), fs::file_type::regular);
    EXPECT_EQ(fileStatus(".").type(), fs::file_type::directory);
}

TEST(CheckedFileCalls, takeNotFoundForAnAnswer) {
    const TemporaryFolder folder;
    writeFile("file", "");
    for (const char* absent : {"absent", "absent/below", "file/below"}) {
        EXPECT_FALSE(fileExists(absent)) << absent;
        EXPECT_EQ(fileStatus(absent).type(), fs::file_type::not_found) << absent;
        EXPECT_FALSE(removeFile(absent)) << absent;
    }
}

TEST(CheckedFileCalls, removeAFileOnce) {
    const TemporaryFolder folder;
    writeFile("file", "");
    EXPECT_TRUE(removeFile("file"));
    EXPECT_FALSE(removeFile("file"));
    EXPECT_FALSE(fs::exists("file"));
}

TEST(CheckedFileCalls, createFoldersWithTheirParentsAndLeaveExistingOnesAlone) {
    const TemporaryFolder folder;
    createFolders("output/info");
    writeFile("output/info/report.txt", "");
    createFolders("output/info");
    EXPECT_TRUE(fs::exists("output/info/report.txt"));
}

TEST(CheckedFileCalls, aFolderThatIsNotEmptyCannotBeRemoved) {
    const TemporaryFolder folder;
    writeFile("full/file", "");
    EXPECT_THAT(failedOperation([] { removeFile("full"); }),
                AllOf(StartsWith("filesystem error: remove"), HasSubstr("full")));
    EXPECT_TRUE(fs::exists("full/file"));
}

TEST(CheckedFileCalls, aFileInTheWayOfAFolderIsAFailure) {
    const TemporaryFolder folder;
    writeFile("file", "");
    for (const char* path : {"file", "file/below"}) {
        EXPECT_THAT(failedOperation([&] { createFolders(path); }),
                    AllOf(StartsWith("filesystem error: create_directories"), HasSubstr("file")));
    }
}
