#include "rig/report/pictures.h"

#include <gmock/gmock.h>

#include <sstream>

#include "tests/rig/report/flown_trace.h"
#include "tests/support/temporary_folder.h"

using ::testing::SizeIs;
using ::testing::StartsWith;

namespace rig {
namespace {

constexpr const char* pngBegin = "\x89PNG\r\n";

TEST(Pictures, areWrittenAsPngAlsoOfNothing) {
    const TemporaryFolder folder;
    FlownTrace trace;
    std::istringstream bytes(trace.bytes());
    for (const std::filesystem::path& file : drawPictures(analyse({.trace = bytes}), folder.path())) {
        EXPECT_THAT(readFile(file), StartsWith(pngBegin)) << file;
    }
}

TEST(Pictures, showWhatFlew) {
    const TemporaryFolder folder;
    const auto mapOf = [&folder](double sideMetres) {
        FlownTrace trace;
        trace.create(10, "KLM1");
        trace.fly(0, 30, {{10, [sideMetres](double seconds) {
                               return flyingAt(shifted(placeAt(seconds), 180, seconds > 15 ? sideMetres : 0));
                           }}});
        std::istringstream bytes(trace.bytes());
        const std::vector<std::filesystem::path> files = drawPictures(analyse({.trace = bytes}), folder.path());
        EXPECT_THAT(files, SizeIs(3));
        return readFile(files.at(0));
    };
    const std::string straight = mapOf(0);
    EXPECT_EQ(straight, mapOf(0));
    EXPECT_NE(straight, mapOf(500));
}

TEST(Pictures, thatCannotBeWrittenAreAnError) {
    FlownTrace trace;
    std::istringstream bytes(trace.bytes());
    EXPECT_THROW(drawPictures(analyse({.trace = bytes}), "no/such/folder"), std::runtime_error);
}

} // namespace
} // namespace rig
