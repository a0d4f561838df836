#include "rig/simulator/simulator_run.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

#include "platform/clock.h"
#include "platform/console.h"
#include "platform/files.h"
#include "platform/sockets.h"
#include "platform/stream_connection.h"
#include "rig/world/trace_reader.h"
#include "sim/simconnect.h"
#include "tests/support/eventually.h"
#include "tests/support/temporary_folder.h"

using namespace rig;
using namespace std::chrono;
using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::HasSubstr;

namespace {

class SimulatorRun : public ::testing::Test {
protected:
    void SetUp() override {
        platform::setLocalPipeFolder(folder_.path());
        platform::setDocumentsFolders(folder_.path() / "documents");
        options_.scene = "scene.json";
        options_.port = 0;
        options_.seconds = 1;
        writeFile("scene.json", R"({"user": {"position": [52, 4]}})");
    }
    void TearDown() override {
        platform::setLocalPipeFolder({});
        platform::setDocumentsFolders({});
    }

    std::string run() {
        std::ostringstream out;
        runSimulator(options_, out, false);
        return out.str();
    }
    std::string errorOfRun() {
        try {
            run();
            return "no error";
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    TemporaryFolder folder_;
    SimulatorOptions options_;
};

using SimulatorRunThreads = SimulatorRun;

constexpr platform::WallTime noon = sys_days{2026y / November / 21} + 12h;

} // namespace

TEST_F(SimulatorRun, endsByItselfWhenItsTimeIsUp) {
    const platform::ManualClock clock(noon);
    const platform::SteadyTime begin = platform::steadyNow();
    EXPECT_THAT(run(), AllOf(HasSubstr("0 titles\n"), HasSubstr("IPv4 127.0.0.1 port "),
                             HasSubstr("12:00:01Z  running"), HasSubstr("end: time is up\n")));
    EXPECT_NEAR(duration<double>(platform::steadyNow() - begin).count(), 1, 0.1);
}

TEST_F(SimulatorRun, speedMakesTheWorldFaster) {
    const platform::ManualClock clock(noon);
    options_.speed = 10;
    EXPECT_THAT(run(), HasSubstr("12:00:10Z  running"));
}

TEST_F(SimulatorRun, linesComeNowAndThen) {
    const platform::ManualClock clock(noon);
    options_.seconds = 16;
    const std::string lines = run();
    EXPECT_THAT(lines, AllOf(HasSubstr("12:00:05Z"), HasSubstr("12:00:10Z"), HasSubstr("12:00:15Z")));
    EXPECT_THAT(lines, HasSubstr("  30.0 fps  "));
}

TEST_F(SimulatorRun, endsWhenTheSceneQuits) {
    const platform::ManualClock clock(noon);
    writeFile("scene.json", R"({"user": {"position": [52, 4]}, "acts": [{"at": 3, "act": "quit"}]})");
    options_.seconds.reset();
    EXPECT_THAT(run(), HasSubstr("end: the simulator has quit\n"));
}

/// All that stands in a trace, which is whole.
std::vector<TraceItem> itemsOf(const std::filesystem::path& trace) {
    std::ifstream file(trace, std::ios::binary);
    TraceReader reader(file);
    std::vector<TraceItem> items;
    for (TraceItem item; reader.next(item);) {
        items.push_back(item);
    }
    EXPECT_FALSE(reader.endedEarly());
    return items;
}

TEST_F(SimulatorRun, writesATraceOfEachFrame) {
    const platform::ManualClock clock(noon);
    options_.trace = "flight.trace";
    run();
    const std::vector<TraceItem> items = itemsOf(options_.trace);
    const auto frames = std::count_if(items.begin(), items.end(),
                                      [](const TraceItem& item) { return std::holds_alternative<TraceFrame>(item); });
    EXPECT_NEAR(static_cast<double>(frames), 30, 1);
}

/// Where each line takes a tenth of a second.
class SlowTerminal : public std::stringbuf {
public:
    explicit SlowTerminal(platform::ManualClock& clock) : clock_(clock) {}

private:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        clock_.advance(100ms);
        return std::stringbuf::xsputn(text, size);
    }

    platform::ManualClock& clock_;
};

std::vector<double> frameTimes(const std::filesystem::path& trace) {
    std::vector<double> times;
    for (const TraceItem& item : itemsOf(trace)) {
        if (const auto* frame = std::get_if<TraceFrame>(&item)) {
            times.push_back(frame->elapsedSeconds);
        }
    }
    return times;
}

TEST_F(SimulatorRun, aLateFrameStandsInTheTraceWithTheTimeAtWhichItCame) {
    platform::ManualClock clock(noon);
    SlowTerminal terminal(clock);
    std::ostream out(&terminal);
    options_.trace = "flight.trace";
    options_.seconds = 8;
    runSimulator(options_, out, false);
    const std::vector<double> times = frameTimes(options_.trace);
    ASSERT_GT(times.size(), 200u);
    const auto late = std::adjacent_find(times.begin(), times.end(), [](double a, double b) { return b - a > 0.05; });
    ASSERT_NE(late, times.end()) << "the line of second 5 makes a frame late";
    EXPECT_NEAR(*late, 5, 0.07);
    EXPECT_GE(late[1] - late[0], 0.1);
    EXPECT_NEAR(times.back(), 8, 0.07);
}

/// Else what moves would seem to jump in it.
TEST_F(SimulatorRun, noFrameComesSoonerForALateOneBeforeIt) {
    platform::ManualClock clock(noon);
    SlowTerminal terminal(clock);
    std::ostream out(&terminal);
    options_.trace = "flight.trace";
    options_.seconds = 8;
    runSimulator(options_, out, false);
    const std::vector<double> times = frameTimes(options_.trace);
    for (std::size_t i = 1; i < times.size(); ++i) {
        EXPECT_GT(times[i] - times[i - 1], 0.033) << "at " << times[i];
    }
}

TEST_F(SimulatorRun, theTraceTellsWhenItBegan) {
    const platform::ManualClock clock(noon);
    options_.trace = "flight.trace";
    run();
    const std::vector<TraceItem> items = itemsOf(options_.trace);
    ASSERT_FALSE(items.empty());
    const auto* event = std::get_if<TraceEvent>(&items.front());
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(event->kind, TraceEventKind::act);
    EXPECT_EQ(event->name, "trace begins");
    EXPECT_EQ(event->value, 0);
    EXPECT_EQ(event->detail, "1795262400.000");
}

TEST_F(SimulatorRun, writesTheConfigurationThatLeadsClientsToIt) {
    const platform::ManualClock clock(noon);
    options_.configurationFolder = "documents/own";
    options_.pipe = "\\\\.\\pipe\\Own";
    const std::string said = run();
    const std::string configuration = readFile("documents/own/SimConnect.cfg");
    EXPECT_THAT(configuration, HasSubstr("[SimConnect]\nProtocol=IPv4\nAddress=127.0.0.1\nPort="));
    EXPECT_THAT(configuration, HasSubstr("[SimConnect.1]\nProtocol=Pipe\nPort=Own\n"));
    const std::string port = configuration.substr(configuration.find("Port=") + 5, 4);
    EXPECT_THAT(said, AllOf(HasSubstr("IPv4 127.0.0.1 port " + port), HasSubstr("pipe Own\n")));
}

TEST_F(SimulatorRun, withoutAnyWayInItIsTheSimulatorsOwnPipe) {
    const platform::ManualClock clock(noon);
    options_.port.reset();
    options_.configurationFolder = ".";
    run();
    EXPECT_EQ(readFile("SimConnect.cfg"),
              "[SimConnect]\nProtocol=Pipe\nPort=Lockheed Martin Prepar3D v5\\SimConnect\n");
}

TEST_F(SimulatorRun, countsTheTitlesOfItsFolders) {
    const platform::ManualClock clock(noon);
    writeFile("a/aircraft.cfg", "[fltsim.0]\ntitle=One\n[fltsim.1]\ntitle=Two\n");
    writeFile("b/aircraft.cfg", "[fltsim.0]\ntitle=Three\n");
    options_.titles = {"a", "b"};
    EXPECT_THAT(run(), HasSubstr("3 titles\n"));
}

TEST_F(SimulatorRun, whatItCannotBeginWithIsToldInAText) {
    const SimulatorOptions good = options_;
    options_.scene = "missing.json";
    EXPECT_EQ(errorOfRun(), "missing.json: cannot be read");
    options_ = good;
    options_.titles = {"nowhere"};
    EXPECT_EQ(errorOfRun(), "no folder nowhere");
    options_ = good;
    options_.trace = "nowhere/flight.trace";
    EXPECT_EQ(errorOfRun(), "cannot write nowhere/flight.trace");
    options_ = good;
    writeFile("file", "");
    options_.configurationFolder = "file";
    EXPECT_NE(errorOfRun(), "no error");
}

TEST_F(SimulatorRun, aPortThatIsTakenIsToldWithItsNumber) {
    platform::startSocketLibrary();
    platform::StreamListener taken;
    ASSERT_EQ(taken.listenTcp(platform::AddressFamily::ipv4, 0), 0);
    options_.port = taken.port();
    EXPECT_THAT(errorOfRun(), HasSubstr("cannot listen on IPv4 port " + std::to_string(taken.port()) + ": "));
    taken.close();
    platform::cleanUpSocketLibrary();
}

TEST_F(SimulatorRunThreads, aClientFindsItByItsConfiguration) {
    options_.configurationFolder = ".";
    options_.seconds = 30;
    writeFile("scene.json", R"({"user": {"position": [52, 4]}, "acts": [{"at": 0.5, "act": "exceptions", "count": 3},
                                {"at": 2, "act": "quit"}]})");
    platform::startSocketLibrary();
    std::jthread simulator([this] { run(); });
    HANDLE client = nullptr;
    ASSERT_TRUE(eventually([&] {
        return std::filesystem::exists("SimConnect.cfg") &&
               SimConnect_Open(&client, "Test", nullptr, 0, nullptr, 0) >= 0;
    }));
    std::vector<DWORD> ids;
    const auto keep = [](SIMCONNECT_RECV* record, DWORD, void* context) {
        static_cast<std::vector<DWORD>*>(context)->push_back(record->dwID);
    };
    EXPECT_TRUE(eventually([&] { return SimConnect_CallDispatch(client, keep, &ids) < 0; }));
    EXPECT_THAT(ids, ::testing::Contains(SIMCONNECT_RECV_ID_OPEN));
    EXPECT_THAT(ids, ::testing::Contains(SIMCONNECT_RECV_ID_QUIT));
    SimConnect_Close(client);
    simulator.join();
    platform::cleanUpSocketLibrary();
}
