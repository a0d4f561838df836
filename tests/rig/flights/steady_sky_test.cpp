#include "rig/flights/steady_sky.h"

#include <gmock/gmock.h>

#include <map>
#include <set>

#include "rig/traffic/recording.h"

namespace rig {
namespace {

constexpr double begin = 1780315200;

struct Seen {
    double first = 0;
    double last = 0;
};

/// By hexid.
std::map<std::string, Seen> aircraftOf(const std::vector<std::string>& rows) {
    std::map<std::string, Seen> seen;
    for (const std::string& row : rows) {
        if (row.front() == '{') {
            continue;
        }
        const std::size_t comma = row.find(',') + 1;
        const double time = *timestampOf(row);
        Seen& aircraft =
            seen.try_emplace(row.substr(comma, row.find(',', comma) - comma), Seen{time, time}).first->second;
        aircraft.last = time;
    }
    return seen;
}

TEST(SteadySky, thereAreAsManyAircraftAtAnyTime) {
    SteadySky sky(20, begin, Fidelity::exact, 1);
    const std::map<std::string, Seen> seen = aircraftOf(sky.rowsUntil(begin + 1800));
    EXPECT_EQ(seen.size(), sky.aircraft());
    EXPECT_GT(seen.size(), 40u);
    for (const double time : {10.0, 600.0, 1200.0, 1790.0}) {
        int present = 0;
        for (const auto& [hexid, aircraft] : seen) {
            present += aircraft.first <= begin + time + 10 && aircraft.last >= begin + time - 10 ? 1 : 0;
        }
        EXPECT_GE(present, 20) << time;
        EXPECT_LE(present, 24) << time;
    }
}

TEST(SteadySky, rowsComeOnceAndInTheOrderOfTheirTimes) {
    SteadySky sky(5, begin, Fidelity::network, 1);
    double latest = begin;
    std::set<std::string> rows;
    std::size_t count = 0;
    for (int step = 1; step <= 60; ++step) {
        for (const std::string& row : sky.rowsUntil(begin + step * 10)) {
            if (row.front() != '{') {
                EXPECT_GE(*timestampOf(row), latest);
                EXPECT_LE(*timestampOf(row), begin + step * 10);
                latest = *timestampOf(row);
                rows.insert(row);
                ++count;
            }
        }
    }
    EXPECT_GT(count, 200u);
    EXPECT_EQ(rows.size(), count);
}

TEST(SteadySky, theSameSeedGivesTheSameRows) {
    SteadySky first(4, begin, Fidelity::network, 5);
    SteadySky second(4, begin, Fidelity::network, 5);
    SteadySky other(4, begin, Fidelity::network, 6);
    const std::vector<std::string> rows = first.rowsUntil(begin + 300);
    EXPECT_EQ(second.rowsUntil(begin + 300), rows);
    EXPECT_NE(other.rowsUntil(begin + 300), rows);
}

TEST(SteadySky, oneThatIsClosedEmpties) {
    SteadySky sky(5, begin, Fidelity::exact, 1);
    sky.rowsUntil(begin + 100);
    EXPECT_FALSE(sky.isEmpty());
    sky.close();
    EXPECT_FALSE(sky.isEmpty());
    sky.rowsUntil(begin + 2000);
    EXPECT_TRUE(sky.isEmpty());
    EXPECT_EQ(sky.aircraft(), 5u);
}

TEST(SteadySky, anotherFirstNumberGivesOtherAircraft) {
    SteadySky first(3, begin, Fidelity::exact, 1);
    SteadySky second(3, begin, Fidelity::exact, 1, 1000);
    const std::map<std::string, Seen> some = aircraftOf(first.rowsUntil(begin + 20));
    for (const auto& [hexid, seen] : aircraftOf(second.rowsUntil(begin + 20))) {
        EXPECT_FALSE(some.contains(hexid));
    }
}

} // namespace
} // namespace rig
