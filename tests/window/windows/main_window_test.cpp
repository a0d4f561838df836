// The main window with the system's own windows.
#include "window/main_window.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <windows.h>

#include "core/parameter_file.h"
#include "core/parameters.h"
#include "platform/window_system.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/program_run.h"

using Area = window_system::Rectangle; // the system has a Rectangle of its own

namespace {

constexpr const wchar_t* className = L"window position test";

class WindowPosition : public testing::Test {
protected:
    WindowPosition() {
        resetProgram();
        std::filesystem::create_directories(gf_parameterFolder());
        writeFile(gf_parameterFile(), "<root><parameters/></root>");
    }
    ~WindowPosition() override {
        close();
        resetProgram();
    }

    /// As a start of the program does.
    void open() {
        ASSERT_TRUE(window_system::registerWindowClass("window position test", {}));
        ASSERT_TRUE(initInstance("window position test"));
        handle = FindWindowW(className, nullptr);
        ASSERT_NE(handle, nullptr);
    }
    void close() {
        window_system::destroyWindow();
        UnregisterClassW(className, GetModuleHandleW(nullptr));
    }
    /// As its end does, and the next start.
    void startAnew() {
        storeWindowPosition();
        close();
        resetParameters();
        open();
    }

    static bool willStandAt(const Area& at) {
        return eventually([&at] {
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
                DispatchMessageW(&message);
            }
            return window_system::windowRectangle() == at;
        });
    }

    static constexpr Area moved{150, 90, 150 + 880, 90 + 516};

    LogCapture log;
    HWND handle = nullptr;
};

TEST_F(WindowPosition, isWhereTheUserLeftIt) {
    open();
    SetWindowPos(handle, nullptr, moved.left, moved.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    ASSERT_TRUE(willStandAt(moved));
    startAnew();
    EXPECT_TRUE(willStandAt(moved));
}

TEST_F(WindowPosition, ofAMinimisedWindowIsWhereItStoodBefore) {
    open();
    SetWindowPos(handle, nullptr, moved.left, moved.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    ASSERT_TRUE(willStandAt(moved));
    ShowWindow(handle, SW_MINIMIZE);
    ASSERT_TRUE(eventually([this] { return IsIconic(handle) != 0; }));
    ASSERT_EQ(window_system::windowPlacement().showState, window_system::ShowState::minimised);
    startAnew();
    EXPECT_TRUE(willStandAt(moved));
}

TEST_F(WindowPosition, thatNoMonitorShowsIsBroughtBackIntoSight) {
    open();
    const Area area = window_system::nearestWorkArea(moved);
    constexpr int leastVisible = 48;
    close();
    MAIN_WINDOW_X.value = area.right + 500;
    MAIN_WINDOW_Y.value = 90;
    saveParameter(MAIN_WINDOW_X);
    saveParameter(MAIN_WINDOW_Y);
    open();
    const int left = area.right - leastVisible;
    EXPECT_EQ(MAIN_WINDOW_X.value, left);
    // A window manager may bring it in further.
    EXPECT_LE(window_system::windowRectangle().left, left);
}

} // namespace
