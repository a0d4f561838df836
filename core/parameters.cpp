// core/parameters.cpp
#include "core/parameters.h"

#include <algorithm>
#include <cmath>

#include "platform/text_encoding.h"
#include "platform/window_system.h"

std::mutex gParameterMutex;

// The settings are a table.
// clang-format off
BoolParameter RANDOM       {"RANDOM",        true};
BoolParameter AFG_AUTOMATIC{"AFG_AUTOMATIC", true};

//                                          key                          default id     y
CheckBoxParameter AEROWINX                 {"AEROWINX",                  false,  32774, 203};
CheckBoxParameter COLLISION_USER_AIR       {"COLLISION_USER_AIR",        true,   32833, 287};
CheckBoxParameter COLLISION_USER_GND       {"COLLISION_USER_GND",        true,   32834, 287};
CheckBoxParameter COLLISION_LIVE_PARKED_GND{"COLLISION_LIVE_PARKED_GND", false,  32835, 287};
CheckBoxParameter ALWAYS_ON_TOP            {"ALWAYS_ON_TOP",             false,  32771, 147};
CheckBoxParameter SCAN_LIVERIES            {"SCAN_LIVERIES",             true,   32798, 147};
CheckBoxParameter LIG_PRIORITIZE           {"LIG_PRIORITIZE",            true,   32800, 147};
CheckBoxParameter AIRBORNE_ONLY            {"AIRBORNE_ONLY",             false,  32821, 231};
CheckBoxParameter SCAN_AIRPORTS            {"SCAN_AIRPORTS",             true,   32802, 175};
CheckBoxParameter LIGHT_AIRCRAFT           {"LIGHT_AIRCRAFT",            true,   32809, 203};
CheckBoxParameter HELICOPTERS              {"HELICOPTERS",               true,   32810, 203};
CheckBoxParameter HIGH_PERF_AIRCRAFT       {"HIGH_PERF_AIRCRAFT",        true,   32811, 203};
CheckBoxParameter NAV_LIGHTS_WHILE_PARKED  {"NAV_LIGHTS_WHILE_PARKED",   true,   32776, 175};
CheckBoxParameter AUTO_RANGE               {"AUTO_RANGE",                true,   32819, 231};
CheckBoxParameter STRAIGHT_PBS_ONLY        {"STRAIGHT_PBS_ONLY",         false,  32855, 315};
CheckBoxParameter PARK_SOFT                {"PARK_SOFT",                 false,  32852, 371};
CheckBoxParameter WEEK                     {"WEEK",                      false,  32853, 371};
CheckBoxParameter INITIAL_LOAD_ONLY        {"INITIAL_LOAD_ONLY",         false,  32851, 371};
CheckBoxParameter GUID_CHANGES             {"GUID_CHANGES",              true,   32773, 203};

//                                     key                          default least   most
IntParameter CUSTOM_PARKING_PERCENTAGE{"CUSTOM_PARKING_PERCENTAGE", -1,     -1,     100};
IntParameter MAIN_WINDOW_X            {"MAIN_WINDOW_X",             400,    -30000, 30000};
IntParameter MAIN_WINDOW_Y            {"MAIN_WINDOW_Y",             20,     -30000, 30000};
IntParameter LAST_EPOCH_TIME          {"LAST_EPOCH_TIME:",          0,      0,      2147483647};
IntParameter HOLDING_THRESHOLD_METERS {"HOLDING_THRESHOLD_METERS",  250,    10,     4000};
IntParameter MAX_HOLDING_MINUTES      {"MAX_HOLDING_MINUTES",       20,     1,      60};
IntParameter MAX_FIT                  {"MAX_FIT",                   47,     0,      47};
IntParameter P3D_VERSION              {"P3D_VERSION",               5,      5,      6};

//                                key                   default choices, id, y
ComboParameter MATCHING_DEPTH    {"MATCHING_DEPTH",     4,      {1, 2, 3, 4}, 32808, 203};
ComboParameter RANGE             {"RANGE",              40,     {2, 3, 4, 5, 6, 8, 10, 12, 14, 16, 18, 20, 25, 30, 35,
                                                                 40, 50, 65, 80, 100}, 32818, 231};
ComboParameter AR_ABOVE_HEIGHT   {"AR_ABOVE_HEIGHT",    48000,  {18000, 21000, 24000, 27000, 30000, 33000, 36000,
                                                                 39000, 42000, 45000, 48000}, 32820, 231};
ComboParameter MAX_PARK_SEL      {"MAX_PARK_SEL",       500,    {0, 10, 25, 50, 75, 100, 500}, 32848, 315};
ComboParameter MAX_LIVE_SEL      {"MAX_LIVE_SEL",       500,    {0, 10, 25, 50, 75, 100, 500}, 32849, 315};
ComboParameter AIRP_RANGE        {"AIRP_RANGE",         20,     {5, 10, 15, 20, 25, 30}, 32840, 343};
ComboParameter AIRP_HEIGHT       {"AIRP_HEIGHT",        18000,  {2000, 4000, 6000, 8000, 10000, 12000, 14000, 16000,
                                                                 18000, 36000, 48000}, 32841, 343};
ComboParameter parking_percentage{"parking_percentage", 30,     {0, 5, 10, 15, 20, 25, 30, 35, 40, 45, 50, 55, 60, 65,
                                                                 70, 75, 80, 85, 90, 95, 100}, 32850, 371};
FloatComboParameter MAX_FIT_FL   {"MAX_FIT_FL",         24,     {0.5F, 1, 1.5F, 2, 2.5F, 3, 3.5F, 4, 4.5F, 5, 6, 7, 8,
                                                                 9, 10, 12, 15, 18, 21, 24}, 32854, 371};

StringParameter PROGRAM_VERSION    {"PROGRAM_VERSION"};
StringParameter SIM_INSTALL_PATH   {"SIM_INSTALL_PATH"};
StringParameter PORT_NUMBER        {"PORT_NUMBER", "10747"};
std::array<StringParameter, 10> lfolder{{
    StringParameter{"lfolder0"}, StringParameter{"lfolder1"}, StringParameter{"lfolder2"}, StringParameter{"lfolder3"},
    StringParameter{"lfolder4"}, StringParameter{"lfolder5"}, StringParameter{"lfolder6"}, StringParameter{"lfolder7"},
    StringParameter{"lfolder8"}, StringParameter{"lfolder9"},
}};
std::array<StringParameter, 10> afolder{{
    StringParameter{"afolder0"}, StringParameter{"afolder1"}, StringParameter{"afolder2"}, StringParameter{"afolder3"},
    StringParameter{"afolder4"}, StringParameter{"afolder5"}, StringParameter{"afolder6"}, StringParameter{"afolder7"},
    StringParameter{"afolder8"}, StringParameter{"afolder9"},
}};
StringParameter AIG_VERSION        {"AIG_VERSION"};
StringParameter DBASE_VERSION      {"DBASE_VERSION"};
StringParameter AIRPORTS_VERSION   {"AIRPORTS_VERSION"};
StringParameter LIV_SCAN_VERSION   {"LIV_SCAN_VERSION"};
StringParameter ADDONS_SCAN_VERSION{"ADDONS_SCAN_VERSION"};

//                                          key                   id     y
EditParameter DESTINATION                 {"DESTINATION",         32839, 343};
EditParameter BLOCK_CALLSIGN              {"BLOCK_CALLSIGN",      32828, 259};
EditParameter ALL_INSTALL_PATH            {"ALL_INSTALL_PATH",    32788, 119};
CallSignComboParameter CALLSIGN_2_OBJECTID{"CALLSIGN_2_OBJECTID", 32831, 259};
// clang-format on

namespace {

BoolParameter* const plainBooleanList[] = {&RANDOM};

CheckBoxParameter* const checkBoxList[] = {
    &AEROWINX,
    &COLLISION_USER_AIR,
    &COLLISION_USER_GND,
    &COLLISION_LIVE_PARKED_GND,
    &ALWAYS_ON_TOP,
    &SCAN_LIVERIES,
    &LIG_PRIORITIZE,
    &AIRBORNE_ONLY,
    &SCAN_AIRPORTS,
    &LIGHT_AIRCRAFT,
    &HELICOPTERS,
    &HIGH_PERF_AIRCRAFT,
    &NAV_LIGHTS_WHILE_PARKED,
    &AUTO_RANGE,
    &STRAIGHT_PBS_ONLY,
    &PARK_SOFT,
    &WEEK,
    &INITIAL_LOAD_ONLY,
    &GUID_CHANGES,
};

// AIRP_HEIGHT stands in both lists of integers on purpose: a load handles it twice, the second time as a combo.
IntParameter* const plainIntegerList[] = {
    &CUSTOM_PARKING_PERCENTAGE, &MAIN_WINDOW_X,       &MAIN_WINDOW_Y, &AIRP_HEIGHT, &LAST_EPOCH_TIME,
    &HOLDING_THRESHOLD_METERS,  &MAX_HOLDING_MINUTES, &MAX_FIT,       &P3D_VERSION,
};

// Without parking_percentage: the choice lasts for one run.
ComboParameter* const comboIntegerList[] = {
    &MATCHING_DEPTH, &RANGE, &AR_ABOVE_HEIGHT, &MAX_PARK_SEL, &MAX_LIVE_SEL, &AIRP_RANGE, &AIRP_HEIGHT,
};

StringParameter* const plainStringList[] = {
    &PROGRAM_VERSION, &SIM_INSTALL_PATH, &PORT_NUMBER,      &lfolder[0],          &lfolder[1],  &lfolder[2],
    &lfolder[3],      &lfolder[4],       &lfolder[5],       &lfolder[6],          &lfolder[7],  &lfolder[8],
    &lfolder[9],      &afolder[0],       &afolder[1],       &afolder[2],          &afolder[3],  &afolder[4],
    &afolder[5],      &afolder[6],       &afolder[7],       &afolder[8],          &afolder[9],  &AIG_VERSION,
    &DBASE_VERSION,   &AIRPORTS_VERSION, &LIV_SCAN_VERSION, &ADDONS_SCAN_VERSION, &DESTINATION,
};

EditParameter* const editStringList[] = {&BLOCK_CALLSIGN};

/// No XML document may hold control characters, U+FFFE, U+FFFF or bytes that are no UTF-8, whatever way it writes them.
std::string storable(std::string_view text) {
    const auto holds = [text](std::string_view part) { return text.find(part) != std::string_view::npos; };
    const bool noCharacters = holds("\xEF\xBF\xBE") || holds("\xEF\xBF\xBF");
    const bool utf8 = platform::isValidUtf8(text) && !noCharacters;
    std::string result(text);
    std::replace_if(
        result.begin(), result.end(), [utf8](unsigned char c) { return c < ' ' || (c > 0x7F && !utf8); }, '?');
    return result;
}

template <typename T>
int entryOf(const std::vector<T>& choices, T choice) {
    const auto at = std::find(choices.begin(), choices.end(), choice);
    return at == choices.end() ? -1 : static_cast<int>(at - choices.begin());
}

} // namespace

std::string StringParameter::value() const {
    const ParameterLock lock(gParameterMutex);
    return value_;
}

void StringParameter::setValue(std::string_view text) {
    const ParameterLock lock(gParameterMutex);
    setValue(text, lock);
}

void StringParameter::setValue(std::string_view text, const ParameterLock&) {
    value_ = storable(text);
}

std::string StringParameter::defaultValue() const {
    const ParameterLock lock(gParameterMutex);
    return defaultValue_;
}

void StringParameter::setDefault(std::string_view text) {
    const ParameterLock lock(gParameterMutex);
    defaultValue_ = storable(text);
}

std::span<BoolParameter* const> plainBooleans() {
    return plainBooleanList;
}

std::span<CheckBoxParameter* const> checkBoxes() {
    return checkBoxList;
}

std::span<IntParameter* const> plainIntegers() {
    return plainIntegerList;
}

std::span<ComboParameter* const> comboIntegers() {
    return comboIntegerList;
}

std::span<StringParameter* const> plainStrings() {
    return plainStringList;
}

std::span<EditParameter* const> editStrings() {
    return editStringList;
}

void showParameter(const CheckBoxParameter& parameter) {
    window_system::setChecked(parameter.controlId, parameter.value);
}

void showParameter(const ComboParameter& parameter) {
    showChoice(parameter, parameter.value);
}

void showParameter(const FloatComboParameter& parameter) {
    window_system::selectComboEntry(parameter.controlId, entryOf<float>(parameter.choices, parameter.value));
}

void showParameter(const EditParameter& parameter) {
    window_system::setControlText(parameter.controlId, parameter.value());
}

void showChoice(const ComboParameter& parameter, int choice) {
    window_system::selectComboEntry(parameter.controlId, entryOf(parameter.choices, choice));
}

int maxFitFromHours(float hours) {
    return static_cast<int>(std::lround(2 * hours)) - 1;
}

float hoursFromMaxFit(int maxFit) {
    return static_cast<float>(maxFit + 1) / 2;
}

void resetParameters() {
    const auto reset = [](const auto& list) {
        for (auto* parameter : list) {
            parameter->value = parameter->defaultValue;
        }
    };
    reset(plainBooleans());
    reset(checkBoxes());
    reset(plainIntegers());
    reset(comboIntegers());
    AFG_AUTOMATIC.value = AFG_AUTOMATIC.defaultValue;
    parking_percentage.value = parking_percentage.defaultValue;
    MAX_FIT_FL.value = MAX_FIT_FL.defaultValue;
    const auto resetText = [](StringParameter& parameter) { parameter.setValue(parameter.defaultValue()); };
    for (StringParameter* parameter : plainStrings()) {
        resetText(*parameter);
    }
    resetText(BLOCK_CALLSIGN);
    resetText(ALL_INSTALL_PATH);
    resetText(CALLSIGN_2_OBJECTID);
}
