#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <random>
#include <sstream>

#include "rig/world/trace_reader.h"
#include "rig/world/trace_writer.h"
#include "rig/world/variable_length.h"
#include "sim/sim_ids.h"
#include "tests/rig/world/world_client.h"

using namespace rig;
using ::testing::ElementsAre;
using ::testing::SizeIs;

namespace {

constexpr std::string_view head("RIGTRACE\1\0\0\0", 12);

struct ReadTrace {
    std::vector<TraceFrame> frames;
    std::vector<TraceEvent> events;
    bool endedEarly = false;
    std::string error;
};

ReadTrace readTrace(const std::string& bytes) {
    ReadTrace trace;
    std::istringstream stream(bytes);
    try {
        TraceReader reader(stream);
        TraceItem item;
        while (reader.next(item)) {
            if (auto* frame = std::get_if<TraceFrame>(&item)) {
                trace.frames.push_back(*frame);
            } else {
                trace.events.push_back(std::get<TraceEvent>(item));
            }
        }
        trace.endedEarly = reader.endedEarly();
    } catch (const TraceError& error) {
        trace.error = error.what();
    }
    return trace;
}

std::string record(char tag, std::string_view body) {
    std::string bytes(1, tag);
    appendVariableLength(bytes, body.size());
    bytes += body;
    return bytes;
}

std::string traceOf(std::string_view records) {
    return std::string(head) + std::string(records);
}

std::vector<DWORD> idsOf(const TraceFrame& frame) {
    std::vector<DWORD> ids;
    ids.reserve(frame.objects.size());
    for (const TraceObject& object : frame.objects) {
        ids.push_back(object.id);
    }
    return ids;
}

void expectNear(const Position& a, const Position& b) {
    EXPECT_NEAR(a.lat, b.lat, 1e-9);
    EXPECT_NEAR(a.lon, b.lon, 1e-9);
    EXPECT_NEAR(a.pitchRad, b.pitchRad, 1e-7);
    EXPECT_NEAR(a.bankRad, b.bankRad, 1e-7);
    EXPECT_NEAR(a.headingRad, b.headingRad, 1e-7);
    EXPECT_NEAR(a.altFeet, b.altFeet, 1e-4);
    EXPECT_NEAR(a.verticalFeetPerSecond, b.verticalFeetPerSecond, 1e-4);
    EXPECT_NEAR(a.trueKnots, b.trueKnots, 1e-4);
}

} // namespace

TEST(VariableLength, wholeNumbersTakeSevenBitsAByte) {
    const std::pair<std::uint64_t, std::size_t> table[] = {
        {0, 1}, {127, 1}, {128, 2}, {16383, 2}, {16384, 3}, {std::numeric_limits<std::uint64_t>::max(), 10}};
    for (const auto& [value, size] : table) {
        std::string bytes;
        appendVariableLength(bytes, value);
        EXPECT_EQ(bytes.size(), size) << value;
    }
}

TEST(VariableLength, smallNumbersOfEitherSignFoldIntoSmallOnes) {
    EXPECT_EQ(folded(0), 0u);
    EXPECT_EQ(folded(-1), 1u);
    EXPECT_EQ(folded(1), 2u);
    for (const std::int64_t value : {std::int64_t{-5}, std::int64_t{77}, std::numeric_limits<std::int64_t>::min(),
                                     std::numeric_limits<std::int64_t>::max()}) {
        EXPECT_EQ(unfolded(folded(value)), value);
    }
}

TEST(Trace, whatIsWrittenIsReadAgain) {
    std::mt19937 random(4);
    std::uniform_real_distribution<double> unit(-1, 1);
    std::ostringstream stream;
    std::vector<std::vector<TraceObject>> written;
    {
        TraceWriter writer(stream);
        for (int frame = 0; frame < 200; ++frame) {
            std::vector<TraceObject> objects;
            for (DWORD id = 1; id < 40; ++id) {
                if (random() % 4 != 0) {
                    objects.push_back(
                        {id * 100,
                         {90 * unit(random), 180 * unit(random), unit(random), unit(random), 3 * unit(random),
                          40000 * unit(random), 100 * unit(random), 500 * unit(random)}});
                }
            }
            writer.beginFrame(frame / 30.0, frame / 25.0);
            for (const TraceObject& object : objects) {
                writer.object(object.id, object.position);
            }
            writer.endFrame();
            written.push_back(objects);
        }
    }
    const ReadTrace trace = readTrace(stream.str());
    ASSERT_THAT(trace.frames, SizeIs(written.size()));
    for (std::size_t i = 0; i < written.size(); ++i) {
        EXPECT_NEAR(trace.frames[i].simulatedSeconds, static_cast<double>(i) / 30.0, 1e-6);
        EXPECT_NEAR(trace.frames[i].elapsedSeconds, static_cast<double>(i) / 25.0, 1e-6);
        ASSERT_EQ(trace.frames[i].objects.size(), written[i].size());
        for (std::size_t k = 0; k < written[i].size(); ++k) {
            ASSERT_EQ(trace.frames[i].objects[k].id, written[i][k].id);
            expectNear(trace.frames[i].objects[k].position, written[i][k].position);
        }
    }
}

TEST(Trace, anObjectThatStandsStillCostsNothing) {
    std::ostringstream stream;
    TraceWriter writer(stream);
    const auto frame = [&](int number) {
        writer.beginFrame(number / 30.0, number / 30.0);
        for (DWORD id = 1; id <= 500; ++id) {
            writer.object(id, {52, 4, 0, 0, 1, 100, 0, 0});
        }
        writer.endFrame();
        writer.flush();
    };
    frame(0);
    const std::size_t first = stream.str().size();
    for (int i = 1; i <= 100; ++i) {
        frame(i);
    }
    EXPECT_LT(stream.str().size() - first, 100u * 12);
    EXPECT_THAT(readTrace(stream.str()).frames.back().objects, SizeIs(500));
}

TEST(Trace, eventsHaveTheirObjectValueAndTexts) {
    std::ostringstream stream;
    {
        TraceWriter writer(stream);
        writer.event(TraceEventKind::clientEvent, 4711, -0.5, "FLAPS_SET");
        writer.event(TraceEventKind::created, 12, 0, std::string(300, 't'), "KLM123");
    }
    const std::vector<TraceEvent> events = readTrace(stream.str()).events;
    ASSERT_THAT(events, SizeIs(2));
    EXPECT_EQ(events[0].kind, TraceEventKind::clientEvent);
    EXPECT_EQ(events[0].objectId, 4711u);
    EXPECT_EQ(events[0].value, -0.5);
    EXPECT_EQ(events[0].name, "FLAPS_SET");
    EXPECT_EQ(events[1].name, std::string(300, 't'));
    EXPECT_EQ(events[1].detail, "KLM123");
}

TEST(Trace, valuesThatAreNoNumberOrTooLargeAreReadAsNoNumberUntilTheyAreOneAgain) {
    std::ostringstream stream;
    {
        TraceWriter writer(stream);
        writer.beginFrame(0, 0);
        writer.object(1, {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 0, 0, 0,
                          -1e300, 7, 0});
        writer.endFrame();
        writer.beginFrame(1, 1);
        writer.object(1, {-80, -170, 0, 0, 0, -3.9e14, 7, 0});
        writer.endFrame();
    }
    const auto frames = readTrace(stream.str()).frames;
    const Position none = frames.at(0).objects.at(0).position;
    EXPECT_TRUE(std::isnan(none.lat));
    EXPECT_TRUE(std::isnan(none.lon));
    EXPECT_TRUE(std::isnan(none.altFeet));
    EXPECT_NEAR(none.verticalFeetPerSecond, 7, 1e-4);
    const Position position = frames.at(1).objects.at(0).position;
    EXPECT_NEAR(position.lat, -80, 1e-9);
    EXPECT_NEAR(position.lon, -170, 1e-9);
    EXPECT_NEAR(position.altFeet, -3.9e14, 1);
}

TEST(Trace, aFileThatIsNoTraceSaysSo) {
    EXPECT_EQ(readTrace("").error, "byte 0: no trace");
    EXPECT_EQ(readTrace("RIGTRAC").error, "byte 0: no trace");
    EXPECT_EQ(readTrace("not a trace at all").error, "byte 0: no trace");
    EXPECT_EQ(readTrace(std::string("RIGTRACE\2\0\0\0", 12)).error, "byte 0: a trace of another version");
    EXPECT_EQ(readTrace("RIGTRACE\1").error, "byte 0: a trace of another version");
}

TEST(Trace, aFileThatEndsWithinARecordGivesWhatIsWhole) {
    std::ostringstream stream;
    {
        TraceWriter writer(stream);
        writer.event(TraceEventKind::act, 0, 1, "first");
        writer.event(TraceEventKind::act, 0, 2, "second");
    }
    const std::string whole = stream.str();
    EXPECT_FALSE(readTrace(whole).endedEarly);
    const std::size_t secondBytes = record(2, std::string(1 + 1 + 8 + 7 + 1, ' ')).size();
    for (std::size_t left = 1; left < secondBytes; ++left) {
        const ReadTrace trace = readTrace(whole.substr(0, whole.size() - left));
        EXPECT_THAT(trace.events, SizeIs(1));
        EXPECT_TRUE(trace.endedEarly);
        EXPECT_EQ(trace.error, "");
    }
}

TEST(Trace, aRecordOfAnUnknownKindIsLeftOut) {
    const ReadTrace trace = readTrace(traceOf(record(99, "whatever") + record(1, std::string_view("\2\2\0\0", 4))));
    EXPECT_THAT(trace.frames, SizeIs(1));
    EXPECT_EQ(trace.error, "");
}

TEST(Trace, damagedRecordsAreToldWithTheirPlace) {
    const struct {
        std::string records;
        const char* error;
    } table[] = {
        {record(1, ""), "byte 12: a frame that is too short"},
        {record(1, std::string_view("\0\0\0", 3)), "byte 12: a frame that is too short"},
        {record(1, std::string_view("\0\0\0\1\5\1", 6)), "byte 12: a frame that is too short"},
        {record(1, std::string_view("\0\0\0\0\0", 5)), "byte 12: a frame that is too long"},
        {record(1, "\x80\x80\x80\x80\x80\x80\x80\x80\x80\x80\x80\x01"), "byte 12: a frame that is too short"},
        {record(2, "\1"), "byte 12: an event that is too short"},
        {record(2, std::string_view("\1\0\0\0\0\0\0\0\0\0\5abc", 14)), "byte 12: an event that is too short"},
        {record(2, std::string_view("\1\0\0\0\0\0\0\0\0\0\0\0\0", 13)), "byte 12: an event that is too long"},
        {"\1\xFF\xFF\xFF\x7F", "byte 12: a record of a size that cannot be"},
        {std::string("\1\x80\x80\x80\x80\x80\x80\0", 8), "byte 12: a record of a size that cannot be"},
    };
    for (const auto& row : table) {
        EXPECT_EQ(readTrace(traceOf(row.records)).error, row.error);
    }
}

TEST(Trace, aWorldTracesWhoComesMovesAndGoes) {
    std::ostringstream stream;
    {
        TraceWriter writer(stream);
        World world(groundScene(), airliner(), &writer);
        WorldClient client(world);
        client.declares();
        const DWORD id = client.createsHeld("KLM123", inTheAir());
        client.asks(SetDataRequest{definitionAiPosition, id, 0, 0, 64, doubles({50, 8, 0, 0, 3, 4000, 0, 250})});
        client.sendsEvent(id, eventGear, 0);
        client.asks(CreateAircraftRequest{"Unknown", "BAD", inTheAir(), requestCreate});
        world.play(PauseAct{});
        client.asks(RemoveObjectRequest{id, requestRemove});
    }
    const ReadTrace trace = readTrace(stream.str());
    EXPECT_EQ(trace.error, "");
    EXPECT_THAT(idsOf(trace.frames.front()), ElementsAre(userObjectId));
    const TraceFrame& flying = trace.frames.at(trace.frames.size() - 2);
    ASSERT_THAT(idsOf(flying), ElementsAre(userObjectId, firstAircraftId));
    expectNear(flying.objects[1].position, {50, 8, 0, 0, 3, 4000, 0, 250});
    EXPECT_THAT(idsOf(trace.frames.back()), ElementsAre(userObjectId));

    std::vector<std::string> told;
    told.reserve(trace.events.size());
    for (const TraceEvent& event : trace.events) {
        told.push_back(std::to_string(static_cast<int>(event.kind)) + " " + std::to_string(event.objectId) + " " +
                       event.name + (event.detail.empty() ? "" : "/" + event.detail));
    }
    EXPECT_THAT(told, ElementsAre("11 0 Test", "1 10 Airliner/KLM123", "2 10 Airliner/KLM123", "7 10 ",
                                  "5 10 FREEZE_LATITUDE_LONGITUDE_SET", "5 10 FREEZE_ALTITUDE_SET",
                                  "5 10 FREEZE_ATTITUDE_SET", "5 10 GEAR_SET", "4 0 Unknown/BAD", "10 0 ", "9 0 pause",
                                  "3 10 Airliner/KLM123", "12 0 Test"));
}

TEST(Trace, aWorldTracesWritesOtherThanThePosition) {
    std::ostringstream stream;
    {
        TraceWriter writer(stream);
        World world(groundScene(), airliner(), &writer);
        WorldClient client(world);
        client.defines(401, "SPOILERS HANDLE POSITION", "percent", SIMCONNECT_DATATYPE_FLOAT64);
        client.defines(401, "PLANE ALTITUDE", "feet", SIMCONNECT_DATATYPE_FLOAT64);
        client.asks(SetDataRequest{401, 0, 0, 0, 16, doubles({75, 500})});
    }
    std::vector<TraceEvent> writes = readTrace(stream.str()).events;
    std::erase_if(writes, [](const TraceEvent& event) { return event.kind != TraceEventKind::written; });
    ASSERT_THAT(writes, SizeIs(1));
    EXPECT_EQ(writes[0].name, "SPOILERS HANDLE POSITION");
    EXPECT_EQ(writes[0].value, 75);
    EXPECT_EQ(writes[0].objectId, userObjectId);
}
