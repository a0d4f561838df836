#include "core/parameters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "core/injection_radius.h"
#include "platform/text_encoding.h"

using testing::ElementsAre;

namespace {

template <typename List>
std::vector<std::string> keysOf(const List& list) {
    std::vector<std::string> keys;
    for (const auto* parameter : list) {
        keys.push_back(parameter->key);
    }
    return keys;
}

class ParametersTest : public testing::Test {
protected:
    ParametersTest() { resetParameters(); }
    ~ParametersTest() override { resetParameters(); }
};

TEST_F(ParametersTest, theListsHoldEveryStoredSettingInItsOrder) {
    EXPECT_THAT(keysOf(plainBooleans()), ElementsAre("RANDOM"));
    EXPECT_THAT(keysOf(checkBoxes()),
                ElementsAre("AEROWINX", "COLLISION_USER_AIR", "COLLISION_USER_GND", "COLLISION_LIVE_PARKED_GND",
                            "ALWAYS_ON_TOP", "SCAN_LIVERIES", "LIG_PRIORITIZE", "AIRBORNE_ONLY", "SCAN_AIRPORTS",
                            "LIGHT_AIRCRAFT", "HELICOPTERS", "HIGH_PERF_AIRCRAFT", "NAV_LIGHTS_WHILE_PARKED",
                            "AUTO_RANGE", "STRAIGHT_PBS_ONLY", "PARK_SOFT", "WEEK", "INITIAL_LOAD_ONLY",
                            "GUID_CHANGES"));
    EXPECT_THAT(keysOf(plainIntegers()), ElementsAre("CUSTOM_PARKING_PERCENTAGE", "MAIN_WINDOW_X", "MAIN_WINDOW_Y",
                                                     "AIRP_HEIGHT", "LAST_EPOCH_TIME:", "HOLDING_THRESHOLD_METERS",
                                                     "MAX_HOLDING_MINUTES", "MAX_FIT", "P3D_VERSION"));
    EXPECT_THAT(keysOf(comboIntegers()), ElementsAre("MATCHING_DEPTH", "RANGE", "AR_ABOVE_HEIGHT", "MAX_PARK_SEL",
                                                     "MAX_LIVE_SEL", "AIRP_RANGE", "AIRP_HEIGHT"));
    std::vector<std::string> strings{"PROGRAM_VERSION", "SIM_INSTALL_PATH", "PORT_NUMBER"};
    for (const char* folder : {"lfolder", "afolder"}) {
        for (int i = 0; i < 10; ++i) {
            strings.push_back(folder + std::to_string(i));
        }
    }
    for (const char* key : {"AIG_VERSION", "DBASE_VERSION", "AIRPORTS_VERSION", "LIV_SCAN_VERSION",
                            "ADDONS_SCAN_VERSION", "DESTINATION"}) {
        strings.emplace_back(key);
    }
    EXPECT_EQ(keysOf(plainStrings()), strings);
    EXPECT_THAT(keysOf(editStrings()), ElementsAre("BLOCK_CALLSIGN"));
}

TEST_F(ParametersTest, theSwitchesHaveTheirDefaults) {
    std::vector<std::string> on;
    for (const CheckBoxParameter* box : checkBoxes()) {
        EXPECT_EQ(box->value, box->defaultValue) << box->key;
        if (box->defaultValue) {
            on.push_back(box->key);
        }
    }
    EXPECT_THAT(on, ElementsAre("COLLISION_USER_AIR", "COLLISION_USER_GND", "SCAN_LIVERIES", "LIG_PRIORITIZE",
                                "SCAN_AIRPORTS", "LIGHT_AIRCRAFT", "HELICOPTERS", "HIGH_PERF_AIRCRAFT",
                                "NAV_LIGHTS_WHILE_PARKED", "AUTO_RANGE", "GUID_CHANGES"));
    EXPECT_TRUE(RANDOM.value);
    EXPECT_TRUE(AFG_AUTOMATIC.value);
}

TEST_F(ParametersTest, theNumbersHaveTheirDefaultsAndLimits) {
    struct Row {
        const IntParameter& parameter;
        int initial;
        int least;
        int most;
    };
    const Row rows[] = {
        {CUSTOM_PARKING_PERCENTAGE, -1, -1, 100},
        {MAIN_WINDOW_X, 400, -30000, 30000},
        {MAIN_WINDOW_Y, 20, -30000, 30000},
        {LAST_EPOCH_TIME, 0, 0, std::numeric_limits<int>::max()},
        {HOLDING_THRESHOLD_METERS, 250, 10, 4000},
        {MAX_HOLDING_MINUTES, 20, 1, 60},
        {MAX_FIT, 47, 0, 47},
        {P3D_VERSION, 5, 5, 6},
        {MATCHING_DEPTH, 4, 1, 4},
        {RANGE, 40, 2, 100},
        {AR_ABOVE_HEIGHT, 48000, 18000, 48000},
        {MAX_PARK_SEL, 500, 0, 500},
        {MAX_LIVE_SEL, 500, 0, 500},
        {AIRP_RANGE, 20, 5, 30},
        {AIRP_HEIGHT, 18000, 2000, 48000},
        {parking_percentage, 30, 0, 100},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.parameter.defaultValue, row.initial) << row.parameter.key;
        EXPECT_EQ(row.parameter.value, row.initial) << row.parameter.key;
        EXPECT_EQ(row.parameter.minimum, row.least) << row.parameter.key;
        EXPECT_EQ(row.parameter.maximum, row.most) << row.parameter.key;
    }
}

TEST_F(ParametersTest, theCombosHaveTheirChoices) {
    EXPECT_THAT(MATCHING_DEPTH.choices, ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(RANGE.choices, ElementsAre(2, 3, 4, 5, 6, 8, 10, 12, 14, 16, 18, 20, 25, 30, 35, 40, 50, 65, 80, 100));
    EXPECT_THAT(AR_ABOVE_HEIGHT.choices,
                ElementsAre(18000, 21000, 24000, 27000, 30000, 33000, 36000, 39000, 42000, 45000, 48000));
    EXPECT_THAT(MAX_PARK_SEL.choices, ElementsAre(0, 10, 25, 50, 75, 100, 500));
    EXPECT_THAT(MAX_LIVE_SEL.choices, ElementsAre(0, 10, 25, 50, 75, 100, 500));
    EXPECT_THAT(AIRP_RANGE.choices, ElementsAre(5, 10, 15, 20, 25, 30));
    EXPECT_THAT(AIRP_HEIGHT.choices,
                ElementsAre(2000, 4000, 6000, 8000, 10000, 12000, 14000, 16000, 18000, 36000, 48000));
    EXPECT_EQ(parking_percentage.choices.size(), 21U);
    for (int i = 0; i <= 20; ++i) {
        EXPECT_EQ(parking_percentage.choices.at(static_cast<std::size_t>(i)), 5 * i);
    }
    EXPECT_THAT(MAX_FIT_FL.choices,
                ElementsAre(0.5F, 1, 1.5F, 2, 2.5F, 3, 3.5F, 4, 4.5F, 5, 6, 7, 8, 9, 10, 12, 15, 18, 21, 24));
    EXPECT_EQ(MAX_FIT_FL.value, 24.0F);
    EXPECT_EQ(MAX_FIT_FL.minimum, 0.5F);
    EXPECT_EQ(MAX_FIT_FL.maximum, 24.0F);
}

TEST_F(ParametersTest, onlyThePortHasADefaultText) {
    for (const StringParameter* parameter : plainStrings()) {
        EXPECT_EQ(parameter->value(), parameter == &PORT_NUMBER ? "10747" : "") << parameter->key;
    }
    EXPECT_EQ(BLOCK_CALLSIGN.value(), "");
    EXPECT_EQ(ALL_INSTALL_PATH.value(), "");
    EXPECT_EQ(CALLSIGN_2_OBJECTID.value(), "");
}

TEST_F(ParametersTest, everyControlHasItsIdentifierAndPlace) {
    struct Row {
        const WindowControl& control;
        int id;
        int top;
    };
    const Row rows[] = {
        {ALL_INSTALL_PATH, 32788, 119},
        {SCAN_LIVERIES, 32798, 147},
        {LIG_PRIORITIZE, 32800, 147},
        {ALWAYS_ON_TOP, 32771, 147},
        {SCAN_AIRPORTS, 32802, 175},
        {NAV_LIGHTS_WHILE_PARKED, 32776, 175},
        {MATCHING_DEPTH, 32808, 203},
        {LIGHT_AIRCRAFT, 32809, 203},
        {HELICOPTERS, 32810, 203},
        {HIGH_PERF_AIRCRAFT, 32811, 203},
        {AEROWINX, 32774, 203},
        {GUID_CHANGES, 32773, 203},
        {RANGE, 32818, 231},
        {AUTO_RANGE, 32819, 231},
        {AR_ABOVE_HEIGHT, 32820, 231},
        {AIRBORNE_ONLY, 32821, 231},
        {BLOCK_CALLSIGN, 32828, 259},
        {CALLSIGN_2_OBJECTID, 32831, 259},
        {COLLISION_USER_GND, 32834, 287},
        {COLLISION_USER_AIR, 32833, 287},
        {MAX_PARK_SEL, 32848, 315},
        {COLLISION_LIVE_PARKED_GND, 32835, 287},
        {MAX_LIVE_SEL, 32849, 315},
        {STRAIGHT_PBS_ONLY, 32855, 315},
        {DESTINATION, 32839, 343},
        {AIRP_RANGE, 32840, 343},
        {AIRP_HEIGHT, 32841, 343},
        {INITIAL_LOAD_ONLY, 32851, 371},
        {WEEK, 32853, 371},
        {PARK_SOFT, 32852, 371},
        {parking_percentage, 32850, 371},
        {MAX_FIT_FL, 32854, 371},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.control.controlId, row.id);
        EXPECT_EQ(row.control.top, row.top) << row.id;
    }
}

TEST_F(ParametersTest, halfAnHourOfFitIsStoredAsZeroAndAWholeDayAs47) {
    EXPECT_EQ(maxFitFromHours(0.5F), 0);
    EXPECT_EQ(maxFitFromHours(24), 47);
    EXPECT_EQ(hoursFromMaxFit(0), 0.5F);
    EXPECT_EQ(hoursFromMaxFit(47), 24.0F);
}

TEST_F(ParametersTest, everyChoiceOfFitSurvivesItsStoredForm) {
    for (const float hours : MAX_FIT_FL.choices) {
        EXPECT_EQ(hoursFromMaxFit(maxFitFromHours(hours)), hours);
    }
}

TEST_F(ParametersTest, whatXmlCannotHoldBecomesAQuestionMark) {
    using namespace std::string_literals;
    const std::pair<std::string, std::string> cases[] = {
        {"C:\\Sim & <Co> \"1\" '2'", "C:\\Sim & <Co> \"1\" '2'"},
        {"Z\xC3\xBCrich \xF0\x9F\x9B\xA9", "Z\xC3\xBCrich \xF0\x9F\x9B\xA9"},
        {"a\x01z"s, "a?z"},
        {"a\0z"s, "a?z"},
        {"two\r\nlines\t", "two??lines?"},
        {"caf\xE9", "caf?"},
        {"\xED\xA0\x80", "???"},
        {"\xEF\xBF\xBE|\xEF\xBF\xBF", "???|???"},
    };
    for (const auto& [text, kept] : cases) {
        DESTINATION.setValue(text);
        EXPECT_EQ(DESTINATION.value(), kept);
    }
}

TEST_F(ParametersTest, anyBytesBecomeValidTextWithoutControlCharacters) {
    std::mt19937 random(5);
    std::uniform_int_distribution<int> byte(0, 255);
    std::uniform_int_distribution<std::size_t> length(0, 40);
    for (int i = 0; i < 2000; ++i) {
        std::string text(length(random), ' ');
        for (char& c : text) {
            c = static_cast<char>(byte(random));
        }
        DESTINATION.setValue(text);
        const std::string kept = DESTINATION.value();
        EXPECT_EQ(kept.size(), text.size());
        EXPECT_TRUE(platform::isValidUtf8(kept));
        EXPECT_TRUE(std::none_of(kept.begin(), kept.end(), [](unsigned char c) { return c < ' '; }));
    }
}

TEST_F(ParametersTest, aResetBringsEverySettingBackToItsDefault) {
    RANDOM.value = false;
    AFG_AUTOMATIC.value = false;
    AEROWINX.value = true;
    MAX_HOLDING_MINUTES.value = 3;
    RANGE.value = 2;
    parking_percentage.value = 95;
    MAX_FIT_FL.value = 1;
    PORT_NUMBER.setValue("1");
    afolder[9].setValue("x");
    for (StringParameter* text : std::initializer_list<StringParameter*>{&BLOCK_CALLSIGN, &ALL_INSTALL_PATH,
                                                                         &CALLSIGN_2_OBJECTID, &DESTINATION}) {
        text->setValue("x");
    }
    resetParameters();
    EXPECT_TRUE(RANDOM.value);
    EXPECT_TRUE(AFG_AUTOMATIC.value);
    EXPECT_FALSE(AEROWINX.value);
    EXPECT_EQ(MAX_HOLDING_MINUTES.value, 20);
    EXPECT_EQ(RANGE.value, 40);
    EXPECT_EQ(parking_percentage.value, 30);
    EXPECT_EQ(MAX_FIT_FL.value, 24.0F);
    EXPECT_EQ(PORT_NUMBER.value(), "10747");
    for (const StringParameter* text : std::initializer_list<const StringParameter*>{
             &BLOCK_CALLSIGN, &ALL_INSTALL_PATH, &CALLSIGN_2_OBJECTID, &DESTINATION, &afolder[9]}) {
        EXPECT_EQ(text->value(), "") << text->key;
    }
}

TEST_F(ParametersTest, theRadiusIsKeptInMilesAndMetresWithinTheLimitsOfRange) {
    gf_setInjectionRadius(35);
    EXPECT_EQ(gRadiusNm, 35.0);
    EXPECT_EQ(gRadiusMeters, 35.0 * 1852);
    gf_setInjectionRadius(1000);
    EXPECT_EQ(gRadiusNm, 100.0);
    EXPECT_EQ(gRadiusMeters, 185200.0);
    gf_setInjectionRadius(-1);
    EXPECT_EQ(gRadiusNm, 2.0);
    EXPECT_EQ(RANGE.value, 40) << "the chosen range stays";
    gf_setInjectionRadius(40);
}

TEST(ParameterThreads, aTextIsReadWholeWhileAnotherThreadChangesIt) {
    const std::string shortText = "x";
    const std::string longText(1000, 'y');
    DESTINATION.setValue(shortText);
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        for (int i = 0; i < 5000; ++i) {
            DESTINATION.setValue(i % 2 == 0 ? longText : shortText);
        }
        stop = true;
    });
    do {
        const std::string seen = DESTINATION.value();
        EXPECT_TRUE(seen == shortText || seen == longText) << seen;
    } while (!stop);
    writer.join();
    resetParameters();
}

} // namespace
