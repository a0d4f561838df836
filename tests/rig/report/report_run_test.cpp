#include "rig/report/report_run.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>

#include "platform/files.h"
#include "rig/traffic/hold_out.h"
#include "tests/rig/report/flown_trace.h"
#include "tests/support/temporary_folder.h"

using ::testing::HasSubstr;
using ::testing::Not;

namespace rig {
namespace {

const std::filesystem::path startFolder = std::filesystem::current_path();

class ReportRun : public ::testing::Test {
protected:
    ReportRun() {
        RowMaker rows;
        rows.tellFlight(0, 200);
        std::string text;
        for (const auto& [seconds, row] : rows.rows) {
            text += row;
        }
        writeFile("flight.csv", text);
        FlownTrace trace;
        trace.create(10, "KLM1", "Air </script> \xFF liner");
        trace.fly(40, 100, {{10, [](double seconds) {
                                 return flyingAt(shifted(placeAt(seconds - 30), 180, seconds >= 70 ? 100 : 0));
                             }}});
        writeFile("flight.trace", trace.bytes());
        options.trace = "flight.trace";
        options.recording = "flight.csv";
        options.output = "report";
        options.feedStart = 0;
    }

    std::string run() {
        std::ostringstream out;
        runReport(options, out);
        return out.str();
    }

    std::string errorOf() {
        try {
            run();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "nothing";
    }

    TemporaryFolder folder;
    ReportOptions options;
};

TEST_F(ReportRun, theFiguresAreJson) {
    const std::string out = run();
    EXPECT_THAT(out, HasSubstr("report.html"));
    EXPECT_THAT(out, HasSubstr("1 jumps, largest step 100."));
    const nlohmann::json figures = nlohmann::json::parse(readFile("report/figures.json"));
    EXPECT_EQ(figures["all"]["aircraft"], 1);
    EXPECT_EQ(figures["all"]["air"]["jumps"], 1);
    EXPECT_EQ(figures["aircraft"][0]["tail_number"], "KLM1");
    EXPECT_EQ(figures["aircraft"][0]["hexid"], 4734981);
    EXPECT_NEAR(figures["aircraft"][0]["air"]["cross_track_m"]["worst"].get<double>(), 100, 1);
    EXPECT_TRUE(figures["aircraft"][0]["air"]["from_truth_m"].is_null());
    EXPECT_TRUE(figures["all"]["ground"]["floating_s"].is_null());
    EXPECT_EQ(figures["clock"]["source"], "given");
    EXPECT_FALSE(figures["worst_moments"].empty());
}

/// The names in code marks of what docs/rig-report.md tells of times, figures and moments.
std::set<std::string> namesInTheDocument() {
    const std::string text = readFile(startFolder / "docs" / "rig-report.md");
    const std::string figures = text.substr(text.find("\n## Time\n"));
    static const std::regex name("`([a-z][a-z0-9_.]*)`");
    std::set<std::string> names;
    for (std::sregex_iterator at(figures.begin(), figures.end(), name); at != std::sregex_iterator(); ++at) {
        names.insert((*at)[1]);
    }
    return names;
}

/// All keys of the object and of what it holds; one within another also as "outer.inner".
void collectKeys(const nlohmann::json& value, const std::string& outer, std::set<std::string>& keys) {
    for (const auto& [key, inner] : value.items()) {
        if (value.is_object()) {
            keys.insert(key);
            keys.insert(outer + "." + key);
        }
        if (inner.is_structured()) {
            collectKeys(inner, value.is_object() ? key : outer, keys);
        }
    }
}

TEST_F(ReportRun, everyFigureThatIsDocumentedStandsInTheFile) {
    RowMaker rows;
    rows.tellFlight(0, 200);
    rows.line.hexid = 4800000;
    rows.line.callsign = "UNSEEN";
    rows.tellFlight(0, 200);
    writeFile("flight.csv", textOf(rows.recording()));
    run();
    std::set<std::string> keys;
    collectKeys(nlohmann::json::parse(readFile("report/figures.json")), "", keys);
    const std::set<std::string> names = namesInTheDocument();
    EXPECT_GT(names.size(), 40u);
    for (const std::string& name : names) {
        EXPECT_TRUE(keys.contains(name)) << name;
    }
}

TEST_F(ReportRun, thePageNeedsNothingFromElsewhere) {
    run();
    const std::string page = readFile("report/report.html");
    EXPECT_THAT(page, HasSubstr("\"tail_number\":\"KLM1\""));
    EXPECT_THAT(page, Not(HasSubstr("src=")));
    EXPECT_THAT(page, Not(HasSubstr("href=")));
    EXPECT_THAT(page, Not(HasSubstr("/*DATA*/")));
    // The title does not end the script: there is one end, and it is the page's own.
    EXPECT_EQ(page.find("</script>"), page.rfind("</script>"));
}

TEST_F(ReportRun, theSameTraceGivesTheSameReport) {
    run();
    const std::string first = readFile("report/figures.json") + readFile("report/report.html");
    run();
    EXPECT_EQ(first, readFile("report/figures.json") + readFile("report/report.html"));
}

TEST_F(ReportRun, aTraceIsEnough) {
    options.recording.clear();
    options.feedStart.reset();
    run();
    const nlohmann::json figures = nlohmann::json::parse(readFile("report/figures.json"));
    EXPECT_EQ(figures["all"]["air"]["jumps"].get<int>() + figures["all"]["ground"]["jumps"].get<int>(), 1);
    EXPECT_TRUE(figures["aircraft"][0]["hexid"].is_null());
}

TEST_F(ReportRun, filesThatCannotBeReadAreNamed) {
    options.trace = "missing.trace";
    EXPECT_EQ(errorOf(), "cannot read missing.trace");
    options.trace = "flight.csv";
    EXPECT_EQ(errorOf(), "flight.csv: byte 0: no trace");
    writeFile("damaged.trace", readFile("flight.trace") + std::string("\1\0", 2));
    options.trace = "damaged.trace";
    EXPECT_THAT(errorOf(), HasSubstr("damaged.trace: byte "));
    EXPECT_THAT(errorOf(), HasSubstr("a frame that is too short"));
    options.trace = "flight.trace";
    options.truth = "flight.csv";
    EXPECT_EQ(errorOf(), "flight.csv: line 1: no truth file");
    options.truth.clear();
    options.recording = "missing.csv";
    EXPECT_THAT(errorOf(), HasSubstr("missing.csv"));
    EXPECT_FALSE(std::filesystem::exists("report"));
}

TEST_F(ReportRun, aTraceThatEndsWithinARecordIsReportedAndSaid) {
    const std::string whole = readFile("flight.trace");
    writeFile("killed.trace", whole.substr(0, whole.size() - 5));
    options.trace = "killed.trace";
    EXPECT_THAT(run(), HasSubstr("the trace ends within a record"));
}

} // namespace
} // namespace rig
