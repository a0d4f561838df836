#include <gtest/gtest.h>

#include "platform/files.h"

TEST(DocumentsFolders, areTwoOfTheSystemsUntilATestPutsOthersInTheirPlace) {
    const std::filesystem::path formerPublic = platform::publicDocumentsFolder();
    const std::filesystem::path formerOwn = platform::documentsFolder();
    EXPECT_FALSE(formerPublic.empty());
    EXPECT_FALSE(formerOwn.empty());
    EXPECT_NE(formerPublic, formerOwn);

    platform::setDocumentsFolders("elsewhere");
    EXPECT_EQ(platform::publicDocumentsFolder(), std::filesystem::path("elsewhere") / "public");
    EXPECT_EQ(platform::documentsFolder(), std::filesystem::path("elsewhere") / "own");

    platform::setDocumentsFolders({});
    EXPECT_EQ(platform::publicDocumentsFolder(), formerPublic);
    EXPECT_EQ(platform::documentsFolder(), formerOwn);
}
