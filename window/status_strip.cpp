// window/status_strip.cpp
#include "window/status_strip.h"

#include <string>

#include <fmt/format.h>

#include "core/run_flags.h"
#include "window/painted_text.h"
#include "window/window_layout.h"
#include "window/window_state.h"

using window_system::Colour;
using window_system::Painter;
using window_system::Rectangle;

namespace {

constexpr Rectangle simulatorLamp{397, 30, 426, 113};
constexpr Rectangle realTrafficLamp{425, 30, 454, 113};
constexpr int lampDividerX = 425;
constexpr Rectangle rightOfSimulatorLamp{426, 30, clientWidth, 112};

constexpr int firstRowY = 35;
constexpr int secondRowY = 63;
constexpr int thirdRowY = 91;

constexpr int simulatorTextX = 5;
constexpr int realTrafficTextX = 458;
constexpr int countsX = 642;
constexpr int liveriesX = 5;
constexpr int simAddonX = 141;
constexpr int thirdPartyX = 278;

Colour simulatorColour(const SimLampText& text) {
    if (!gWindowState.simConnected) {
        return red;
    }
    return gWindowState.simFlightRunning && !text.userAirport.empty() ? green : yellow;
}

/// The same green on a green lamp could not be read.
Colour captionColour(Colour lamp) {
    return lamp == red || lamp == black ? green : black;
}

std::string simulatorLine(const SimLampText& text) {
    std::string line = text.simulator;
    if (!text.userTitle.empty()) {
        line += fmt::format(" {}", text.userTitle);
    }
    if (!text.userStand.empty()) {
        line += fmt::format(", user stand {}", text.userStand);
    }
    return line;
}

void paintSimulator(Painter& painter) {
    const SimLampText text = simLampText();
    const Colour lamp = simulatorColour(text);
    if (gWindowState.simConnected) {
        drawText(painter, simulatorLine(text), simulatorTextX, firstRowY, green);
        drawText(painter, text.userAirport, simulatorTextX, secondRowY, lamp);
    }
    // Over the end of a long title.
    painter.fill(simulatorLamp, lamp);
    drawText(painter, "Sim", 398, secondRowY, captionColour(lamp));
}

void paintLiveries(Painter& painter) {
    const int count = gWindowState.liveries;
    const std::string text = count > 0 ? fmt::format("# liveries: {}", count) : "# liveries: ...";
    drawText(painter, text, liveriesX, thirdRowY, count > 0 ? green : red);
}

void paintAirports(Painter& painter, const char* kind, int count, int x) {
    const std::string text = count < 0 ? fmt::format("# {}: ...", kind) : fmt::format("# {}: {}", kind, count);
    drawText(painter, text, x, thirdRowY, count < 0 ? yellow : green);
}

void paintCounts(Painter& painter) {
    paintLiveries(painter);
    paintAirports(painter, "simaddon", gWindowState.simAddonAirports, simAddonX);
    paintAirports(painter, "thirdp", gWindowState.thirdPartyAirports, thirdPartyX);
}

Colour realTrafficColour() {
    if (gWindowState.realTrafficLit) {
        return gWindowState.trafficLamp == FeedLamp::flowing ? green : yellow;
    }
    return gWindowState.realTrafficWaiting && gBeforeFirstConnect ? black : red;
}

void paintFeed(Painter& painter, const char* name, FeedLamp lamp, int y) {
    if (lamp != FeedLamp::notRunning) {
        drawText(painter, name, realTrafficTextX, y, lamp == FeedLamp::flowing ? green : yellow);
    }
}

void paintPressure(Painter& painter) {
    const int qnh = gWindowState.qnh;
    if (gWindowState.weatherLamp != FeedLamp::notRunning && qnh >= 1) {
        drawText(painter, fmt::format("qnh: {:4}", qnh), countsX, secondRowY, green);
    }
}

void paintLiveCount(Painter& painter) {
    if (gWindowState.weatherLamp != FeedLamp::notRunning) {
        drawText(painter, fmt::format("live: {:3}", gWindowState.liveAircraft.load()), countsX, thirdRowY, green);
    }
}

void paintRealTraffic(Painter& painter) {
    const Colour lamp = realTrafficColour();
    painter.fill(realTrafficLamp, lamp);
    drawText(painter, "RT", 430, secondRowY, captionColour(lamp));
    if (!gWindowState.realTrafficLit) {
        return;
    }
    drawText(painter, realTrafficEdition(), realTrafficTextX, firstRowY, green);
    paintFeed(painter, "Weather", gWindowState.weatherLamp, secondRowY);
    paintFeed(painter, "Traffic", gWindowState.trafficLamp, thirdRowY);
    paintPressure(painter);
    paintLiveCount(painter);
}

} // namespace

void paintStatusStrip(Painter& painter) {
    paintSimulator(painter);
    paintCounts(painter);
    painter.fill(rightOfSimulatorLamp, black);
    paintRealTraffic(painter);
    painter.line(lampDividerX, 29, lampDividerX, 112, black);
}
