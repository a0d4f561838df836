// window/status_display.cpp
#include "window/status_display.h"

#include <array>

#include <fmt/format.h>

#include "core/parameters.h"
#include "core/program_info.h"
#include "core/program_version.h"
#include "window/controls.h"
#include "window/painted_text.h"
#include "window/status_strip.h"
#include "window/window_layout.h"
#include "window/window_state.h"

using window_system::Colour;
using window_system::Painter;
using window_system::Rectangle;

namespace {

struct Strip {
    Rectangle area;
    Colour fill = 0;
};

constexpr std::array<Strip, 5> strips{{
    {titleStrip, black},
    {statusStrip, black},
    {optionArea, lightBlue},
    {parkingStrip, black},
    {messageLine, green},
}};

constexpr std::array<int, 4> whiteLinesY{28, 113, 392, 449};

void paintTitle(Painter& painter) {
    constexpr int y = 7;
    drawText(painter, fmt::format("Version {}", versionText(thisVersion)), 3, y, green);
    drawText(painter, programName, 390, y, green);
    drawText(painter, copyrightText, 632, y, green);
}

void paintMessageLine(Painter& painter) {
    constexpr int x = 3;
    constexpr int y = 455;
    const std::string error = shownError();
    if (!error.empty()) {
        painter.fill(messageLine, red);
        drawText(painter, error, x, y, yellow);
    } else if (const std::string message = shownMessage(); !message.empty()) {
        drawText(painter, message, x, y, yellow);
    }
}

} // namespace

void paintWindow(Painter& painter) {
    if (takeInstallPathRequest()) {
        window_system::enableControl(ALL_INSTALL_PATH.controlId, true);
    }
    for (const Strip& strip : strips) {
        painter.fill(strip.area, strip.fill);
    }
    for (const int y : whiteLinesY) {
        painter.line(0, y, clientWidth, y, white);
    }
    paintTitle(painter);
    paintStatusStrip(painter);
    paintLabels(painter);
    paintMessageLine(painter);
}

void repaintMessageLine() {
    window_system::invalidate(messageLine);
}
