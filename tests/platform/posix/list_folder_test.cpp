// tests/platform/posix/list_folder_test.cpp
#include <map>

#include <gtest/gtest.h>

#include "platform/files.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;

TEST(ListFolder, aLinkIsWhatItLeadsTo) {
    using Kind = platform::FolderEntry::Kind;
    const TemporaryFolder folder;
    writeFile("x/file", "1");
    fs::create_directory("elsewhere");
    fs::create_symlink("file", "x/to file");
    fs::create_directory_symlink("../elsewhere", "x/to folder");
    fs::create_symlink("gone", "x/to nothing");
    std::map<std::string, Kind> entries;
    platform::listFolder("x", [&](const platform::FolderEntry& entry) { entries[entry.name] = entry.kind; });
    const std::map<std::string, Kind> expected{
        {"file", Kind::file}, {"to file", Kind::file}, {"to folder", Kind::linkedFolder}};
    EXPECT_EQ(entries, expected);
}
