#include "liveries/flat_text_table.h"

#include <map>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::Pair;

namespace {

struct OneForAll {
    std::uint64_t operator()(std::string_view) const { return 0x12345678'00000007; }
};

class FlatTable : public testing::Test {
protected:
    std::pmr::monotonic_buffer_resource memory;
    FlatTextTable<int> table{&memory};
};

TEST_F(FlatTable, holdsNothingAtFirst) {
    EXPECT_TRUE(table.empty());
    EXPECT_EQ(table.find("KLM"), table.end());
    EXPECT_FALSE(table.contains(""));
    EXPECT_THROW(table.at("KLM"), std::out_of_range);
}

TEST_F(FlatTable, keepsTheFirstValueOfAKeyAndTheOrderOfInsertion) {
    EXPECT_TRUE(table.try_emplace("KLM", 1).second);
    EXPECT_TRUE(table.try_emplace("", 2).second);
    const auto [entry, isNew] = table.try_emplace("KLM", 3);
    EXPECT_FALSE(isNew);
    EXPECT_EQ(entry->second, 1);
    table["DLH"] = 4;
    table[""] = 5;
    EXPECT_THAT(table, ElementsAre(Pair("KLM", 1), Pair("", 5), Pair("DLH", 4)));
}

TEST_F(FlatTable, copiesItsKeysUnlessToldThatTheyStay) {
    std::string text = "KLM";
    const std::string staying = "DLH";
    table.try_emplace(text, 1);
    table.try_emplace_view(staying, 2);
    text = "XXX";
    EXPECT_TRUE(table.contains("KLM"));
    EXPECT_EQ(table.find("DLH")->first.data(), staying.data());
}

TEST_F(FlatTable, clearedItIsEmptyAndTakesNewKeys) {
    table["KLM"] = 1;
    table.clear();
    EXPECT_TRUE(table.empty());
    EXPECT_FALSE(table.contains("KLM"));
    table["DLH"] = 2;
    EXPECT_THAT(table, ElementsAre(Pair("DLH", 2)));
}

TEST_F(FlatTable, aRoomMadeLaterKeepsWhatIsThere) {
    table["KLM"] = 1;
    table.reserve(1000);
    EXPECT_EQ(table.at("KLM"), 1);
}

TEST_F(FlatTable, keysOfTheSameHashValueAreToldApart) {
    FlatTextTable<int, OneForAll> clashing(&memory);
    for (int i = 0; i < 100; ++i) {
        clashing[std::to_string(i)] = i;
    }
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(clashing.at(std::to_string(i)), i);
    }
    EXPECT_FALSE(clashing.contains("100"));
}

TEST_F(FlatTable, holdsWhatAnOrdinaryMapHolds) {
    std::mt19937 random(3);
    std::map<std::string, int> expected;
    std::vector<std::string> order;
    for (int i = 0; i < 20000; ++i) {
        const std::string key = std::to_string(random() % 9000);
        const bool isNew = expected.try_emplace(key, i).second;
        ASSERT_EQ(table.try_emplace(key, i).second, isNew) << key;
        if (isNew) {
            order.push_back(key);
        }
        const std::string other = std::to_string(random() % 9000);
        ASSERT_EQ(table.contains(other), expected.contains(other)) << other;
    }
    ASSERT_EQ(table.size(), order.size());
    std::size_t place = 0;
    for (const auto& [key, value] : table) {
        ASSERT_EQ(key, order[place++]);
        ASSERT_EQ(value, expected.at(std::string(key)));
    }
}

} // namespace
