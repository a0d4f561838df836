// tests/liveries/sample_liveries_test.cpp
// Whole trees of liveries: the sample of ours, with what must come of it, and the files of real installations.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <regex>
#include <set>

#include "core/text_files.h"
#include "liveries/ascii_text.h"
#include "liveries/folder_walk.h"
#include "liveries/livery_driver.h"
#include "liveries/livery_file.h"
#include "liveries/livery_scan.h"
#include "liveries/livery_tables.h"
#include "liveries/reference_data.h"
#include "liveries/scan_state.h"
#include "platform/files.h"
#include "tests/liveries/scan_test.h"

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

const fs::path startFolder = fs::current_path();

// The reports, in the folder "output".
constexpr const char* airlines = "errors/InvalidAirlineCodes.txt";
constexpr const char* models = "errors/InvalidAircraftCodes.txt";
constexpr const char* fixes = "errors/Fixes.txt";
constexpr const char* files = "errors/InvalidAircraftCfgFiles.txt";
constexpr const char* sections = "errors/IncompleFltsimSections.txt";
constexpr const char* withoutSections = "info/AircraftCfgWithNoFltsimSection.txt";
constexpr const char* corrections = "info/AirlineModelConversions.txt";
constexpr const char* inlineRegcodes = "errors/InlineRegcodes.txt";

class LiveryTrees : public ScanTest {
public:
    LiveryTrees(const LiveryTrees&) = delete;
    LiveryTrees& operator=(const LiveryTrees&) = delete;
    ~LiveryTrees() override { resetTables(); }

protected:
    LiveryTrees() {
        resetTables();
        resetReferenceTables();
        EXPECT_TRUE(lf_readReferenceXml(startFolder / "data/dbase.xml", [](std::string_view) {}));
    }

    static void resetTables() {
        clearLiveryTables();
        resetLiveryDriver();
    }
};

std::vector<std::string> linesOf(const fs::path& file) {
    std::vector<std::string> lines;
    std::ifstream stream(file, std::ios::binary);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string withoutDate(std::string text) {
    const std::string begin = "name=\"date\" value=\"";
    const std::size_t at = text.find(begin);
    if (at != std::string::npos) {
        const std::size_t value = at + begin.size();
        text.erase(value, text.find('"', value) - value);
    }
    return text;
}

// --- Stand-ins for what the files of real installations name ---

std::string valueOf(const std::string& line, const std::string& key) {
    static const std::string blanks = " \t\r";
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos || line.find(key) != line.find_first_not_of(blanks)) {
        return {};
    }
    const std::size_t first = line.find_first_not_of(blanks, equals + 1);
    return first == std::string::npos ? "" : line.substr(first, line.find_last_not_of(blanks) - first + 1);
}

/// Only names that a folder can have.
void makeStandIns(const fs::path& cfg) {
    std::ifstream stream(cfg, std::ios::binary);
    for (std::string line; std::getline(stream, line);) {
        if (line.find("//") != std::string::npos) {
            continue;
        }
        for (const char* key : {"model", "texture"}) {
            if (const std::string value = valueOf(line, key); !value.empty()) {
                fs::create_directories(cfg.parent_path() / (std::string(key) + "." + value));
            }
        }
        if (const std::string value = valueOf(line, "sim"); !value.empty()) {
            writeFile(cfg.parent_path() / (value + ".air"), "");
        }
    }
    fs::create_directories(cfg.parent_path() / "model");
    fs::create_directories(cfg.parent_path() / "texture");
}

// --- Why a line stands in a report ---

std::size_t headersIn(const std::vector<std::string>& lines) {
    return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
        const bool names = line.find("[fltsim.") != std::string::npos || line.find("[FLTSIM.") != std::string::npos;
        return names && !line.starts_with("//");
    }));
}

std::vector<std::string> linesOfReport(const char* report) {
    return linesOf(fs::path("output") / report);
}

/// No code in front of " in " is one that is known.
template <typename IsKnown>
void expectUnknown(const char* report, IsKnown isKnown) {
    for (const std::string& line : linesOfReport(report)) {
        const std::string code = line.substr(0, line.find(" in real"));
        const std::size_t last = code.find_last_not_of(' ');
        EXPECT_FALSE(isKnown(code.substr(0, last == std::string::npos ? 0 : last + 1))) << line;
    }
}

fs::path pathFrom(std::string text) {
    std::replace(text.begin(), text.end(), '\\', '/');
    return platform::pathFromUtf8(text);
}

/// Empty, with a failure, where there is none.
std::string pathTextIn(const std::string& line, const char* root) {
    const std::size_t begin = line.find(root);
    const std::size_t end = begin == std::string::npos ? begin : asciiUpper(line).find(".CFG", begin);
    if (end == std::string::npos) {
        ADD_FAILURE() << "no path of a file in: " << line;
        return {};
    }
    return line.substr(begin, end + 4 - begin);
}

/// By the path text of a file, how many sections it has.
using Headers = std::map<std::string, std::size_t>;

/// 0, with a failure, of a file that is none of them.
std::size_t headersOf(const std::string& path, const Headers& headers) {
    const auto file = headers.find(path);
    if (file == headers.end()) {
        ADD_FAILURE() << "no such file: " << path;
        return 0;
    }
    return file->second;
}

/// The number in "[fltsim.N]", however the line goes on; -1 where there is none.
long numberOf(const std::string& line) {
    const std::string begin = "[fltsim.";
    const std::size_t at = line.find(begin);
    return at == std::string::npos ? -1 : std::strtol(line.c_str() + at + begin.size(), nullptr, 10);
}

void expectReasonsOfFiles(const char* root) {
    for (const std::string& line : linesOfReport(files)) {
        const std::vector<std::string> lines = linesOf(pathFrom(pathTextIn(line, root)));
        const bool hasModel = std::any_of(lines.begin(), lines.end(),
                                          [](const std::string& one) { return !valueOf(one, "atc_model").empty(); });
        const bool hasHighNumber =
            std::any_of(lines.begin(), lines.end(), [](const std::string& one) { return numberOf(one) > 10000; });
        EXPECT_TRUE(line.starts_with("Line atc_model= is missing") ? !hasModel : hasHighNumber) << line;
    }
}

void expectReasonsOfFixes() {
    const std::regex form("Model fix: (.*) found in .* changed into (.*)");
    for (const std::string& line : linesOfReport(fixes)) {
        std::smatch parts;
        ASSERT_TRUE(std::regex_match(line, parts, form)) << line;
        EXPECT_FALSE(gAllTypes.contains(parts[1].str())) << line;
        ASSERT_TRUE(gFixes.contains(parts[1].str())) << line;
        EXPECT_EQ(gFixes.find(parts[1].str())->second, parts[2].str()) << line;
    }
}

/// What the data base knows of the registration is what the livery was changed into.
void expectReasonsOfCorrections() {
    const std::regex form("(.*) (\\S+) (cargo|airl|model) (\\S+) => (\\S+)");
    for (const std::string& line : linesOfReport(corrections)) {
        std::smatch parts;
        ASSERT_TRUE(std::regex_match(line, parts, form)) << line;
        const auto record = gf_findRegcodeRecord(parts[2].str());
        ASSERT_TRUE(record) << line;
        const std::string airline(record->opr.empty() ? record->airl : record->opr);
        const std::map<std::string, std::string> known{
            {"cargo", record->cargo ? "true" : "false"}, {"airl", airline}, {"model", std::string(record->type)}};
        EXPECT_EQ(parts[5].str(), known.at(parts[3].str())) << line;
        EXPECT_NE(parts[4].str(), parts[5].str()) << line;
    }
}

/// Whether the line of the incomplete sections drops its section; its reason is looked at.
bool isJustifiedDrop(const std::string& line, const std::list<Livery>& liveries) {
    static const std::string missing = " or related path does not exist: ";
    if (const std::size_t at = line.find(missing); at != std::string::npos) {
        EXPECT_FALSE(fs::exists(pathFrom(line.substr(at + missing.size())))) << line;
        return true;
    }
    if (line.ends_with("' already exists")) {
        const std::size_t at = line.find(" title '") + 8;
        const std::string title = line.substr(at, line.rfind('\'') - at);
        EXPECT_THAT(titlesOf(liveries), testing::Contains(title)) << line;
        return true;
    }
    // What says only that an airline is not known keeps its section.
    const bool keeps = line.find("icao_airline is missing") != std::string::npos ||
                       line.find("has no airline and ") != std::string::npos;
    EXPECT_TRUE(keeps) << line;
    return false;
}

} // namespace

TEST_F(LiveryTrees, theSampleGivesTheFileThatIsExpected) {
    fs::copy(startFolder / "data/liveries", "liveries", fs::copy_options::recursive);
    setFolder(0, "liveries");
    gf_scanLiveries();
    const std::string expected = readFile(startFolder / "tests/liveries/expected/LiveriesScanned.xml");
    EXPECT_EQ(withoutDate(readFile(scannedLiveriesFile)), withoutDate(expected));
}

TEST_F(LiveryTrees, theSampleComesInEveryEncodingAndWithoutOne) {
    std::set<Charset> charsets;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(startFolder / "data/liveries")) {
        if (isCfgFileName(platform::utf8FromPath(entry.path().filename()))) {
            charsets.insert(charsetOfFile(entry.path()));
        }
    }
    EXPECT_THAT(charsets, testing::ElementsAre(Charset::ANSI, Charset::Unicode, Charset::Unicode_big_endian,
                                               Charset::UTF8_with_BOM, Charset::UTF8_without_BOM, Charset::none_found));
}

/// The report in the folder "output", and a whole line of it or the end of one.
struct Fault {
    const char* report;
    std::string text;
};

const std::string ofSections = "liveries\\faults\\sections\\aircraft.cfg";
const std::string ofB744 = "liveries\\airliners\\B744\\aircraft.cfg";
const std::string ofIvao = "liveries\\IVAO_MTL\\IVAO_B738w\\aircraft.cfg";

const std::vector<Fault> sampleFaults{
    // Both forms of files.
    {airlines, "QQQ          in " + ofSections + " [fltsim.0]\n"},
    {airlines, "QQQ          in " + ofIvao + " [fltsim.5]\n"},
    {models, "NOSUCH           in liveries\\faults\\unknown_model\\aircraft.cfg\n"},
    {models, "NOSUCH           in liveries\\IVAO_MTL\\IVAO_NOSUCH\\aircraft.cfg\n"},
    {files, "liveries\\faults\\high_number\\aircraft.cfg contains a [fltsim.x] section with a number < 0 or > 10000\n"},
    {withoutSections, "liveries\\faults\\no_sections\\aircraft.cfg\n"},
    {inlineRegcodes,
     "PH-TWG 'Sample second of one registration' => already in use by 'Sample first of one registration'\n"},
    {corrections, " N149ARS cargo false => true\n"},
    {corrections, " A7-BNB airl KLM => SAA\n"},
    {corrections, " A7-BNB model A320 => B738\n"},
    // Ordinary files alone.
    {fixes, "Model fix: A320N found in liveries\\faults\\fixed_model\\aircraft.cfg changed into A20N\n"},
    {files, "Line atc_model= is missing in [General] section of liveries\\faults\\no_model\\aircraft.cfg\n"},
    {sections, ofSections + " [fltsim.1] icao_airline is missing, or it has invalid info \n"},
    {sections, ofSections + " [fltsim.3] has more than one title key\n"},
    {sections, ofSections + " [fltsim.4] has more than one atc_parking_codes key\n"},
    {sections, ofSections + " [fltsim.5] has more than one atc_parking_types key\n"},
    {sections, ofSections + ", [fltsim.6], has more than one atc_id key\n"},
    {sections, ofSections + " [fltsim.9] or related path does not exist: liveries\\faults\\sections\\texture.LOST\n"},
    {sections, ofSections + " [fltsim.10] or related path does not exist: liveries\\faults\\sections\\model.LOST\n"},
    {sections, ofSections + " [fltsim.11] or related path does not exist: liveries\\faults\\sections\\LOST.air\n"},
    {sections, ofSections + " [fltsim.12] misses title\n"},
    {sections, "'" + ofB744 + "' 'Sample B744 nobody' has no airline and no regcode info\n"},
    {sections, "'" + ofB744 + "' 'Sample B744 unknown' has no airline and regcode not in dbase\n"},
    {sections, "\\aircraft.cfg [fltsim.0] title 'Sample in two files' already exists\n"},
    // IVAO files alone.
    {models, "                 in liveries\\IVAO_MTL\\IVAO_A320\\deep\\aircraft.cfg\n"},
    {sections, ofIvao + " misses airlinecode in title: Sample B738 of nobody, and no regcode\n"},
    {sections, ofIvao + " misses airlinecode in title: Sample B738 of nobody known, and regcode unknown XX-TWY\n"},
    {sections, "liveries\\IVAO_MTL\\IVAO_B738w\\texture.LOST [fltsim.6] does not exist\n"},
    {sections, ofIvao + " [fltsim.7] has more than one atc_parking_types key\n"},
    {sections, ofIvao + " [fltsim.8] misses title\n"},
    {sections, ofIvao + " title already exists: B738 AFR Sample\n"},
    {sections, ofIvao + " [fltsim.10] has more than one title key\n"},
    {sections, ofIvao + ", [fltsim.11], has more than one atc_id key\n"},
};

TEST_F(LiveryTrees, theSampleHasEachFaultThatAReportKnows) {
    fs::copy(startFolder / "data/liveries", "liveries", fs::copy_options::recursive);
    EXPECT_TRUE(lf_scanFolders({"liveries"}));
    gf_processScannedLiveries(); // its report is that of the registrations
    for (const Fault& fault : sampleFaults) {
        EXPECT_THAT(readFile(fs::path("output") / fault.report), HasSubstr(fault.text)) << fault.report;
    }
    for (const char* report : {files, fixes, corrections}) {
        ASSERT_THAT(linesOfReport(report), Not(IsEmpty())) << report;
    }
    expectReasonsOfFiles("liveries\\");
    expectReasonsOfFixes();
    expectReasonsOfCorrections();
    EXPECT_THAT(log_.lines(),
                testing::Contains("! No text encoding detected for liveries\\faults\\no_text\\aircraft.cfg"));
    EXPECT_THAT(log_.errors(), testing::Contains("==> fltsim num 99999999999 incorrect"));
}

TEST_F(LiveryTrees, ofRealFilesEachRefusalHasItsReason) {
    const fs::path source = startFolder / "../shared/data/liveries";
    if (!fs::is_directory(source)) {
        GTEST_SKIP() << "the files of real installations are not here";
    }
    Headers headers;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(source)) {
        if (!entry.is_regular_file() || entry.path().extension() == ".xml") {
            continue;
        }
        const fs::path copy = "real" / fs::relative(entry.path(), source);
        writeFile(copy, readFile(entry.path()));
        makeStandIns(copy);
        headers[platform::backslashText(copy)] = headersIn(linesOf(copy));
    }
    LIG_PRIORITIZE.value = false;
    EXPECT_TRUE(lf_scanFolders({"real"}));
    const std::list<Livery> liveries = readLiveries();
    std::cout << headers.size() << " files, " << liveries.size() << " liveries\n";
    for (const char* report : {airlines, models, fixes, files, sections, withoutSections, corrections}) {
        std::cout << linesOfReport(report).size() << " lines in " << report << '\n';
    }

    expectUnknown(airlines, [](const std::string& code) { return gf_isIcaoAirline(code); });
    expectUnknown(models, [](const std::string& code) { return gAllTypes.contains(code) || gFixes.contains(code); });
    expectReasonsOfFiles("real\\");
    expectReasonsOfFixes();
    expectReasonsOfCorrections();
    for (const std::string& line : linesOfReport(withoutSections)) {
        EXPECT_EQ(headersOf(line, headers), 0U) << line;
    }
    std::size_t refused = 0;
    for (const char* report : {models, files}) {
        for (const std::string& line : linesOfReport(report)) {
            refused += headersOf(pathTextIn(line, "real\\"), headers);
        }
    }
    for (const std::string& line : linesOfReport(sections)) {
        refused += isJustifiedDrop(line, liveries) ? 1 : 0;
    }
    std::size_t all = 0;
    for (const auto& [path, count] : headers) {
        all += count;
    }
    std::cout << all << " sections, of which refused " << refused << '\n';
    EXPECT_EQ(liveries.size() + refused, all);
    EXPECT_GT(liveries.size(), 100);
}
