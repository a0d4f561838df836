#include "window/main_window.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>

#include "core/parameter_file.h"
#include "core/parameters.h"
#include "platform/posix/memory_window.h"
#include "tests/support/log_capture.h"
#include "tests/support/program_run.h"

namespace memory = window_system::memory;
using window_system::Rectangle;
using window_system::ShowState;

namespace {

class MainWindow : public testing::Test {
protected:
    MainWindow() {
        resetProgram();
        memory::reset();
        window_system::registerWindowClass("test", {});
        std::filesystem::create_directories(gf_parameterFolder());
    }
    ~MainWindow() override {
        memory::reset();
        resetProgram();
    }

    static void store(int x, int y) {
        MAIN_WINDOW_X.value = x;
        MAIN_WINDOW_Y.value = y;
        saveParameter(MAIN_WINDOW_X);
        saveParameter(MAIN_WINDOW_Y);
    }

    LogCapture log;
};

TEST_F(MainWindow, comesUpAtTheStoredPosition) {
    store(100, 50);
    ASSERT_TRUE(initInstance("test"));
    EXPECT_EQ(window_system::windowRectangle(), (Rectangle{100, 50, 980, 566}));
}

TEST_F(MainWindow, hasACaptionASystemMenuAndAMinimiseBox) {
    ASSERT_TRUE(initInstance("Tarnwing_P3D"));
    EXPECT_EQ(memory::windowStyle(), 0xCA0000U);
    EXPECT_EQ(memory::windowTitle(), "Tarnwing_P3D");
}

TEST_F(MainWindow, aProgramThatEndsBeforeItHasAFileMakesNone) {
    ASSERT_TRUE(initInstance("test"));
    memory::placeWindow({310, 90, 1190, 606}, ShowState::normal, {});
    storeWindowPosition();
    EXPECT_EQ(MAIN_WINDOW_X.value, 310);
    EXPECT_FALSE(std::filesystem::exists(gf_parameterFile())) << "the next start is to make it whole";
}

TEST_F(MainWindow, aWindowMovedOutOfReachIsStoredWhereItCanBeReached) {
    store(0, 0);
    ASSERT_TRUE(initInstance("test"));
    memory::placeWindow({-40000, 90, -39120, 606}, ShowState::normal, {});
    storeWindowPosition();
    EXPECT_EQ(MAIN_WINDOW_X.value, 48 - 880);
    EXPECT_NE(readFile(gf_parameterFile()).find("name=\"MAIN_WINDOW_X\" value=\"-832\""), std::string::npos);
}

TEST_F(MainWindow, aStoredPositionOutsideAllMonitorsComesUpOnTheNearestOne) {
    memory::setMonitors({{0, 0, 1280, 1024}, {1280, 0, 2560, 1024}});
    store(9000, 200);
    ASSERT_TRUE(initInstance("test"));
    const Rectangle at = window_system::windowRectangle();
    EXPECT_EQ(at.left, 2560 - 48);
    EXPECT_EQ(at.top, 200);
    EXPECT_EQ(MAIN_WINDOW_X.value, 2560 - 48);
}

TEST_F(MainWindow, aStoredPositionBelowItsMinimumComesUpAsTheMinimumAndIsThenFitted) {
    store(-99999, 20);
    gf_readWindowPosition();
    EXPECT_EQ(MAIN_WINDOW_X.value, -30000);
    ASSERT_TRUE(initInstance("test"));
    EXPECT_EQ(window_system::windowRectangle().left, 48 - 880);
}

TEST_F(MainWindow, aPositionThatHadToChangeIsSaved) {
    store(5000, 20);
    ASSERT_TRUE(initInstance("test"));
    MAIN_WINDOW_X.value = 0;
    gf_readWindowPosition();
    EXPECT_EQ(MAIN_WINDOW_X.value, 1280 - 48);
}

TEST_F(MainWindow, aPositionThatHadToChangeMakesNoFileBeforeTheFirstReading) {
    memory::setMonitors({{0, 0, 640, 480}});
    ASSERT_TRUE(initInstance("test"));
    EXPECT_EQ(window_system::windowRectangle().left, 0);
    EXPECT_FALSE(std::filesystem::exists(gf_parameterFile()));
    EXPECT_TRUE(gf_readParameters());
    EXPECT_NE(readFile(gf_parameterFile()).find("\"BLOCK_CALLSIGN\""), std::string::npos);
}

TEST_F(MainWindow, aCorruptFileIsMadeFreshOnASmallMonitorToo) {
    memory::setMonitors({{0, 0, 640, 480}});
    writeFile(gf_parameterFile(), "<root><parameters>");
    ASSERT_TRUE(initInstance("test"));
    EXPECT_EQ(window_system::windowRectangle().left, 0);
    EXPECT_TRUE(gf_readParameters());
    EXPECT_NE(readFile(gf_parameterFile()).find("\"BLOCK_CALLSIGN\""), std::string::npos);
    EXPECT_EQ(readFile(gf_parameterFolder() / "parameters0.xml"), "<root><parameters>");
}

TEST_F(MainWindow, aRefusedWindowIsAFailure) {
    memory::refuseWindow(true);
    EXPECT_FALSE(initInstance("test"));
}

TEST_F(MainWindow, aMinimisedWindowStoresItsNormalPosition) {
    ASSERT_TRUE(initInstance("test"));
    memory::placeWindow({-32000, -32000, -31840, -31970}, ShowState::minimised, {300, 80, 1180, 596});
    storeWindowPosition();
    EXPECT_EQ(MAIN_WINDOW_X.value, 300);
    EXPECT_EQ(MAIN_WINDOW_Y.value, 80);
}

TEST_F(MainWindow, aNormalWindowStoresWhereItStands) {
    ASSERT_TRUE(initInstance("test"));
    memory::placeWindow({310, 90, 1190, 606}, ShowState::normal, {0, 0, 880, 516});
    storeWindowPosition();
    EXPECT_EQ(MAIN_WINDOW_X.value, 310);
    EXPECT_EQ(MAIN_WINDOW_Y.value, 90);
}

TEST(FittedToArea, aWindowInsideTheAreaStays) {
    const Rectangle window{10, 20, 890, 536};
    EXPECT_EQ(fittedToArea(window, {0, 0, 1280, 1024}), window);
}

TEST(FittedToArea, aWindowLargerThanTheAreaIsPinnedToItsEdge) {
    EXPECT_EQ(fittedToArea({500, 20, 1380, 536}, {100, 0, 900, 1024}).left, 100);
    EXPECT_EQ(fittedToArea({10, 300, 890, 816}, {0, 40, 1280, 500}).top, 40);
}

TEST(FittedToArea, atLeast48PixelsStayInsideOnEachAxisWhateverThePosition) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> position(-30000, 30000);
    const Rectangle area{0, 0, 1280, 1024};
    for (int i = 0; i < 1000; ++i) {
        const int x = position(random);
        const int y = position(random);
        const Rectangle fitted = fittedToArea({x, y, x + 880, y + 516}, area);
        EXPECT_GE(std::min(fitted.right, area.right) - std::max(fitted.left, area.left), 48);
        EXPECT_GE(std::min(fitted.bottom, area.bottom) - std::max(fitted.top, area.top), 48);
        EXPECT_EQ(fitted.width(), 880);
        EXPECT_EQ(fittedToArea(fitted, area), fitted) << "a fitted window stays";
    }
}

} // namespace
