#include "window/window_state.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "core/program_info.h"
#include "platform/posix/memory_window.h"
#include "tests/support/log_capture.h"
#include "window/status_display.h"
#include "window/window_layout.h"

namespace memory = window_system::memory;

namespace {

class Messages : public testing::Test {
protected:
    Messages() {
        resetWindowState();
        memory::reset();
        window_system::registerWindowClass("test", {nullptr, paintWindow, nullptr, nullptr});
        window_system::createWindow("test", 0, {0, 0, 880, 516});
    }
    ~Messages() override {
        memory::reset();
        resetWindowState();
    }

    static bool paints(const std::string& text, int x, int y, window_system::Colour colour) {
        memory::paintNow();
        const auto texts = memory::paintedTexts();
        return std::any_of(texts.begin(), texts.end(), [&](const memory::PaintedText& painted) {
            return painted.text == text && painted.x == x && painted.y == y && painted.colour == colour;
        });
    }

    static window_system::Colour messageFill() {
        memory::paintNow();
        window_system::Colour last = 0;
        for (const memory::PaintedFill& fill : memory::paintedFills()) {
            last = fill.area == messageLine ? fill.colour : last;
        }
        return last;
    }

    LogCapture log;
};

using MessageThreads = Messages;

TEST_F(Messages, aMessageIsPaintedInYellowOnGreen) {
    showMessage("Waiting", LogCopy::no);
    EXPECT_TRUE(paints("Waiting", 3, 455, yellow));
    EXPECT_EQ(messageFill(), green);
    EXPECT_FALSE(log.contains("Waiting"));
}

TEST_F(Messages, aMessageWithLogCopyStandsInTheLog) {
    showMessage("Waiting", LogCopy::yes);
    EXPECT_TRUE(log.contains("Waiting"));
}

TEST_F(Messages, aMessageDuringAnErrorIsDroppedButStillLogged) {
    showError("broken");
    showMessage("Waiting", LogCopy::yes);
    EXPECT_EQ(shownError(), "broken");
    EXPECT_EQ(shownMessage(), "");
    EXPECT_TRUE(paints("broken", 3, 455, yellow));
    EXPECT_EQ(messageFill(), red);
    EXPECT_TRUE(log.contains("Waiting"));
}

TEST_F(Messages, anErrorClearsTheMessageAndIsLogged) {
    showMessage("Waiting", LogCopy::no);
    showError("broken");
    EXPECT_EQ(shownMessage(), "");
    EXPECT_TRUE(log.contains("Error broken"));
    clearError();
    EXPECT_FALSE(paints("broken", 3, 455, yellow));
}

TEST_F(Messages, aMessageIsGoneAfter25Seconds) {
    showMessage("Waiting", LogCopy::no);
    for (int second = 1; second <= 24; ++second) {
        ageMessage();
    }
    EXPECT_EQ(shownMessage(), "Waiting");
    ageMessage();
    EXPECT_EQ(shownMessage(), "");
}

TEST_F(Messages, aNewMessageIsYoungAgain) {
    showMessage("first", LogCopy::no);
    for (int second = 1; second <= 24; ++second) {
        ageMessage();
    }
    showMessage("second", LogCopy::no);
    ageMessage();
    EXPECT_EQ(shownMessage(), "second");
}

TEST_F(Messages, theMessageOfAStepGivesWayToTheFormerOneWhenTheStepIsDone) {
    showMessage("before", LogCopy::no);
    {
        const StepMessage outer("outer step");
        EXPECT_EQ(shownMessage(), "outer step");
        {
            const StepMessage inner("inner step");
            EXPECT_EQ(shownMessage(), "inner step");
        }
        EXPECT_EQ(shownMessage(), "outer step");
    }
    EXPECT_EQ(shownMessage(), "before");
}

TEST_F(Messages, whatWasShownDuringAStepOutlastsIt) {
    {
        const StepMessage step("step");
        showMessage("found nothing", LogCopy::no);
    }
    EXPECT_EQ(shownMessage(), "found nothing");
    showError("failed");
    { const StepMessage step("step"); }
    EXPECT_EQ(shownMessage(), "");
    EXPECT_EQ(shownError(), "failed");
}

TEST_F(Messages, nothingIsPaintedWhenBothTextsAreEmpty) {
    clearMessage();
    memory::paintNow();
    const auto texts = memory::paintedTexts();
    EXPECT_TRUE(std::none_of(texts.begin(), texts.end(), [](const auto& text) { return text.y == 455; }));
    EXPECT_EQ(messageFill(), green);
}

TEST_F(Messages, theTitleStripHoldsVersionNameAndCopyright) {
    EXPECT_TRUE(paints("Version 11.10.8", 3, 7, green));
    EXPECT_TRUE(paints("Tarnwing_P3D", 390, 7, green));
    EXPECT_TRUE(paints(copyrightText, 632, 7, green));
}

TEST_F(Messages, theStripsAreFilledFromTopToBottom) {
    memory::paintNow();
    const auto fills = memory::paintedFills();
    ASSERT_GE(fills.size(), 5U);
    const window_system::Colour colours[] = {black, black, lightBlue, black, green};
    const int edges[] = {0, 28, 112, 392, 448, 476};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(fills[i].area, (window_system::Rectangle{0, edges[i], 880, edges[i + 1]})) << i;
        EXPECT_EQ(fills[i].colour, colours[i]) << i;
    }
}

TEST_F(Messages, whiteLinesPartTheStrips) {
    memory::paintNow();
    std::vector<int> heights;
    for (const memory::PaintedLine& line : memory::paintedLines()) {
        if (line.colour == white && line.fromY == line.toY && line.fromX == 0 && line.toX == 880) {
            heights.push_back(line.fromY);
        }
    }
    EXPECT_EQ(heights, (std::vector<int>{28, 113, 392, 449}));
}

TEST_F(Messages, aMessageRepaintsItsLineAlone) {
    memory::paintNow();
    repaintMessageLine();
    EXPECT_EQ(memory::invalidated(), (std::vector<window_system::Rectangle>{{0, 448, 880, 476}}));
}

TEST_F(Messages, withoutAWindowNothingWaitsToBeRepainted) {
    memory::reset();
    repaintMessageLine();
    repaintWindow();
    EXPECT_TRUE(memory::invalidated().empty());
}

TEST_F(Messages, aTextThatIsNoUtf8IsNotPaintedAndSaysSo) {
    showMessage("bad \xff", LogCopy::no);
    memory::paintNow();
    EXPECT_TRUE(log.contains("TextOut utf8  to wide failed for 'bad \xff': utf8_to_wide: invalid UTF-8"));
}

TEST_F(Messages, everyLampAndTextIsAsAtTheStartAfterAReset) {
    showError("broken");
    gWindowState.trafficLamp = FeedLamp::flowing;
    gWindowState.weatherAlive = false;
    gWindowState.realTrafficWaiting = false;
    gWindowState.qnh = 990;
    showSimConnected(true);
    showSimFlightRunning(true);
    showSimulatorName("Prepar3D");
    showUserTitle("Mooney");
    showUserStand("A12");
    resetWindowState();
    EXPECT_EQ(shownError(), "");
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::notRunning);
    EXPECT_EQ(gWindowState.weatherLamp, FeedLamp::notRunning);
    EXPECT_TRUE(gWindowState.weatherAlive);
    EXPECT_TRUE(gWindowState.realTrafficWaiting);
    EXPECT_EQ(gWindowState.qnh, 1013);
    EXPECT_FALSE(gWindowState.simConnected);
    EXPECT_FALSE(gWindowState.simFlightRunning);
    EXPECT_EQ(simLampText().simulator + simLampText().userTitle + simLampText().userStand, "");
}

TEST_F(Messages, theSimulatorsLampAndItsTextsRepaintOnlyWhenTheyChange) {
    const auto repaints = [] {
        const std::size_t count = memory::invalidated().size();
        memory::paintNow();
        return count;
    };
    repaints();
    showSimConnected(true);
    showSimFlightRunning(true);
    showSimulatorName("Prepar3D");
    showUserTitle("Mooney");
    showUserStand("A12");
    EXPECT_EQ(repaints(), 5U);
    EXPECT_EQ(simLampText().simulator, "Prepar3D");
    EXPECT_EQ(simLampText().userTitle, "Mooney");
    EXPECT_EQ(simLampText().userStand, "A12");
    showSimConnected(true);
    showSimFlightRunning(true);
    showSimulatorName("Prepar3D");
    showUserTitle("Mooney");
    showUserStand("A12");
    EXPECT_EQ(repaints(), 0U);
    showUserStand("");
    EXPECT_EQ(repaints(), 1U);
}

TEST_F(MessageThreads, writersAndThePainterDoNotMeet) {
    std::thread writer([] {
        for (int i = 0; i < 500; ++i) {
            showMessage("message " + std::to_string(i), LogCopy::no);
        }
    });
    std::thread failing([] {
        for (int i = 0; i < 500; ++i) {
            showError("error " + std::to_string(i));
            clearError();
        }
    });
    for (int i = 0; i < 100; ++i) {
        memory::paintNow();
    }
    writer.join();
    failing.join();
    EXPECT_EQ(shownError(), "");
}

} // namespace
