#include "rig/traffic/hold_out.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

#include <fmt/format.h>

#include "tests/support/traffic_line_builder.h"

using ::testing::IsEmpty;

namespace rig {
namespace {

std::string lineOf(int aircraft, double seconds) {
    TrafficLineBuilder line;
    line.with(traffic_field::hexid, std::to_string(20000 + aircraft));
    line.with(traffic_field::timestamp, fmt::format("{:.1f}", 5000 + seconds));
    return line.line();
}

/// Ten aircraft, each telling a sample a second, in a weather of its own.
Recording manyRows() {
    std::string text;
    for (int second = 0; second < 100; ++second) {
        for (int aircraft = 0; aircraft < 10; ++aircraft) {
            text += lineOf(aircraft, second) + '\n';
        }
        text += fmt::format("{{\"QNH\": {}}}\n", 1000 + second % 10);
    }
    return recordingFrom(text);
}

std::size_t weatherRows(const Recording& recording) {
    return static_cast<std::size_t>(
        std::count_if(recording.rows.begin(), recording.rows.end(),
                      [](const RecordedRow& row) { return row.kind == DatagramKind::weather; }));
}

TEST(HoldOutOfARecording, takesAboutTheShareOfTheLinesAndNoWeather) {
    const Recording recording = manyRows();
    const HoldOut parts = holdOut(recording, 0.2, 1);
    EXPECT_NEAR(static_cast<double>(parts.heldOut.rows.size()), 200, 40);
    EXPECT_EQ(parts.given.rows.size() + parts.heldOut.rows.size(), recording.rows.size());
    EXPECT_EQ(weatherRows(parts.given), 100u);
    std::set<std::string> held;
    for (const RecordedRow& row : parts.heldOut.rows) {
        held.insert(row.text);
    }
    for (const RecordedRow& row : parts.given.rows) {
        EXPECT_FALSE(held.contains(row.text)) << row.text;
    }
}

TEST(HoldOutOfARecording, theSeedDecides) {
    const Recording recording = manyRows();
    const std::string first = textOf(holdOut(recording, 0.2, 1).heldOut);
    EXPECT_EQ(textOf(holdOut(recording, 0.2, 1).heldOut), first);
    EXPECT_NE(textOf(holdOut(recording, 0.2, 2).heldOut), first);
}

TEST(HoldOutOfARecording, noShareTakesNothingAndAllOfThemLeaveTheFirstRow) {
    const Recording recording = manyRows();
    EXPECT_THAT(holdOut(recording, 0, 1).heldOut.rows, IsEmpty());
    const HoldOut all = holdOut(recording, 1, 1);
    EXPECT_EQ(all.given.rows.size(), 1 + 100u);
    EXPECT_EQ(all.given.begin(), recording.begin());
}

/// Some feeds tell each sample twice, and the second one would give the first away.
TEST(HoldOutOfARecording, whatIsToldTwiceIsHeldOutTwice) {
    std::string text;
    for (int second = 0; second < 200; ++second) {
        text += lineOf(0, second) + '\n' + lineOf(1, second) + '\n' + lineOf(0, second) + '\n';
    }
    std::multiset<std::string> held;
    for (const RecordedRow& row : holdOut(recordingFrom(text), 0.3, 1).heldOut.rows) {
        held.insert(row.text);
    }
    std::size_t twice = 0;
    for (int second = 1; second < 200; ++second) {
        const std::size_t count = held.count(lineOf(0, second));
        EXPECT_NE(count, 1u) << second;
        twice += count / 2;
    }
    EXPECT_NEAR(static_cast<double>(twice), 60, 20);
}

TEST(HoldOutOfARecording, itsRowsAreDueAsInTheWhole) {
    // The second line of aircraft 1 comes three seconds late, behind one of aircraft 0 that is newer.
    const Recording whole = recordingFrom(lineOf(0, 0) + '\n' + lineOf(1, 1) + '\n' + lineOf(0, 8) + '\n' +
                                          lineOf(1, 5) + '\n' + lineOf(1, 10) + '\n');
    Recording part = recordingFrom(lineOf(1, 5) + '\n' + lineOf(1, 10) + '\n' + lineOf(1, 20) + '\n');
    EXPECT_EQ(part.rows[0].due, 5005);
    takeDueTimes(part, whole);
    EXPECT_EQ(part.rows[0].due, 5008);
    EXPECT_EQ(part.rows[1].due, 5010);
    EXPECT_EQ(part.rows[2].due, 5020);
}

TEST(HoldOutOfARecording, itsTextIsThatOfTheRows) {
    const std::string text = lineOf(0, 0) + "\n{\"QNH\": 1000}\n" + lineOf(1, 1) + '\n';
    EXPECT_EQ(textOf(recordingFrom(text)), text);
}

} // namespace
} // namespace rig
