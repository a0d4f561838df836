#include "rig/world/data_definition.h"

#include <gmock/gmock.h>

#include <random>

using namespace rig;

namespace {

SIMCONNECT_EXCEPTION add(DataDefinition& definition, std::string name, std::string unit, DWORD type) {
    return definition.add({1, std::move(name), std::move(unit), type, 0, 0});
}

std::string valueOf(std::string name, std::string unit, DWORD type, const WorldObject& object) {
    DataDefinition definition;
    EXPECT_EQ(add(definition, std::move(name), std::move(unit), type), SIMCONNECT_EXCEPTION_NONE);
    std::string bytes;
    definition.appendValues({object, 0, {}}, bytes);
    return bytes;
}

WorldObject airlinerAt(double altFeet) {
    WorldObject object;
    object.type.title = "Airliner";
    object.type.model = "B738";
    object.position.altFeet = altFeet;
    return object;
}

} // namespace

TEST(DataDefinition, numbersHaveTheSizeOfTheirType) {
    const WorldObject object = airlinerAt(1000);
    EXPECT_EQ(valueOf("PLANE ALTITUDE", "feet", SIMCONNECT_DATATYPE_INT32, object), std::string("\xE8\3\0\0", 4));
    EXPECT_EQ(valueOf("PLANE ALTITUDE", "feet", SIMCONNECT_DATATYPE_INT64, object),
              std::string("\xE8\3\0\0\0\0\0\0", 8));
    EXPECT_EQ(valueOf("PLANE ALTITUDE", "feet", SIMCONNECT_DATATYPE_FLOAT32, object), std::string("\0\0\x7A\x44", 4));
    EXPECT_EQ(valueOf("PLANE ALTITUDE", "feet", SIMCONNECT_DATATYPE_FLOAT64, object),
              std::string("\0\0\0\0\0\x40\x8F\x40", 8));
    EXPECT_EQ(valueOf("PLANE ALTITUDE", "feet", SIMCONNECT_DATATYPE_INT32, airlinerAt(-1.6)),
              std::string("\xFE\xFF\xFF\xFF"));
}

TEST(DataDefinition, textsFillTheirFieldOrEndWithAZero) {
    const WorldObject object = airlinerAt(0);
    const std::pair<DWORD, std::size_t> sizes[] = {
        {SIMCONNECT_DATATYPE_STRING8, 8},     {SIMCONNECT_DATATYPE_STRING32, 32},
        {SIMCONNECT_DATATYPE_STRING64, 64},   {SIMCONNECT_DATATYPE_STRING128, 128},
        {SIMCONNECT_DATATYPE_STRING256, 256}, {SIMCONNECT_DATATYPE_STRING260, 260},
    };
    for (const auto& [type, size] : sizes) {
        const std::string field = valueOf("ATC MODEL", "", type, object);
        EXPECT_EQ(field, "B738" + std::string(size - 4, '\0'));
    }
    EXPECT_EQ(valueOf("TITLE", "", SIMCONNECT_DATATYPE_STRINGV, object), std::string("Airliner\0", 9));
    EXPECT_EQ(valueOf("TITLE", "", SIMCONNECT_DATATYPE_STRING8, object), "Airliner");
}

TEST(DataDefinition, theSameUnitLeavesANumberAsItIs) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> latitudes(-90, 90);
    for (int i = 0; i < 1000; ++i) {
        WorldObject object;
        object.position.lat = latitudes(random);
        object.position.trueKnots = latitudes(random);
        DataDefinition definition;
        add(definition, "Plane Latitude", "degree", SIMCONNECT_DATATYPE_FLOAT64);
        add(definition, "Airspeed True", "knots", SIMCONNECT_DATATYPE_FLOAT64);
        std::string bytes;
        definition.appendValues({object, 0, {}}, bytes);
        WorldObject copy;
        std::vector<DataDefinition::NamedValue> written;
        ASSERT_EQ(definition.write(bytes, copy, written), SIMCONNECT_EXCEPTION_NONE);
        ASSERT_EQ(copy.position.lat, object.position.lat);
        ASSERT_EQ(copy.position.trueKnots, object.position.trueKnots);
    }
}

TEST(DataDefinition, otherUnitsOfTheSameDimensionAreConverted) {
    const struct {
        const char* variable;
        const char* unit;
        double perStored;
    } table[] = {
        {"PLANE LATITUDE", "radians", 0.017453292519943295},
        {"PLANE PITCH DEGREES", "degrees", 57.29577951308232},
        {"PLANE ALTITUDE", "meters", 0.3048},
        {"VERTICAL SPEED", "feet per minute", 60},
        {"VERTICAL SPEED", "knots", 0.592484},
        {"AIRSPEED TRUE", "meters per second", 0.514444},
        {"SPOILERS HANDLE POSITION", "percent over 100", 0.01},
    };
    for (const auto& row : table) {
        const std::optional<double> factor = unitsPerStored(*numberVariableNamed(row.variable), row.unit);
        ASSERT_TRUE(factor) << row.variable;
        EXPECT_NEAR(*factor / row.perStored, 1, 1e-5) << row.variable;
    }
}

TEST(DataDefinition, everyNameOfTheProgramIsKnownInWhateverCase) {
    const struct {
        const char* name;
        const char* unit;
        DWORD type;
    } table[] = {
        {"TITLE", "", SIMCONNECT_DATATYPE_STRINGV},
        {"ATC MODEL", "", SIMCONNECT_DATATYPE_STRING32},
        {"SIM ON GROUND", "Bool", SIMCONNECT_DATATYPE_INT64},
        {"Plane Latitude", "degree", SIMCONNECT_DATATYPE_FLOAT64},
        {"Plane Longitude", "degree", SIMCONNECT_DATATYPE_FLOAT64},
        {"Plane Pitch degrees", "radians", SIMCONNECT_DATATYPE_FLOAT64},
        {"Plane Bank degrees", "radians", SIMCONNECT_DATATYPE_FLOAT64},
        {"Plane Heading degrees true", "radians", SIMCONNECT_DATATYPE_FLOAT64},
        {"Plane Altitude", "feet", SIMCONNECT_DATATYPE_FLOAT64},
        {"Vertical Speed", "feet per second", SIMCONNECT_DATATYPE_FLOAT64},
        {"Airspeed True", "knots", SIMCONNECT_DATATYPE_FLOAT64},
        {"Plane Alt Above Ground", "feet", SIMCONNECT_DATATYPE_FLOAT64},
        {"Ground Velocity", "knots", SIMCONNECT_DATATYPE_FLOAT64},
        {"ZULU TIME", "Seconds", SIMCONNECT_DATATYPE_INT64},
        {"ZULU DAY OF YEAR", "Number", SIMCONNECT_DATATYPE_INT64},
        {"ZULU YEAR", "Number", SIMCONNECT_DATATYPE_INT64},
        {"LIGHT STATES", "Mask", SIMCONNECT_DATATYPE_INT64},
        {"Static CG to Ground", "feet", SIMCONNECT_DATATYPE_FLOAT64},
        {"Static Pitch", "radians", SIMCONNECT_DATATYPE_FLOAT64},
        {"Light On States", "Mask", SIMCONNECT_DATATYPE_INT64},
        {"Ground Altitude", "feet", SIMCONNECT_DATATYPE_FLOAT64},
        {"ATC ID", "", SIMCONNECT_DATATYPE_STRING32},
        {"SPOILERS HANDLE POSITION", "percent", SIMCONNECT_DATATYPE_FLOAT64},
        {"GENERAL ENG THROTTLE LEVER POSITION:1", "percent", SIMCONNECT_DATATYPE_FLOAT64},
        {"GENERAL ENG THROTTLE LEVER POSITION:2", "percent", SIMCONNECT_DATATYPE_FLOAT64},
    };
    DataDefinition definition;
    for (const auto& row : table) {
        EXPECT_EQ(add(definition, row.name, row.unit, row.type), SIMCONNECT_EXCEPTION_NONE) << row.name;
    }
    EXPECT_EQ(definition.count(), std::size(table));
}

TEST(DataDefinition, whatCannotBeAddedIsRefusedAndLeavesTheRestAsItWas) {
    const struct {
        const char* name;
        const char* unit;
        DWORD type;
        SIMCONNECT_EXCEPTION exception;
    } table[] = {
        {"PLANE ALTITUDES", "feet", SIMCONNECT_DATATYPE_FLOAT64, SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED},
        {"", "feet", SIMCONNECT_DATATYPE_FLOAT64, SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED},
        {"PLANE ALTITUDE", "furlongs", SIMCONNECT_DATATYPE_FLOAT64, SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED},
        {"PLANE ALTITUDE", "", SIMCONNECT_DATATYPE_FLOAT64, SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED},
        {"PLANE ALTITUDE", "knots", SIMCONNECT_DATATYPE_FLOAT64, SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED},
        {"PLANE ALTITUDE", "feet", SIMCONNECT_DATATYPE_STRING32, SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE},
        {"TITLE", "", SIMCONNECT_DATATYPE_FLOAT64, SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE},
        {"TITLE", "", SIMCONNECT_DATATYPE_INVALID, SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE},
        {"TITLE", "", 12, SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE},
    };
    DataDefinition definition;
    for (const auto& row : table) {
        EXPECT_EQ(add(definition, row.name, row.unit, row.type), row.exception) << row.name << ' ' << row.unit;
    }
    EXPECT_EQ(definition.count(), 0u);
}

TEST(DataDefinition, aWriteTellsWhatItWroteInTheVariablesOwnUnit) {
    DataDefinition definition;
    add(definition, "PLANE ALTITUDE", "meters", SIMCONNECT_DATATYPE_INT32);
    add(definition, "AIRSPEED TRUE", "knots", SIMCONNECT_DATATYPE_FLOAT32);
    WorldObject object;
    std::vector<DataDefinition::NamedValue> written;
    ASSERT_EQ(definition.write(std::string_view("\x9C\xFF\xFF\xFF\0\0\x48\x43", 8), object, written),
              SIMCONNECT_EXCEPTION_NONE);
    ASSERT_EQ(written.size(), 2u);
    EXPECT_EQ(written[0].name, "PLANE ALTITUDE");
    EXPECT_NEAR(written[0].value, -328.084, 0.001);
    EXPECT_EQ(object.position.altFeet, written[0].value);
    EXPECT_EQ(object.position.trueKnots, 200);
}
