// tests/window/posix/install_path_field_test.cpp
#include <gtest/gtest.h>

#include "core/parameters.h"
#include "platform/posix/memory_window.h"
#include "window/status_display.h"
#include "window/window_state.h"

namespace memory = window_system::memory;

namespace {

TEST(InstallPathField, canBeTypedInWithTheNextPaintOnceItIsAskedFor) {
    memory::reset();
    window_system::registerWindowClass("test", {nullptr, paintWindow, nullptr, nullptr});
    window_system::createWindow("test", 0, {0, 0, 100, 100});
    window_system::createControl(window_system::ControlKind::edit, ALL_INSTALL_PATH.controlId, "", {});
    window_system::enableControl(ALL_INSTALL_PATH.controlId, false);
    memory::paintNow();
    EXPECT_FALSE(memory::control(ALL_INSTALL_PATH.controlId)->enabled);
    askForInstallPath();
    memory::paintNow();
    EXPECT_TRUE(memory::control(ALL_INSTALL_PATH.controlId)->enabled);
    memory::reset();
    resetWindowState();
}

} // namespace
