// tests/support/program_run.cpp
#include "tests/support/program_run.h"

#include <algorithm>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/log.h"
#include "core/parameter_file.h"
#include "core/run/process_entry.h"
#include "core/run/run_reset.h"
#include "core/run/start_up.h"
#include "core/run_flags.h"
#include "core/slot_clock.h"
#include "core/week_slot.h"
#include "distribution/download.h"
#include "liveries/failed_titles.h"
#include "liveries/livery.h"
#include "liveries/livery_driver.h"
#include "liveries/livery_matching.h"
#include "liveries/livery_tables.h"
#include "liveries/reference_tables.h"
#include "liveries/registration_codes.h"
#include "parking/airport_directory.h"
#include "platform/files.h"
#include "platform/window_system.h"
#include "tests/support/eventually.h"
#include "tests/support/reference_xml.h"
#include "tests/support/sealed_input.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* fewAirports = R"(<root><airports>
    <airport code="EHAM" iata="AMS" lat="52.3086" lon="4.7639" alt="-11" stands="200"/>
    <airport code="LSZH" iata="ZRH" lat="47.4581" lon="8.5481" alt="1416" stands="150"/>
</airports></root>)";

constexpr const char* fewLiveries = R"(<root><liveries>
    <liv airl="KLM" type="A320" title="KLM A320"/>
    <liv airl="ZZZ" type="B738" title="White B738"/>
</liveries></root>)";

} // namespace

void resetProgram() {
    gf_resetRun();
    resetParameters();
    gf_resetStartUp();
    resetReferenceTables();
    resetAirportDirectory();
    Liveries.clear();
    clearLiveryTables();
    resetLiveryDriver();
    resetRegistrationCodes();
    resetFailedTitles();
    resetLiveryMatching();
    setDownloadRoot({});
    gCloseButtonUsed = false;
    gProductionMode = false;
    gRestartWanted = false;
    gExitCode = 0;
    gSecondCounter = 0;
    gHardwareThreads = 0;
    gSimulatorVersion = 0;
    gRealTrafficHere = false;
    gWeekSlot = 0;
    slotClock = 0;
}

ProgramRun::ProgramRun() {
    resetProgram();
    fs::create_directories("docs");
    fs::create_directories("input");
    fs::create_directories("Sim v5/Scenery");
    writeSealed("input/dbase.enc", ReferenceXml().text());
    writeSealed("input/airports.enc", fewAirports);
    fs::create_directories("output");
    writeFile("output/LiveriesScanned.xml", fewLiveries);
    setParameters({{"SIM_INSTALL_PATH", platform::utf8FromPath(folder_.path() / "Sim v5")}});
}

ProgramRun::~ProgramRun() {
    if (windowThread_.joinable()) {
        if (!quitCode()) {
            window_system::clickClose();
        }
        windowThread_.join();
    }
    resetProgram();
}

void ProgramRun::start(const std::vector<std::string>& arguments) {
    std::promise<int> code;
    code_ = code.get_future();
    quitCode_.reset();
    std::vector<std::string> all{"Tarnwing_P3D"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    if (windowThread_.joinable()) {
        windowThread_.join();
    }
    windowThread_ = std::thread([all, promise = std::move(code)]() mutable {
        promise.set_value(gf_processEntry(all));
        // A window system without a window manager may take seconds for this; the program's own end is told before.
        window_system::destroyWindow();
    });
}

bool ProgramRun::endsWithin(std::chrono::milliseconds time) {
    constexpr std::chrono::milliseconds slice(10);
    constexpr int slowest = 5;
    const auto latest = std::chrono::steady_clock::now() + slowest * time;
    for (auto left = time; !quitCode_ && left >= std::chrono::milliseconds(0); left -= slice) {
        if (left < time && std::chrono::steady_clock::now() > latest) {
            break;
        }
        if (code_.wait_for(std::min(left, slice)) == std::future_status::ready) {
            quitCode_ = code_.get();
        }
    }
    return quitCode_.has_value();
}

bool ProgramRun::ends() {
    return endsWithin(testPatience);
}

std::optional<int> ProgramRun::quitCode() {
    endsWithin(std::chrono::milliseconds(0));
    return quitCode_;
}

std::string ProgramRun::log() const {
    gf_flushLog();
    return readFile(folder_.path() / "Log.txt");
}

bool ProgramRun::logs(const std::string& text) const {
    return log().find(text) != std::string::npos;
}

bool ProgramRun::willLog(const std::string& text) const {
    return eventually([&] { return logs(text); });
}

void ProgramRun::setParameters(const std::vector<std::pair<std::string, std::string>>& values) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n  <parameters>\n";
    text += "    <parameter name=\"PROGRAM_VERSION\" value=\"11.10.8\" />\n";
    const bool tellsOfScan =
        std::any_of(values.begin(), values.end(), [](const auto& entry) { return entry.first == "SCAN_LIVERIES"; });
    if (!tellsOfScan) {
        text += "    <parameter name=\"SCAN_LIVERIES\" value=\"false\" />\n";
    }
    for (const auto& [key, value] : values) {
        text += fmt::format("    <parameter name=\"{}\" value=\"{}\" />\n", key, value);
    }
    writeFile(gf_parameterFile(), text + "  </parameters>\n</root>\n");
}
