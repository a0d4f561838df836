// tests/liveries/sample_liveries_test.cpp
// Whole trees of liveries: the sample of ours, with what must come of it, and the files of real installations.
#include <algorithm>
#include <fstream>
#include <iostream>
#include <map>

#include "liveries/livery_file.h"
#include "liveries/livery_scan.h"
#include "liveries/reference_data.h"
#include "liveries/scan_state.h"
#include "platform/files.h"
#include "tests/liveries/scan_test.h"

namespace fs = std::filesystem;

using testing::HasSubstr;

namespace {

const fs::path startFolder = fs::current_path();

class LiveryTrees : public ScanTest {
protected:
    LiveryTrees() {
        resetReferenceTables();
        EXPECT_TRUE(lf_readReferenceXml(startFolder / "data/dbase.xml", [](std::string_view) {}));
    }

    static std::vector<std::string> linesOf(const fs::path& file) {
        std::vector<std::string> lines;
        std::ifstream stream(file, std::ios::binary);
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    /// The lines of each report that the scan wrote, by the name of its file.
    static std::map<std::string, std::size_t> reportCounts() {
        std::map<std::string, std::size_t> counts;
        for (const char* folder : {"output/errors", "output/info"}) {
            if (!fs::is_directory(folder)) {
                continue;
            }
            for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
                counts[entry.path().filename().string()] = linesOf(entry.path()).size();
            }
        }
        return counts;
    }
};

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

/// No code in front of " in " is one that is known.
template <typename IsKnown>
void expectUnknown(const char* report, IsKnown isKnown) {
    std::ifstream stream(fs::path("output/errors") / report, std::ios::binary);
    for (std::string line; std::getline(stream, line);) {
        const std::string code = line.substr(0, line.find(" in real"));
        const std::size_t last = code.find_last_not_of(' ');
        EXPECT_FALSE(isKnown(code.substr(0, last == std::string::npos ? 0 : last + 1))) << line;
    }
}

/// Whether the line of the incomplete sections drops its section; its reason is looked at.
bool isJustifiedDrop(const std::string& line, const std::list<Livery>& liveries) {
    static const std::string missing = " or related path does not exist: ";
    if (const std::size_t at = line.find(missing); at != std::string::npos) {
        std::string path = line.substr(at + missing.size());
        std::replace(path.begin(), path.end(), '\\', '/');
        EXPECT_FALSE(fs::exists(path)) << line;
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

TEST_F(LiveryTrees, theSampleHasEachFaultThatAReportKnows) {
    fs::copy(startFolder / "data/liveries", "liveries", fs::copy_options::recursive);
    EXPECT_TRUE(lf_scanFolders({"liveries"}));
    std::string reports;
    for (const auto& [name, count] : reportCounts()) {
        reports +=
            readFile((fs::exists(fs::path("output/errors") / name) ? "output/errors" : "output/info") / fs::path(name));
    }
    for (const char* fault : {
             "QQQ          in liveries\\faults\\sections\\aircraft.cfg [fltsim.0]\n",
             "NOSUCH           in liveries\\faults\\unknown_model\\aircraft.cfg\n",
             "                 in liveries\\IVAO_MTL\\IVAO_A320\\deep\\aircraft.cfg\n",
             "Model fix: A320N found in ",
             "Line atc_model= is missing in [General] section of ",
             " contains a [fltsim.x] section with a number < 0 or > 10000\n",
             " has more than one title key\n",
             " has more than one atc_parking_codes key\n",
             " has more than one atc_parking_types key\n",
             ", has more than one atc_id key\n",
             " icao_airline is missing, or it has invalid info \n",
             " or related path does not exist: liveries\\faults\\sections\\texture.LOST\n",
             " or related path does not exist: liveries\\faults\\sections\\model.LOST\n",
             " or related path does not exist: liveries\\faults\\sections\\LOST.air\n",
             "\\texture.LOST [fltsim.6] does not exist\n",
             " misses title\n",
             "' has no airline and no regcode info\n",
             "' has no airline and regcode not in dbase\n",
             " title 'Sample in two files' already exists\n",
             " misses airlinecode in title: Sample B738 of nobody, and no regcode\n",
             ", and regcode unknown XX-TWY\n",
             "liveries\\faults\\no_sections\\aircraft.cfg\n",
             " N149ARS cargo false => true\n",
             " A7-BNB airl KLM => SAA\n",
             " A7-BNB model A320 => B738\n",
         }) {
        EXPECT_THAT(reports, HasSubstr(fault));
    }
    EXPECT_THAT(log_.lines(),
                testing::Contains("! No text encoding detected for liveries\\faults\\no_text\\aircraft.cfg"));
    EXPECT_THAT(log_.errors(), testing::Contains("==> fltsim num 99999999999 incorrect"));
}

TEST_F(LiveryTrees, ofRealFilesEachRefusalHasItsReason) {
    const fs::path source = startFolder / "../shared/data/liveries";
    if (!fs::is_directory(source)) {
        GTEST_SKIP() << "the files of real installations are not here";
    }
    std::map<std::string, std::size_t> headers; // of each file, by its path text
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
    for (const auto& [name, count] : reportCounts()) {
        std::cout << count << " lines in " << name << '\n';
    }

    expectUnknown("InvalidAirlineCodes.txt", [](const std::string& code) { return gf_isIcaoAirline(code); });
    expectUnknown("InvalidAircraftCodes.txt",
                  [](const std::string& code) { return gAllTypes.contains(code) || gFixes.contains(code); });
    std::size_t refused = 0;
    for (const char* name : {"InvalidAircraftCodes.txt", "InvalidAircraftCfgFiles.txt"}) {
        for (const std::string& line : linesOf(fs::path("output/errors") / name)) {
            refused += headers[line.substr(line.find("real\\"))];
        }
    }
    for (const std::string& line : linesOf("output/errors/IncompleFltsimSections.txt")) {
        refused += isJustifiedDrop(line, liveries) ? 1 : 0;
    }
    std::size_t sections = 0;
    for (const auto& [path, count] : headers) {
        sections += count;
    }
    std::cout << sections << " sections, of which refused " << refused << '\n';
    EXPECT_EQ(liveries.size() + refused, sections);
    EXPECT_GT(liveries.size(), 100);
}
