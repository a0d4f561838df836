// tests/tools/tools_test.cpp
#include <gmock/gmock.h>
#include <map>
#include <sstream>
#include <thread>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <pugixml.hpp>

#include "core/exit_reason.h"
#include "core/geography.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "distribution/check_versions.h"
#include "distribution/download.h"
#include "liveries/reference_data.h"
#include "liveries/reference_tables.h"
#include "parking/airport_directory.h"
#include "rig/server/download_server.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/message_of.h"
#include "tests/support/reference_xml.h"
#include "tests/support/sealed_input.h"
#include "tools/build.h"
#include "tools/check.h"
#include "tools/command_line.h"
#include "tools/files.h"
#include "tools/publish.h"
#include "tools/table.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

const fs::path startFolder = fs::current_path();

void resetTables() {
    resetReferenceTables();
    resetAirportDirectory();
}

/// What the check prints of a text, and how much it complained of.
struct Checked {
    int complaints = 0;
    std::string text;
};

Checked check(std::string_view text) {
    writeFile("checked.xml", text);
    std::ostringstream out;
    const int complaints = checkDataFile("checked.xml", out);
    resetTables();
    return {complaints, out.str()};
}

constexpr const char* typesJson = R"({"A320": ["AIRBUS A-320", "L2J", "M"], "A388": ["AIRBUS A-380", "L4J", "J"],
    "B744": ["BOEING 747", "L4J", "H"], "C172": ["CESSNA", "L1P", "L"], "C510": ["CESSNA", "L2J", "L"],
    "F16": ["FALCON", "L1J", "M"], "AT72": ["ATR", "L2T", "M"], "EC35": ["EUROCOPTER", "H2T", "L"],
    "GLF5": ["GULFSTREAM", "L2J", "M"], "TOOLONG": ["", "", ""]})";

constexpr const char* airportsCsv =
    R"("ident","type","latitude_deg","longitude_deg","elevation_ft","icao_code","iata_code"
"EHAM","large_airport",52.3086,4.76389,-11,"EHAM","AMS"
"LSZH","large_airport",47.4581,8.5555,1416,"LSZH","ZRH"
"XX01","small_airport",1,2,3,,
"OLD1","closed",1,2,3,"OLDD",
"EHNE","small_airport",1,2,,"EHNE",
"EHNP","small_airport",,2,3,"EHNP",
"EHA2","small_airport",1,2,3,"EHAM",
)";

/// Tables as a maintainer finds them, and what the made files are made of.
BuildSources writeSources() {
    writeFile("types.json", typesJson);
    writeFile("airports.csv", airportsCsv);
    writeFile("spans.csv", "icao;wingspan\nA320;35.8\nXXXX;10\nB744;tbd\n");
    writeFile("feet.csv", "\"Wingspan- ft\",ICAO Code\n100,A388\n1,A320\n");
    writeFile("airlines.csv", "Company,3Ltr\n\"Royal, Dutch\",KLM\nSwiss,SWR\nNobody,\n");
    writeFile("aircraft.json", R"({"484506": ["PH-BXA", "A320", "00"], "484507": ["PH-BXA", "A320", "00"],
        "484508": ["PH-XXX", "ZZZZ", "00"], "484509": ["", "A320", "00"]})");
    writeFile("operated.csv", "icao24,registration,typecode,operatoricao\n4b1,HB-JVA,A320,SWR\n4b2,HB-JVB,A320,ZZZ\n");
    writeFile("extra.xml", ReferenceXml()
                               .without("aircrafts")
                               .without("ICAO_airlines")
                               .with("heavy", "")
                               .with("large", "")
                               .with("rotorcraft", "")
                               .with("high_performance", "")
                               .with("publishers", R"(<pub names="Alpha"/>)")
                               .text());
    writeFile("archive/stock/EHAM.xml", "<root/>");
    return {
        "airports.csv", "types.json", {"spans.csv", "feet.csv"}, {"airlines.csv"}, {"aircraft.json", "operated.csv"},
        "extra.xml",    "archive"};
}

std::string builtSums() {
    std::ostringstream out;
    buildDataFiles(writeSources(), "built", out);
    return out.str();
}

/// What one call of the command line leaves.
struct Ran {
    int code = 0;
    std::string out;
    std::string err;
};

Ran run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "tarnwing_tools");
    std::ostringstream out;
    std::ostringstream err;
    const int code = runTools(arguments, out, err);
    resetTables();
    return {code, out.str(), err.str()};
}

class Tools : public testing::Test {
protected:
    Tools() {
        resetTables();
        resetParameters();
        gf_resetExitReason();
    }
    ~Tools() override {
        resetTables();
        resetParameters();
        setDownloadRoot({});
        gf_resetExitReason();
    }

    LogCapture log;
};

} // namespace

// --- Tables ---

TEST(Table, knowsColumnsByTheirNamesInWhateverCase) {
    const Table table("Code,Name\r\nKLM,Royal Dutch\r\nSWR\r\n");
    ASSERT_EQ(table.size(), 2U);
    EXPECT_EQ(table.field(0, {"other", "NAME"}), "Royal Dutch");
    EXPECT_EQ(table.field(1, {"code"}), "SWR");
    EXPECT_EQ(table.field(1, {"name"}), "");
    EXPECT_EQ(table.field(0, {"other"}), "");
    EXPECT_FALSE(table.has({"other"}));
}

TEST(Table, readsQuotedFields) {
    const Table table("a,b\n\"one, \"\"two\"\"\nthree\",x\n\"open");
    ASSERT_EQ(table.size(), 2U);
    EXPECT_EQ(table.field(0, {"a"}), "one, \"two\"\nthree");
    EXPECT_EQ(table.field(0, {"b"}), "x");
    EXPECT_EQ(table.field(1, {"a"}), "open");
}

TEST(Table, isSeparatedBySemicolonsToo) {
    const Table table("\xEF\xBB\xBF"
                      "a;b,c;d\n1;2,3;4\n");
    EXPECT_EQ(table.field(0, {"a"}), "1");
    EXPECT_EQ(table.field(0, {"b,c"}), "2,3");
}

TEST(Table, ofNoTextHasNoRows) {
    EXPECT_EQ(Table("").size(), 0U);
    EXPECT_EQ(Table("a,b").size(), 0U);
}

// --- Seal, open, keys ---

TEST_F(Tools, aKeyFileMayEndItsLine) {
    writeFile("key", "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f\r\n");
    EXPECT_EQ(keyOfFile("key")[31], 0x1f);
    EXPECT_EQ(keyOfFile({}), gf_dataKey());
    writeFile("key", "too short\n");
    EXPECT_EQ(messageOf([] { keyOfFile("key"); }), "key holds no key: 32 characters or 64 hexadecimal digits");
    EXPECT_EQ(messageOf([] { keyOfFile("none"); }), "cannot read none");
}

TEST_F(Tools, aWriteThatFailsLeavesTheFormerFile) {
    writeFile("a", "former");
    const std::string failure = messageOf([] {
        writeWhole("a", [](const fs::path& side) {
            writeFile(side, "half");
            throw std::runtime_error("no more");
        });
    });
    EXPECT_EQ(failure, "no more");
    EXPECT_EQ(readFile("a"), "former");
    EXPECT_FALSE(fs::exists("a.part"));
}

// --- Check ---

TEST_F(Tools, theCheckOfSoundDataTellsWhatWasRead) {
    const Checked reference = check(ReferenceXml().with("dbase", R"(<db reg="PH-BXA"/>)").text());
    EXPECT_EQ(reference.complaints, 0);
    EXPECT_THAT(reference.text, HasSubstr("9 types, 0 wing spans, 3 airlines"));
    EXPECT_THAT(reference.text, HasSubstr("1 registrations"));
    const Checked airports =
        check(R"(<airports><airport code="EHAM" iata="" lat="1" lon="2" alt="3" stands="0"/></airports>)");
    EXPECT_EQ(airports.complaints, 0);
    EXPECT_EQ(airports.text, "1 airports\n");
}

TEST_F(Tools, theCheckListsEveryRowThatTheProgramWouldSkip) {
    const Checked checked =
        check(ReferenceXml()
                  .with("wingspans", R"(<wingspan type="XXXX" meters="1"/><wingspan type="XXXX" meters="1"/>)"
                                     R"(<wingspan type="A320" meters="1"/><wingspan type="A320" meters="1"/>)")
                  .with("publishers", R"(<pub names="Alpha,a"/><pub names="Alpha"/><pub names="Alpha,a"/>)")
                  .with("fixes", R"(<fx wro="A" cor="A320"/><fx wro="A" cor="A320"/><fx wro="B" cor=""/>)")
                  .with("dbase", R"(<db reg="PH-BXA"/><db reg="PH-BXA"/>)")
                  .text());
    EXPECT_EQ(checked.complaints, 7);
    EXPECT_THAT(checked.text, AllOf(HasSubstr("wingspan model XXXX is not valid, skipped\n"),
                                    HasSubstr("wrong part of fix: 'A', already exists, skipped\n"),
                                    HasSubstr("wrong fix B -> , the latter is not valid\n"),
                                    HasSubstr("regcode PH-BXA already exists\n"),
                                    HasSubstr("wingspan of A320 already exists, skipped\n"),
                                    HasSubstr("publisher Alpha,a already exists, skipped\n")));
    EXPECT_EQ(
        check(R"(<airports><airport code="EHAM"/><airport code="X" iata="" lat="1" lon="2" alt="3"/></airports>)").text,
        "Missing latLons for airport 'EHAM'\nMissing stands for airport 'X'\n1 airports\n");
}

TEST_F(Tools, theCheckTellsWhatWouldEndTheStart) {
    EXPECT_THAT(check(ReferenceXml().without("heavy").text()).text, HasSubstr("Missing section: heavy\n"));
    EXPECT_THAT(check("<root>").text, HasSubstr("'checked.xml' not read because of "));
    std::ostringstream out;
    EXPECT_EQ(checkDataFile("none.xml", out), 1);
}

// --- Build ---

TEST_F(Tools, whatIsBuiltIsReadByTheProgramWithoutAComplaint) {
    builtSums();
    for (const char* file : {"built/dbase.xml", "built/airports.xml"}) {
        std::ostringstream out;
        EXPECT_EQ(checkDataFile(file, out), 0) << out.str();
    }
    EXPECT_EQ(gf_categoryOfType("A320"), AircraftCategory::Large);
    EXPECT_EQ(gf_categoryOfType("AT72"), AircraftCategory::Large);
    EXPECT_EQ(gf_categoryOfType("A388"), AircraftCategory::Heavy);
    EXPECT_EQ(gf_categoryOfType("B744"), AircraftCategory::Heavy);
    EXPECT_EQ(gf_categoryOfType("C510"), AircraftCategory::Buzjets);
    EXPECT_EQ(gf_categoryOfType("EC35"), AircraftCategory::Rotorcraft);
    EXPECT_EQ(gf_categoryOfType("F16"), AircraftCategory::HighPerf);
    EXPECT_EQ(gf_categoryOfType("C172"), AircraftCategory::Light);
    EXPECT_EQ(gf_categoryOfType("GLF5"), AircraftCategory::Buzjets) << "the extra file goes before the class";
    EXPECT_NEAR(gf_wingspanOfType("A320") * 2 * metersPerNm, 35.8, 0.001);
    EXPECT_NEAR(gf_wingspanOfType("A388") * 2 * metersPerNm, 30.48, 0.001);
    EXPECT_TRUE(gf_isIcaoAirline("KLM"));
    EXPECT_EQ(gf_findPublisher("alpha airports"), "Alpha");
    EXPECT_EQ(gf_findRegcodeRecord("HBJVA")->airl, "SWR");
    EXPECT_EQ(gf_findRegcodeRecord("HBJVB")->airl, "");
    EXPECT_EQ(gf_findRegcodeRecord("PHBXA")->type, "A320");
    EXPECT_EQ(find_airport("EHAM")->stands, 3);
    EXPECT_EQ(find_airport("LSZH")->stands, 0);
    EXPECT_EQ(find_airport("LSZH")->alt, 1416.0);
}

TEST_F(Tools, theBuildSaysWhatItLeftOutAndWhy) {
    EXPECT_EQ(builtSums(), "2 airports\n"
                           "9 types\n"
                           "2 wing spans\n"
                           "2 airlines\n"
                           "3 aircraft\n"
                           "left out 1 aircraft: no registration\n"
                           "left out 1 aircraft: registration twice\n"
                           "left out 1 aircraft: type not known\n"
                           "left out 1 airline of an aircraft: not known\n"
                           "left out 1 airline: no code of three letters\n"
                           "left out 1 airport: closed\n"
                           "left out 1 airport: code twice\n"
                           "left out 1 airport: no ICAO code\n"
                           "left out 1 airport: no elevation\n"
                           "left out 1 airport: no position\n"
                           "left out 1 type: no designator\n"
                           "left out 1 wing span: no number\n"
                           "left out 1 wing span: type not known\n"
                           "left out 1 wing span: type twice\n");
    EXPECT_THAT(readFile("built/report.txt"), HasSubstr("aircraft: type not known\n  PH-XXX ZZZZ\n"));
}

TEST_F(Tools, theBuildNamesATableThatItCannotRead) {
    BuildSources sources = writeSources();
    sources.types = "none.json";
    std::ostringstream out;
    EXPECT_EQ(messageOf([&] { buildDataFiles(sources, "built", out); }), "cannot read none.json");
    writeFile("bad.json", "{ no json");
    sources.types = "bad.json";
    EXPECT_EQ(messageOf([&] { buildDataFiles(sources, "built", out); }), "bad.json is no JSON object");
}

TEST_F(Tools, theBuildReadsThePublicTablesAsTheyArePublished) {
    const fs::path tables = startFolder / "../shared/data";
    if (!fs::exists(tables / "registry/types.json.gz")) {
        GTEST_SKIP() << "no public tables beside the project";
    }
    BuildSources sources = writeSources();
    sources.airports = tables / "airports/airports.csv.gz";
    sources.types = tables / "registry/types.json.gz";
    sources.wingspans = {tables / "registry/aircraft_data.csv", tables / "registry/aircraft_characteristics.csv"};
    sources.airlines = {tables / "registry/operators.json.gz", tables / "registry/airlines.csv",
                        tables / "registry/airlines_cc0.csv"};
    sources.aircraft = {tables / "registry/aircrafts.json.gz"};
    std::ostringstream out;
    buildDataFiles(sources, "built", out);
    EXPECT_EQ(checkDataFile("built/dbase.xml", out), 0) << out.str();
    EXPECT_EQ(checkDataFile("built/airports.xml", out), 0) << out.str();
    EXPECT_GT(DbaseTable.size(), 300'000U) << out.str();
    EXPECT_GT(gAirports.size(), 9'000U);
    EXPECT_GT(gHalfWingspans.size(), 500U);
    EXPECT_GT(gIcaoAirlines.size(), 5'000U);
    EXPECT_EQ(gf_categoryOfType("A320"), AircraftCategory::Large);
}

// --- The sample data ---

TEST_F(Tools, theSampleDataAreReadWithoutAComplaintAndHoldEverything) {
    std::ostringstream out;
    EXPECT_EQ(checkDataFile(startFolder / "data/dbase.xml", out), 0) << out.str();
    EXPECT_EQ(checkDataFile(startFolder / "data/airports.xml", out), 0) << out.str();
    for (const TypeSet* types : {&gCategoryTypes.highPerformance, &gCategoryTypes.heavy, &gCategoryTypes.large,
                                 &gCategoryTypes.buzjet, &gCategoryTypes.rotorcraft}) {
        EXPECT_GE(types->size(), 15U);
        for (const std::string& type : *types) {
            EXPECT_TRUE(gAllTypes.contains(type) && gHalfWingspans.contains(type)) << type;
        }
    }
    EXPECT_THAT(gAverageHalfWingspans, testing::Each(testing::Gt(0.0)));
    EXPECT_GE(gIcaoAirlines.size(), 300U);
    EXPECT_EQ(DbaseTable.size(), 2000U);
    EXPECT_GE(gSimilarGroups.size(), 40U);
    EXPECT_GE(gFixes.size(), 20U);
    EXPECT_GE(gPublishers.size(), 8U);
    EXPECT_GE(gThirdParties.size(), 8U);
    EXPECT_GE(gAirports.size(), 200U);
}

// --- Publish, and the whole road ---

TEST_F(Tools, publishingLaysOutWhatTheProgramAsksFor) {
    writeFile("xml/dbase.xml", "d");
    writeFile("xml/airports.xml", "a");
    writeFile("xml/AIG-regcodes.xml", "r");
    writeFile("xml/archive/stock/EHAM.xml", "stand");
    writeFile("xml/release/setup.zip", "zip");
    writeFile("xml/docs/README.txt", "notes");
    publishDownloads("xml", {1, 2, 3}, "served", gf_dataKey());
    for (const char* file : {"dbase", "airports", "AIG-regcodes"}) {
        EXPECT_TRUE(gf_isWholeContainer(fmt::format("served/downloads/11/{}.enc", file), gf_dataKey())) << file;
    }
    EXPECT_EQ(readFile("served/downloads/P3D/archive/stock/EHAM.xml"), "stand");
    EXPECT_EQ(readFile("served/downloads/release/setup.zip"), "zip");
    EXPECT_EQ(readFile("served/downloads/docs/README.txt"), "notes");
    const auto versions = parseWebVersions(readFile("served/downloads/versions.json"));
    ASSERT_TRUE(versions);
    EXPECT_EQ(versions->at("dbase"), (ProgramVersion{1, 2, 3}));
    EXPECT_EQ(versions->at("p3d"), thisVersion);
    EXPECT_EQ(versions->size(), 6U);
    EXPECT_FALSE(fs::exists("served.new"));
}

TEST_F(Tools, publishingGivesNoVersionToADataFileThatTheServerDoesNotHave) {
    writeFile("xml/dbase.xml", "d");
    writeFile("xml/airports.xml", "a");
    publishDownloads("xml", {1, 0, 0}, "served", gf_dataKey());
    const auto keys = [] {
        std::vector<std::string> names;
        const auto versions = parseWebVersions(readFile("served/downloads/versions.json"));
        for (const auto& [key, version] : versions.value()) {
            names.push_back(key);
        }
        return names;
    };
    EXPECT_THAT(keys(), ElementsAre("addons", "airports", "dbase", "liveries", "p3d"));
    fs::remove("xml/airports.xml");
    writeFile("xml/AIG-regcodes.xml", "r");
    publishDownloads("xml", {1, 0, 1}, "served", gf_dataKey());
    EXPECT_THAT(keys(), ElementsAre("addons", "aig", "airports", "dbase", "liveries", "p3d"));
}

TEST_F(Tools, publishingThatFailsLeavesThePublishedFolder) {
    writeFile("xml/dbase.xml", "d");
    publishDownloads("xml", {1, 0, 0}, "served", gf_dataKey());
    const std::string former = readFile("served/downloads/versions.json");
    fs::remove("xml/dbase.xml");
    EXPECT_EQ(messageOf([] { publishDownloads("xml", {2, 0, 0}, "served", gf_dataKey()); }), "no data file in xml");
    EXPECT_EQ(readFile("served/downloads/versions.json"), former);
    EXPECT_TRUE(fs::exists("served/downloads/11/dbase.enc"));
    EXPECT_FALSE(fs::exists("served.new"));
}

TEST_F(Tools, publishingTakesWhatItDoesNotMakeAnewOverAndWritesIntoNothingThatIsPublished) {
    writeFile("xml/dbase.xml", "first");
    writeFile("xml/docs/README.txt", "first notes");
    writeFile("xml/archive/stock/EHAM.xml", "stand");
    publishDownloads("xml", {1, 0, 0}, "served", gf_dataKey());
    const std::vector<const char*> files{"downloads/11/dbase.enc", "downloads/docs/README.txt",
                                         "downloads/versions.json", "downloads/P3D/archive/stock/EHAM.xml"};
    std::map<std::string, std::string> former;
    for (const char* file : files) {
        fs::create_directories((fs::path("seen") / file).parent_path());
        fs::create_hard_link(fs::path("served") / file, fs::path("seen") / file);
        former[file] = readFile(fs::path("seen") / file);
    }
    writeFile("xml/dbase.xml", "second");
    writeFile("xml/docs/README.txt", "second notes");
    fs::remove_all("xml/archive");
    publishDownloads("xml", {2, 0, 0}, "served", gf_dataKey());
    for (const char* file : files) {
        EXPECT_EQ(readFile(fs::path("seen") / file), former[file]) << "who still reads " << file << " reads it whole";
    }
    EXPECT_TRUE(
        fs::equivalent("seen/downloads/P3D/archive/stock/EHAM.xml", "served/downloads/P3D/archive/stock/EHAM.xml"));
    EXPECT_EQ(readFile("served/downloads/docs/README.txt"), "second notes");
    EXPECT_TRUE(gf_streamDecrypt("served/downloads/11/dbase.enc", "opened"));
    EXPECT_EQ(readFile("opened"), "second");
}

TEST_F(Tools, aFileIsPublishedWhereAFolderStoodAndAFolderWhereAFileStood) {
    writeFile("xml/dbase.xml", "d");
    writeFile("xml/docs/notes/a.txt", "a");
    writeFile("xml/docs/help", "h");
    publishDownloads("xml", {1, 0, 0}, "served", gf_dataKey());
    fs::remove_all("xml/docs");
    writeFile("xml/docs/notes", "n");
    writeFile("xml/docs/help/b.txt", "b");
    publishDownloads("xml", {2, 0, 0}, "served", gf_dataKey());
    EXPECT_EQ(readFile("served/downloads/docs/notes"), "n");
    EXPECT_EQ(readFile("served/downloads/docs/help/b.txt"), "b");
}

TEST_F(Tools, aFolderThatIsTakenOverKeepsItsPermissions) {
    writeFile("xml/dbase.xml", "d");
    writeFile("xml/release/setup.zip", "zip");
    publishDownloads("xml", {1, 0, 0}, "served", gf_dataKey());
    fs::permissions("served/downloads/release", fs::perms::owner_all);
    fs::remove_all("xml/release");
    publishDownloads("xml", {2, 0, 0}, "served", gf_dataKey());
    EXPECT_EQ(readFile("served/downloads/release/setup.zip"), "zip");
    EXPECT_EQ(fs::status("served/downloads/release").permissions(), fs::perms::owner_all);
}

// --- The command line ---

TEST_F(Tools, whatIsSealedOpensAgainWithTheSameKeyOnly) {
    writeFile("clear.xml", std::string(10000, 'c'));
    writeFile("key", "this is some other key, 32 bytes\n");
    EXPECT_EQ(run({"seal", "clear.xml", "sealed.enc", "--key", "key"}).code, 0);
    EXPECT_EQ(run({"open", "sealed.enc", "opened.xml", "--key", "key"}).code, 0);
    EXPECT_EQ(readFile("opened.xml"), readFile("clear.xml"));

    const Ran refused = run({"open", "sealed.enc", "opened.xml"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_EQ(refused.err, "tarnwing_tools: Decryption failed\n");
    EXPECT_EQ(readFile("opened.xml"), readFile("clear.xml")) << "a failure leaves the former file";
    EXPECT_FALSE(fs::exists("opened.xml.part"));
}

TEST_F(Tools, theCheckCommandEndsWithOneWhenThereIsAComplaint) {
    writeFile("good.xml", ReferenceXml().text());
    writeFile("bad.xml", ReferenceXml().with("fixes", R"(<fx wro="B" cor=""/>)").text());
    EXPECT_EQ(run({"check", "good.xml"}).code, 0);
    const Ran bad = run({"check", "bad.xml"});
    EXPECT_EQ(bad.code, 1);
    EXPECT_THAT(bad.out, HasSubstr("wrong fix B -> , the latter is not valid\n"));
}

TEST_F(Tools, aCommandThatIsNotThereIsRefused) {
    EXPECT_NE(run({}).code, 0);
    EXPECT_NE(run({"unseal", "a", "b"}).code, 0);
    EXPECT_NE(run({"seal", "a"}).code, 0);
    const Ran noVersion = run({"publish", "xml", "served", "--version", "newest"});
    EXPECT_EQ(noVersion.code, 1);
    EXPECT_EQ(noVersion.err, "tarnwing_tools: invalid version format\n");
}

// --- The whole road ---

namespace {

/// Everything that the program knows from its two data files, one line each; the registrations are those of the XML.
std::vector<std::string> knownWorld(const fs::path& referenceXml) {
    std::vector<std::string> lines;
    for (const TypeSet* set : {&gAllTypes, &gCargoTypes, &gIcaoAirlines, &gCargoOperators, &gSimaddonAirports,
                               &gCategoryTypes.highPerformance, &gCategoryTypes.heavy, &gCategoryTypes.large,
                               &gCategoryTypes.buzjet, &gCategoryTypes.rotorcraft}) {
        lines.push_back(fmt::format("{}", fmt::join(*set, ",")));
    }
    for (const auto& [type, halfSpanNm] : gHalfWingspans) {
        lines.push_back(fmt::format("{} {}", type, halfSpanNm));
    }
    lines.push_back(fmt::format("{} {}", MaxHalfWingspan, fmt::join(gAverageHalfWingspans, " ")));
    for (const auto* lists : {&gSimilarGroups, &gPublishers}) {
        for (const std::vector<std::string>& list : *lists) {
            lines.push_back(fmt::format("{}", fmt::join(list, ",")));
        }
    }
    for (const auto& [wrong, right] : std::map<std::string, std::string>(gFixes.begin(), gFixes.end())) {
        lines.push_back(fmt::format("{} {}", wrong, right));
    }
    for (const ThirdParty& party : gThirdParties) {
        lines.push_back(fmt::format("{} {}", party.pub, fmt::join(party.arpts, ",")));
    }
    pugi::xml_document document;
    document.load_file(referenceXml.c_str());
    lines.push_back(fmt::format("{} registrations", DbaseTable.size()));
    for (const pugi::xml_node& row : document.child("root").child("dbase").children("db")) {
        const std::string reg = row.attribute("reg").as_string();
        const DbaseRecord record = DbaseTable.find(reg).value_or(DbaseRecord{"none", "none", "none", false});
        lines.push_back(fmt::format("{} {} {} {} {}", reg, record.airl, record.type, record.opr, record.cargo));
    }
    for (const Airport& airport : gAirports) {
        lines.push_back(fmt::format("{} {} {} {} {} {}", airport.code, airport.iata, airport.lat, airport.lon,
                                    airport.alt, airport.stands));
    }
    return lines;
}

/// The program's own key, as a maintainer keeps it.
void writeKeyFile(const fs::path& path) {
    writeFile(path, fmt::format("{:02x}\n", fmt::join(gf_dataKey(), "")));
}

/// The data files as a maintainer makes, checks and publishes them for a program with version 1.0.1, in "built" and
/// "served".
void buildCheckAndPublish() {
    const BuildSources sources = writeSources();
    std::string extra = readFile("extra.xml");
    extra.insert(
        extra.find("</root>"),
        R"(<similar_types><similar types="A320,B744"/></similar_types><fixes><fx wro="A32" cor="A320"/></fixes>)"
        R"(<thirdpartiesP3D><thirdpartieP3D pub="Beta" arpts="LSZH"/></thirdpartiesP3D>)");
    writeFile("extra.xml", extra);
    writeKeyFile("key");
    EXPECT_EQ(run({"build", "built", "--airports", "airports.csv", "--types", "types.json", "--wingspans", "spans.csv",
                   "feet.csv", "--airlines", "airlines.csv", "--aircraft", "aircraft.json", "operated.csv", "--extra",
                   "extra.xml", "--archive", "archive"})
                  .code,
              0);
    EXPECT_EQ(run({"check", "built/dbase.xml"}).code, 0);
    EXPECT_EQ(run({"check", "built/airports.xml"}).code, 0);
    writeFile("built/AIG-regcodes.xml", "new");
    EXPECT_EQ(run({"publish", "built", "served", "--version", "1.0.1", "--key", "key"}).code, 0);
    EXPECT_EQ(run({"open", "served/downloads/11/dbase.enc", "opened.xml", "--key", "key"}).code, 0);
    EXPECT_EQ(readFile("opened.xml"), readFile("built/dbase.xml"));
}

/// What the clear files say, read without the road between.
std::vector<std::string> builtWorld() {
    resetTables();
    const RowReport report = [](std::string_view line) { ADD_FAILURE() << line; };
    EXPECT_TRUE(lf_readReferenceXml("built/dbase.xml", report));
    lf_readAirportXml("built/airports.xml", report);
    return knownWorld("built/dbase.xml");
}

void installOlderData() {
    fs::create_directories(gf_parameterFolder());
    writeSealed("input/dbase.enc", ReferenceXml().with("dbase", R"(<db reg="OLD-ONE"/>)").text());
    writeSealed("input/airports.enc",
                R"(<airports><airport code="OLDD" iata="" lat="1" lon="2" alt="3" stands="0"/></airports>)");
    writeSealed("input/AIG-regcodes.enc", "old");
    for (StringParameter* installed : {&DBASE_VERSION, &AIRPORTS_VERSION, &AIG_VERSION}) {
        installed->setValue("1.0.0");
    }
}

/// What a start does with the data.
void start() {
    resetTables();
    EXPECT_TRUE(gf_checkVersions());
    EXPECT_TRUE(gf_readDataFiles());
    EXPECT_TRUE(gf_readAirports());
}

void expectOlderData(const std::string& why) {
    EXPECT_TRUE(DbaseTable.find("OLD-ONE")) << why;
    EXPECT_TRUE(is_supported_airport("OLDD")) << why;
    EXPECT_TRUE(gf_streamDecrypt("input/AIG-regcodes.enc", "opened.xml")) << why;
    EXPECT_EQ(readFile("opened.xml"), "old") << why;
    for (const StringParameter* installed : {&DBASE_VERSION, &AIRPORTS_VERSION, &AIG_VERSION}) {
        EXPECT_EQ(installed->value(), "1.0.0") << why;
    }
}

/// A start against a server that sends no more, whose user loses patience.
void startAndClose(const DownloadServer& server) {
    const std::size_t before = server.requests().size();
    std::thread user([&] {
        eventually([&] { return server.requests().size() > before; });
        gf_userCloses();
    });
    start();
    user.join();
    gf_resetExitReason();
}

} // namespace

TEST_F(Tools, whatIsBuiltAndPublishedReplacesTheOlderDataOfAProgramAndNoFaultOfTheServerHarmsThem) {
    buildCheckAndPublish();
    const std::vector<std::string> expected = builtWorld();
    installOlderData();
    DownloadServer server("served");
    setDownloadRoot(server.root());
    for (const char* fault : {"404", "500", "redirect", "half", "length-half", "length-double", "page"}) {
        for (const char* pathEnd : {"", ".enc"}) {
            server.setFault(*faultOfWord(fault), pathEnd);
            start();
            expectOlderData(fmt::format("fault {} of *{}", fault, pathEnd));
        }
    }
    server.setFault(ServerFault::stall);
    startAndClose(server);
    expectOlderData("stall");

    server.setFault(ServerFault::slow);
    start();
    EXPECT_EQ(knownWorld("built/dbase.xml"), expected);
    EXPECT_TRUE(DbaseTable.find("HB-JVA"));
    EXPECT_FALSE(DbaseTable.find("OLD-ONE"));
    EXPECT_TRUE(gf_streamDecrypt("input/AIG-regcodes.enc", "opened.xml"));
    EXPECT_EQ(readFile("opened.xml"), "new");
    for (const StringParameter* installed : {&DBASE_VERSION, &AIRPORTS_VERSION, &AIG_VERSION}) {
        EXPECT_EQ(installed->value(), "1.0.1");
    }
    EXPECT_FALSE(fs::exists("input/dbase.xml") || fs::exists("input/airports.xml"));
}
