// tests/distribution/clear_file_test.cpp
#include "distribution/clear_file.h"

#include <gmock/gmock.h>
#include <stdexcept>

#include "tests/support/log_capture.h"
#include "tests/support/message_of.h"

using testing::ElementsAre;
using testing::StartsWith;

namespace fs = std::filesystem;

TEST(ClearFile, goesWithItsOwner) {
    const LogCapture log;
    {
        const ClearFile clear("input/a.xml");
        writeFile(clear.path(), "secret");
    }
    EXPECT_FALSE(fs::exists("input/a.xml"));
    EXPECT_THAT(log.lines(), ElementsAre());
}

TEST(ClearFile, goesWhenAnExceptionPasses) {
    const LogCapture log;
    const std::string failure = messageOf([] {
        const ClearFile clear("a.xml");
        writeFile(clear.path(), "secret");
        throw std::runtime_error("on the way");
    });
    EXPECT_EQ(failure, "on the way");
    EXPECT_FALSE(fs::exists("a.xml"));
}

TEST(ClearFile, thatIsNotThereIsNoFault) {
    const LogCapture log;
    lf_removeClearFile("none.xml");
    EXPECT_THAT(log.lines(), ElementsAre());
}

TEST(ClearFile, thatCannotBeRemovedIsAnErrorLine) {
    const LogCapture log;
    writeFile("a.xml/inside", "a folder with something in it cannot be removed");
    lf_removeClearFile("a.xml");
    EXPECT_THAT(log.errors(), ElementsAre(StartsWith("==> Warning: could not remove a.xml, errorcode: ")));
}

TEST(LeftOverClearFiles, ofAKilledProcessAreRemovedAndNothingElseIs) {
    const LogCapture log;
    for (const char* file : {"input/dbase.xml", "input/airports.xml", "input/AIG-regcodes.xml", "input/dbase.enc"}) {
        writeFile(file, "left");
    }
    gf_removeLeftOverClearFiles();
    EXPECT_FALSE(fs::exists("input/dbase.xml"));
    EXPECT_FALSE(fs::exists("input/airports.xml"));
    EXPECT_FALSE(fs::exists("input/AIG-regcodes.xml"));
    EXPECT_TRUE(fs::exists("input/dbase.enc"));
    EXPECT_THAT(log.lines(), ElementsAre());
}
