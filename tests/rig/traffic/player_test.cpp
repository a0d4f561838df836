// tests/rig/traffic/player_test.cpp
#include "rig/traffic/player.h"

#include <algorithm>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

namespace rig {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr double present = 2000000;
constexpr double recordedBegin = 1000;
constexpr int manyLines = 5000;

std::string lineOf(int number, double time, double lat = 52) {
    return fmt::format("RTTFC,{},{:.5f},4.70000,,,,,,,,,,,{:.1f},X2", number, lat, time);
}

/// Lines number 0, 1, 2 ... at one a second.
Recording everySecond(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += lineOf(i, recordedBegin + i) + "\n";
    }
    return recordingFrom(text);
}

int numberOf(const Datagram& datagram) {
    return std::stoi(datagram.text.substr(6));
}

std::vector<int> numbers(const std::vector<Datagram>& datagrams) {
    std::vector<int> result;
    for (const Datagram& datagram : datagrams) {
        result.push_back(numberOf(datagram));
    }
    return result;
}

std::vector<int> playAll(const Recording& recording, const PlayerOptions& options, double step = 1) {
    Player player(recording, options, present);
    std::vector<int> all;
    for (double elapsed = 0; !player.isOver(); elapsed += step) {
        const std::vector<int> now = numbers(player.advanceTo(elapsed));
        all.insert(all.end(), now.begin(), now.end());
    }
    return all;
}

TEST(Player, linesComeAtTheirRecordedPace) {
    const Recording recording = everySecond(5);
    Player player(recording, {}, present);
    EXPECT_THAT(numbers(player.advanceTo(0)), ElementsAre(0));
    EXPECT_THAT(numbers(player.advanceTo(0.9)), IsEmpty());
    EXPECT_THAT(numbers(player.advanceTo(2.5)), ElementsAre(1, 2));
    EXPECT_FALSE(player.isOver());
    EXPECT_THAT(numbers(player.advanceTo(100)), ElementsAre(3, 4));
    EXPECT_TRUE(player.isOver());
}

TEST(Player, theTimeStampsAreMovedToThePresent) {
    const Recording recording = everySecond(2);
    Player player(recording, {}, present);
    EXPECT_THAT(player.advanceTo(1), ElementsAre(Datagram{DatagramKind::traffic, lineOf(0, present)},
                                                 Datagram{DatagramKind::traffic, lineOf(1, present + 1)}));
}

TEST(Player, historicTimeStampsStayWhatTheyAre) {
    const Recording recording = everySecond(1);
    PlayerOptions options;
    options.historic = true;
    Player player(recording, options, present);
    EXPECT_EQ(player.advanceTo(0).at(0).text, lineOf(0, recordedBegin));
}

TEST(Player, withAnOffsetTheFirstRowOfTheRestIsOfThePresent) {
    const Recording recording = everySecond(10);
    PlayerOptions options;
    options.offsetSeconds = 4;
    Player player(recording, options, present);
    EXPECT_THAT(player.advanceTo(0), ElementsAre(Datagram{DatagramKind::traffic, lineOf(4, present)}));
    EXPECT_THAT(numbers(player.advanceTo(1)), ElementsAre(5));
}

TEST(Player, anOffsetBeyondTheEndLeavesNothing) {
    const Recording recording = everySecond(3);
    PlayerOptions options;
    options.offsetSeconds = 100;
    options.loops = 3;
    Player player(recording, options, present);
    EXPECT_TRUE(player.isOver());
    EXPECT_THAT(player.advanceTo(1000), IsEmpty());
}

TEST(Player, speedShortensTheWaits) {
    const Recording recording = everySecond(5);
    PlayerOptions options;
    options.speed = 4;
    Player player(recording, options, present);
    EXPECT_THAT(numbers(player.advanceTo(0.5)), ElementsAre(0, 1, 2));
}

TEST(Player, eachLoopGoesOnInTimeWhereTheOneBeforeHasEnded) {
    const Recording recording = everySecond(3);
    PlayerOptions options;
    options.loops = 3;
    Player player(recording, options, present);
    const double loop = player.loopSeconds();
    EXPECT_GT(loop, 2);
    EXPECT_THAT(numbers(player.advanceTo(loop - 0.1)), ElementsAre(0, 1, 2));
    const std::vector<Datagram> second = player.advanceTo(loop);
    EXPECT_THAT(second, ElementsAre(Datagram{DatagramKind::traffic, lineOf(0, present + loop)}));
    EXPECT_THAT(player.advanceTo(10 * loop), SizeIs(5));
    EXPECT_TRUE(player.isOver());
    EXPECT_EQ(player.counts().sentLines, 9u);
}

TEST(Player, weatherGoesItsOwnWayUnharmed) {
    const Recording recording = recordingFrom("{\"QNH\": 1020}\n" + lineOf(1, 10));
    PlayerOptions options;
    options.loss = 1;
    options.radiusNm = 5;
    Player player(recording, options, present);
    EXPECT_THAT(player.advanceTo(0), ElementsAre(Datagram{DatagramKind::weather, "{\"QNH\": 1020}"}));
    EXPECT_EQ(player.counts().sentWeather, 1u);
}

TEST(Player, withARadiusOnlyLinesRoundTheToldPositionAreSent) {
    const Recording recording = recordingFrom(lineOf(1, 10, 52) + "\n" + lineOf(2, 11, 52.1) + "\n" +
                                              lineOf(3, 12, 53) + "\n" + lineOf(4, 13, 52));
    PlayerOptions options;
    options.radiusNm = 10;
    Player player(recording, options, present);
    EXPECT_THAT(player.advanceTo(0), IsEmpty()) << "no position was told";
    player.tellPosition({52, 4.7});
    EXPECT_THAT(numbers(player.advanceTo(2)), ElementsAre(2));
    player.tellPosition({-52, 4.7});
    EXPECT_THAT(player.advanceTo(3), IsEmpty());
    EXPECT_EQ(player.counts().beyondRadius, 3u);
    EXPECT_EQ(player.counts().lines, 4u);
}

/// The share of a recording of many lines that is counted, and whether it is near the rate.
void expectShare(std::size_t count, double rate) {
    EXPECT_NEAR(static_cast<double>(count) / manyLines, rate, 0.03);
}

TEST(Player, losesTheGivenShare) {
    const Recording recording = everySecond(manyLines);
    PlayerOptions options;
    options.loss = 0.3;
    Player player(recording, options, present);
    const auto sent = numbers(player.advanceTo(manyLines));
    expectShare(player.counts().lost, 0.3);
    EXPECT_EQ(sent.size() + player.counts().lost, static_cast<std::size_t>(manyLines));
    EXPECT_TRUE(std::is_sorted(sent.begin(), sent.end()));
}

TEST(Player, repeatsTheGivenShareAtOnce) {
    const Recording recording = everySecond(manyLines);
    PlayerOptions options;
    options.repeat = 0.2;
    Player player(recording, options, present);
    const auto sent = numbers(player.advanceTo(manyLines));
    expectShare(player.counts().repeated, 0.2);
    EXPECT_EQ(sent.size(), manyLines + player.counts().repeated);
    EXPECT_TRUE(std::is_sorted(sent.begin(), sent.end())) << "the second comes right behind the first";
}

TEST(Player, aLateLineComesOneToThirtySecondsLater) {
    const Recording recording = everySecond(manyLines);
    PlayerOptions options;
    options.late = 0.1;
    Player player(recording, options, present);
    std::map<int, double> cameAt;
    std::size_t late = 0;
    for (double elapsed = 0; !player.isOver(); elapsed += 0.5) {
        for (const int number : numbers(player.advanceTo(elapsed))) {
            cameAt[number] = elapsed;
            late += elapsed > number ? 1 : 0;
            EXPECT_TRUE(elapsed == number || (elapsed >= number + 1 && elapsed <= number + 30.5)) << number;
        }
    }
    EXPECT_THAT(cameAt, SizeIs(manyLines));
    EXPECT_EQ(late, player.counts().late);
    expectShare(late, 0.1);
}

TEST(Player, aLineOutOfOrderComesBehindTheNextOne) {
    const Recording recording = everySecond(manyLines);
    PlayerOptions options;
    options.outOfOrder = 0.2;
    Player player(recording, options, present);
    const auto sent = numbers(player.advanceTo(manyLines));
    std::size_t swapped = 0;
    for (std::size_t i = 0; i < sent.size(); ++i) {
        EXPECT_LE(std::abs(sent[i] - static_cast<int>(i)), 1);
        swapped += sent[i] < static_cast<int>(i) ? 1 : 0;
    }
    EXPECT_THAT(sent, SizeIs(manyLines));
    EXPECT_NEAR(static_cast<double>(swapped), static_cast<double>(player.counts().outOfOrder), 1);
    EXPECT_GT(swapped, manyLines / 10u);
}

TEST(Player, theLastLineOfAllIsNotHeldBackForEver) {
    const Recording recording = everySecond(1);
    PlayerOptions options;
    options.outOfOrder = 1;
    EXPECT_THAT(playAll(recording, options), ElementsAre(0));
}

TEST(Player, everyLineIsSentLostOrBeyondWhateverIsAskedFor) {
    const Recording recording = everySecond(manyLines);
    PlayerOptions options;
    options.loss = 0.1;
    options.repeat = 0.1;
    options.late = 0.1;
    options.outOfOrder = 0.1;
    Player player(recording, options, present);
    player.advanceTo(manyLines + 100.0);
    EXPECT_TRUE(player.isOver());
    const PlayerCounts& counts = player.counts();
    EXPECT_EQ(counts.lines, static_cast<std::size_t>(manyLines));
    EXPECT_EQ(counts.sentLines, counts.lines - counts.lost + counts.repeated);
}

TEST(Player, theSameSeedGivesTheSameWhateverTheSteps) {
    const Recording recording = everySecond(500);
    PlayerOptions options;
    options.loss = 0.1;
    options.repeat = 0.1;
    options.late = 0.1;
    options.outOfOrder = 0.1;
    options.seed = 7;
    const std::vector<int> first = playAll(recording, options, 1);
    EXPECT_EQ(playAll(recording, options, 0.37), first);
    EXPECT_EQ(playAll(recording, options, 60), first);
    options.seed = 8;
    EXPECT_NE(playAll(recording, options, 1), first);
}

} // namespace
} // namespace rig
