// window/main_window.cpp
#include "window/main_window.h"

#include <algorithm>
#include <filesystem>

#include "core/parameter_file.h"
#include "core/parameters.h"

using window_system::Rectangle;

namespace {

constexpr int windowWidth = 880;
constexpr int windowHeight = 516;
/// Caption, system menu and minimise box, no sizing border.
constexpr std::uint32_t windowStyle = 0xCA0000;
/// So much of the window stays inside the work area, pixels.
constexpr int leastVisible = 48;

Rectangle atStoredPosition() {
    const int x = MAIN_WINDOW_X.value;
    const int y = MAIN_WINDOW_Y.value;
    return {x, y, x + windowWidth, y + windowHeight};
}

/// One axis of the fitting: the new start of a stretch of `length` that now begins at `start`.
int fittedStart(int start, int length, int areaStart, int areaEnd) {
    if (length > areaEnd - areaStart) {
        return areaStart;
    }
    return std::clamp(start, areaStart - length + leastVisible, areaEnd - leastVisible);
}

void takePosition(int x, int y) {
    MAIN_WINDOW_X.value = std::clamp(x, MAIN_WINDOW_X.minimum, MAIN_WINDOW_X.maximum);
    MAIN_WINDOW_Y.value = std::clamp(y, MAIN_WINDOW_Y.minimum, MAIN_WINDOW_Y.maximum);
}

/// Before the first reading of the parameters there may be no file: it is to be made whole, not with a position alone.
void savePosition() {
    if (std::error_code ignored; !std::filesystem::exists(gf_parameterFile(), ignored)) {
        return;
    }
    saveParameter(MAIN_WINDOW_X);
    saveParameter(MAIN_WINDOW_Y);
}

} // namespace

bool initInstance(std::string_view title) {
    gf_readWindowPosition();
    if (!window_system::createWindow(title, windowStyle, atStoredPosition())) {
        return false;
    }
    fitWindowToMonitor();
    return true;
}

Rectangle fittedToArea(const Rectangle& window, const Rectangle& area) {
    const int left = fittedStart(window.left, window.width(), area.left, area.right);
    const int top = fittedStart(window.top, window.height(), area.top, area.bottom);
    return {left, top, left + window.width(), top + window.height()};
}

void fitWindowToMonitor() {
    const Rectangle stored = atStoredPosition();
    const Rectangle fitted = fittedToArea(stored, window_system::nearestWorkArea(stored));
    if (fitted == stored) {
        return;
    }
    takePosition(fitted.left, fitted.top);
    savePosition();
    window_system::moveWindow(fitted.left, fitted.top);
}

void storeWindowPosition() {
    const window_system::Placement placement = window_system::windowPlacement();
    const bool standsNormally = placement.showState == window_system::ShowState::normal;
    const Rectangle at = standsNormally ? window_system::windowRectangle() : placement.normalPosition;
    takePosition(at.left, at.top);
    savePosition();
    fitWindowToMonitor();
}
