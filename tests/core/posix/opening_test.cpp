// tests/core/posix/opening_test.cpp
// Opening things for the user, seen through the window system in memory.
#include <gmock/gmock.h>

#include "core/folders.h"
#include "core/parameter_file.h"
#include "platform/posix/memory_window.h"
#include "tests/support/temporary_folder.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class OpeningForTheUser : public ::testing::Test {
protected:
    OpeningForTheUser() { window_system::memory::reset(); }
    ~OpeningForTheUser() override { window_system::memory::reset(); }

    TemporaryFolder folder_;
};

} // namespace

TEST_F(OpeningForTheUser, aParameterFolderThatDoesNotOpenIsAMessageBox) {
    gf_openParameterFolder();
    EXPECT_THAT(window_system::memory::messageBoxes(), ElementsAre("Could not open folder with parameters.xml"));
}

TEST_F(OpeningForTheUser, aManualThatDoesNotOpenIsAMessageBox) {
    gf_openManual();
    EXPECT_THAT(window_system::memory::messageBoxes(), ElementsAre("Could not open local folder with Manual"));
}

TEST_F(OpeningForTheUser, whatOpensIsNoMessage) {
    std::filesystem::create_directories(gf_parameterFolder());
    writeFile("docs/Manual.pdf", "");
    gf_openParameterFolder();
    gf_openManual();
    EXPECT_THAT(window_system::memory::messageBoxes(), IsEmpty());
}
