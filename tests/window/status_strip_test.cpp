// tests/window/status_strip_test.cpp
#include "window/status_strip.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/run_flags.h"
#include "window/window_layout.h"
#include "window/window_state.h"

using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;
using window_system::Colour;
using window_system::Rectangle;

namespace {

struct Text {
    int x;
    int y;
    std::string text;
    Colour colour;
    friend bool operator==(const Text&, const Text&) = default;
};

std::ostream& operator<<(std::ostream& out, const Text& text) {
    return out << text.x << ' ' << text.y << " '" << text.text << "' " << text.colour;
}

class Picture : public window_system::Painter {
public:
    void fill(const Rectangle& area, Colour colour) override { fills.emplace_back(area, colour); }
    void line(int, int, int, int, Colour) override {}
    void text(int x, int y, std::string_view text, Colour colour) override {
        texts.push_back({x, y, std::string(text), colour});
    }

    /// Of the last fill that covers the point.
    Colour at(int x, int y) const {
        Colour found = white;
        for (const auto& [area, colour] : fills) {
            if (x >= area.left && x < area.right && y >= area.top && y < area.bottom) {
                found = colour;
            }
        }
        return found;
    }

    std::vector<std::pair<Rectangle, Colour>> fills;
    std::vector<Text> texts;
};

class StatusStrip : public testing::Test {
protected:
    StatusStrip() { reset(); }
    ~StatusStrip() override { reset(); }

    static void reset() {
        resetWindowState();
        gf_resetRunFlags();
    }

    static Picture painted() {
        Picture picture;
        paintStatusStrip(picture);
        return picture;
    }

    static Colour simulatorLamp() { return painted().at(410, 40); }
    static Colour realTrafficLamp() { return painted().at(440, 40); }
};

TEST_F(StatusStrip, theSimulatorsLampIsRedYellowOrGreen) {
    EXPECT_EQ(simulatorLamp(), red);
    showSimConnected(true);
    EXPECT_EQ(simulatorLamp(), yellow);
    showSimFlightRunning(true);
    EXPECT_EQ(simulatorLamp(), yellow) << "the user's airport is not known";
    showUserAirport("EHAM");
    EXPECT_EQ(simulatorLamp(), green);
    showSimFlightRunning(false);
    EXPECT_EQ(simulatorLamp(), yellow);
}

TEST_F(StatusStrip, aConnectedSimulatorIsNamedWithTheUsersAircraftAndStand) {
    showSimulatorName("Prepar3D v5");
    EXPECT_THAT(painted().texts, Not(Contains(Text{5, 35, "Prepar3D v5", green})));
    showSimConnected(true);
    EXPECT_THAT(painted().texts, Contains(Text{5, 35, "Prepar3D v5", green}));
    showUserTitle("Cessna 172");
    showUserStand("GATE B 17");
    EXPECT_THAT(painted().texts, Contains(Text{5, 35, "Prepar3D v5 Cessna 172, user stand GATE B 17", green}));
}

TEST_F(StatusStrip, theAirportLineHasTheColourOfTheLamp) {
    showSimConnected(true);
    showUserAirport("EHAM");
    EXPECT_THAT(painted().texts, Contains(Text{5, 63, "EHAM", yellow}));
    showSimFlightRunning(true);
    EXPECT_THAT(painted().texts, Contains(Text{5, 63, "EHAM", green}));
}

TEST_F(StatusStrip, theRealTrafficLampIsBlackRedYellowOrGreen) {
    EXPECT_EQ(realTrafficLamp(), black) << "waiting for the first connect of the run";
    gWindowState.realTrafficWaiting = false;
    EXPECT_EQ(realTrafficLamp(), red);
    gWindowState.realTrafficLit = true;
    EXPECT_EQ(realTrafficLamp(), yellow);
    gWindowState.trafficLamp = FeedLamp::noData;
    EXPECT_EQ(realTrafficLamp(), yellow);
    gWindowState.trafficLamp = FeedLamp::flowing;
    EXPECT_EQ(realTrafficLamp(), green);
}

TEST_F(StatusStrip, theFeedsAreNamedInTheColourOfTheirState) {
    gWindowState.realTrafficLit = true;
    EXPECT_THAT(painted().texts, Not(Contains(Text{458, 63, "Weather", green})));
    gWindowState.weatherLamp = FeedLamp::flowing;
    gWindowState.trafficLamp = FeedLamp::noData;
    showRealTrafficEdition("RT 10.0 edition: prof");
    EXPECT_THAT(painted().texts, IsSupersetOf({Text{458, 35, "RT 10.0 edition: prof", green},
                                               Text{458, 63, "Weather", green}, Text{458, 91, "Traffic", yellow}}));
}

TEST_F(StatusStrip, thePressureStandsThereWhileTheWeatherComesAndIsKnown) {
    gWindowState.realTrafficLit = true;
    EXPECT_THAT(painted().texts, Not(Contains(Text{642, 63, "qnh: 1013", green})));
    gWindowState.weatherLamp = FeedLamp::noData;
    EXPECT_THAT(painted().texts, Contains(Text{642, 63, "qnh: 1013", green}));
    gWindowState.qnh = 998;
    EXPECT_THAT(painted().texts, Contains(Text{642, 63, "qnh:  998", green}));
    gWindowState.qnh = 0;
    for (const Text& text : painted().texts) {
        EXPECT_EQ(text.text.find("qnh:"), std::string::npos);
    }
}

TEST_F(StatusStrip, withoutRealTrafficNothingStandsBesideItsLamp) {
    gWindowState.weatherLamp = FeedLamp::flowing;
    gWindowState.trafficLamp = FeedLamp::flowing;
    showRealTrafficEdition("RT 10.0 edition: prof");
    for (const Text& text : painted().texts) {
        EXPECT_LT(text.x, 458) << text.text;
    }
}

TEST_F(StatusStrip, theThirdLineCountsWhatIsThereAndSaysWhatIsNotYetKnown) {
    showLiveries(0);
    EXPECT_THAT(painted().texts,
                IsSupersetOf({Text{5, 91, "# liveries: ...", red}, Text{141, 91, "# simaddon: ...", yellow},
                              Text{278, 91, "# thirdp: ...", yellow}}));
    showLiveries(60000);
    showAddOnAirports(0, 12);
    EXPECT_THAT(painted().texts,
                IsSupersetOf({Text{5, 91, "# liveries: 60000", green}, Text{141, 91, "# simaddon: 0", green},
                              Text{278, 91, "# thirdp: 12", green}}));
    showLiveries(0);
}

TEST_F(StatusStrip, theLiveAircraftAreCountedBesideTheWeather) {
    gWindowState.realTrafficLit = true;
    showLiveAircraft(7);
    EXPECT_THAT(painted().texts, Not(Contains(Text{642, 91, "live:   7", green})));
    gWindowState.weatherLamp = FeedLamp::noData;
    EXPECT_THAT(painted().texts, Contains(Text{642, 91, "live:   7", green}));
}

TEST_F(StatusStrip, theCaptionsCanBeReadOnEachLamp) {
    EXPECT_THAT(painted().texts, IsSupersetOf({Text{398, 63, "Sim", green}, Text{430, 63, "RT", green}}));
    showSimConnected(true);
    showSimFlightRunning(true);
    showUserAirport("EHAM");
    EXPECT_THAT(painted().texts, Contains(Text{398, 63, "Sim", black}));
}

} // namespace
