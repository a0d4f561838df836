#include <filesystem>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "platform/files.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/windows/folder_link.h"

namespace fs = std::filesystem;

namespace {

using Kind = platform::FolderEntry::Kind;

std::map<std::wstring, Kind> listed(const std::wstring& folder) {
    std::map<std::wstring, Kind> entries;
    platform::listFolder(folder, [&entries](const platform::FolderEntry& entry) { entries[entry.name] = entry.kind; });
    return entries;
}

} // namespace

/// Much lies behind junctions.
TEST(ListFolder, aLinkToAFolderElsewhereIsAFolder) {
    const TemporaryFolder folder;
    writeFile("elsewhere/file", "1");
    fs::create_directory("x");
    const Link link("x/to folder", "elsewhere");
    if (!link.isMade()) {
        GTEST_SKIP() << "no links can be made here";
    }
    EXPECT_EQ(listed(L"x"), (std::map<std::wstring, Kind>{{L"to folder", Kind::folder}}));
    EXPECT_EQ(listed(L"x\\to folder"), (std::map<std::wstring, Kind>{{L"file", Kind::file}}));
}

TEST(ListFolder, aLinkToAFileIsAFile) {
    const TemporaryFolder folder;
    writeFile("elsewhere/file", "1");
    fs::create_directory("x");
    const Link link("x/to file", "elsewhere/file");
    if (!link.isMade()) {
        GTEST_SKIP() << "no links can be made here";
    }
    EXPECT_EQ(listed(L"x"), (std::map<std::wstring, Kind>{{L"to file", Kind::file}}));
}

TEST(ListFolder, aLinkToAFolderRoundItIsTold) {
    const TemporaryFolder folder;
    fs::create_directories("x/y/z");
    fs::create_directory("beside");
    const Link up("x/y/up", "x");
    const Link self("x/y/self", "x/y");
    const Link beside("x/y/beside", "beside");
    const Link through("beside/through", "x");
    if (!up.isMade() || !self.isMade() || !beside.isMade() || !through.isMade()) {
        GTEST_SKIP() << "no links can be made here";
    }
    const std::map<std::wstring, Kind> expected{
        {L"beside", Kind::folder}, {L"self", Kind::linkedFolder}, {L"up", Kind::linkedFolder}, {L"z", Kind::folder}};
    EXPECT_EQ(listed(L"x\\y"), expected);
    EXPECT_EQ(listed(fs::absolute("x/y").wstring()), expected);
    EXPECT_EQ(listed(L"x\\y\\beside"), (std::map<std::wstring, Kind>{{L"through", Kind::linkedFolder}}))
        << "the way to it leads through a link";
    EXPECT_EQ(listed(L"beside"), (std::map<std::wstring, Kind>{{L"through", Kind::folder}}));
}
