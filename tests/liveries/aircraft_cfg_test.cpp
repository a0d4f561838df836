// tests/liveries/aircraft_cfg_test.cpp
#include "liveries/aircraft_cfg.h"

#include <optional>
#include <random>
#include <regex>

#include "liveries/cfg_section.h"
#include "tests/liveries/scan_test.h"
#include "tests/support/allocation_count.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr const char* path = "ac\\aircraft.cfg";
constexpr const char* ivaoPath = "IVAO_MTL\\IVAO_B738\\aircraft.cfg";

class AircraftCfg : public ScanTest {
protected:
    std::list<Livery> search(const std::filesystem::path& file) {
        return lf_searchLiveriesinFile(3, scannedFile(file), scan_);
    }
    std::list<Livery> searchText(std::string_view cfg) { return search(makeAircraft("ac", cfg)); }

    /// An A320 with one section.
    std::list<Livery> searchSection(std::string_view values) {
        return searchText(general("A320") + section(0, values));
    }
    std::list<Livery> searchSectionOf(std::string_view type, std::string_view values) {
        return searchText(general(type) + section(0, values));
    }

    std::vector<std::string> report(ScanReport which) const { return scan_.reports.lines(which); }
    bool nothingReported() const {
        for (std::size_t i = 0; i < scanReportCount; ++i) {
            if (!report(static_cast<ScanReport>(i)).empty()) {
                return false;
            }
        }
        return true;
    }

    ScanState scan_;
};

class IvaoCfg : public AircraftCfg {
protected:
    std::list<Livery> searchIvao(const std::filesystem::path& folder, std::string_view cfg) {
        // The rule wants something in front of the folder IVAO_MTL.
        const auto file = makeAircraft(folder, cfg);
        return lf_searchLiveriesinIVAOFile(3, scannedFile(file), scan_);
    }
    std::list<Livery> searchIvaoSection(std::string_view values) {
        return searchIvao("x/IVAO_MTL/IVAO_B738", section(0, values));
    }
    const std::string path_ = "x\\" + std::string(ivaoPath);
};

} // namespace

// --- A whole file ---

TEST_F(AircraftCfg, aSectionBecomesALivery) {
    EXPECT_THAT(searchSection("title=One\natc_parking_codes=KLM\natc_id=PH-ABC"),
                ElementsAre(Livery{"KLM", "A320", "One", "PH-ABC", 3, false}));
    EXPECT_TRUE(nothingReported());
    EXPECT_EQ(scan_.filesRead, 1);
    EXPECT_EQ(scan_.liveriesFound, 1);
}

TEST_F(AircraftCfg, blanksAndTabsAndLineEndsOfEitherKindAreNoPartOfAValue) {
    EXPECT_THAT(searchText("[fltsim.0]\r\n title\t=\t One two \t\r\nmodel = M\r\nsim= S\ntexture =T\n"
                           "atc_parking_codes\t= KLM\r\r\n[General]\natc_model\t=\tA320 \r\n"),
                ElementsAre(Livery{"KLM", "A320", "One two", "", 3, false}));
}

TEST_F(AircraftCfg, everyEncodingIsRead) {
    const std::string utf8 = general("A320") + section(0, "title=Z\xC3\xBCrich\natc_parking_codes=KLM");
    const auto ansi = general("A320") + section(0, "title=Z\xFCrich\natc_parking_codes=KLM");
    std::string little = "\xFF\xFE";
    std::string big = "\xFE\xFF";
    for (const char c : ansi) {
        little += {c, '\0'};
        big += {'\0', c};
    }
    for (const std::string& text : {utf8, "\xEF\xBB\xBF" + utf8, ansi, little, big}) {
        ScanState scan;
        const auto found = lf_searchLiveriesinFile(1, scannedFile(makeAircraft("ac", text)), scan);
        EXPECT_THAT(titlesOf(found), ElementsAre("Z\xC3\xBCrich"));
    }
}

/// A file of plain text is not converted; one with a mark is.
TEST_F(AircraftCfg, linesEndAtTheSamePlacesWithAndWithoutAConversion) {
    const std::string values = "]\r\nmodel=M\r\r\nsim=S\ntexture=T\n\r\natc_parking_codes=KLM\ntitle=";
    const std::string begin = "\n\r\r\n[General]\natc_model=A320\r\n[fltsim.0" + values + "One\r\n[fltsim.1" + values;
    for (const char* end : {"Two", "Two\n", "Two\r", "Two\r\n", "Two\n\n", "Two\rno", "\n", ""}) {
        ScanState plain;
        ScanState marked;
        const auto expected =
            lf_searchLiveriesinFile(1, scannedFile(makeAircraft("ac", "\xEF\xBB\xBF" + begin + end)), marked);
        EXPECT_EQ(lf_searchLiveriesinFile(1, scannedFile(makeAircraft("ac", begin + end)), plain), expected);
        EXPECT_EQ(plain.reports.lines(ScanReport::incompleteSections),
                  marked.reports.lines(ScanReport::incompleteSections));
        EXPECT_EQ(expected.size(), std::string_view(end).substr(0, 3) == "Two" && end != std::string("Two\rno") ? 2 : 1)
            << testing::PrintToString(end);
    }
}

TEST_F(AircraftCfg, aFileWithoutTextHasNoEncoding) {
    EXPECT_THAT(searchText(""), IsEmpty());
    EXPECT_THAT(searchText(std::string("a\0b", 3)), IsEmpty());
    const std::string line = std::string("! No text encoding detected for ") + path;
    EXPECT_THAT(log_.lines(), ElementsAre(line, line));
}

TEST_F(AircraftCfg, aFileThatIsGoneHasNoEncoding) {
    EXPECT_THAT(search("ac/gone.cfg"), IsEmpty());
    EXPECT_THAT(log_.lines(), ElementsAre("! No text encoding detected for ac\\gone.cfg"));
}

TEST_F(AircraftCfg, unicodeOfOddSizeHasNoLines) {
    EXPECT_THAT(searchText(std::string("\xFF\xFE[", 3)), IsEmpty());
    EXPECT_THAT(report(ScanReport::filesWithoutSections), ElementsAre(path));
}

TEST_F(AircraftCfg, aFileWithoutSectionsIsReported) {
    EXPECT_THAT(searchText(general("A320")), IsEmpty());
    EXPECT_THAT(report(ScanReport::filesWithoutSections), ElementsAre(path));
    EXPECT_THAT(report(ScanReport::invalidFiles), IsEmpty());
}

TEST_F(AircraftCfg, aFileWithNeitherSectionsNorModelStandsInBothReports) {
    EXPECT_THAT(searchText("[General]\n"), IsEmpty());
    EXPECT_THAT(report(ScanReport::filesWithoutSections), ElementsAre(path));
    EXPECT_THAT(report(ScanReport::invalidFiles),
                ElementsAre(std::string("Line atc_model= is missing in [General] section of ") + path));
}

TEST_F(AircraftCfg, survivesALineOfTenMegabytes) {
    const std::string longLine(10 * 1024 * 1024, 'x');
    EXPECT_THAT(titlesOf(searchText("// " + longLine + "\n" + general("A320") +
                                    section(0, "title=One\ndescription=" + longLine + "\natc_parking_codes=KLM"))),
                ElementsAre("One"));
}

TEST_F(AircraftCfg, aFileOfAbsurdSizeIsNotReadAndCostsItself) {
    const auto file = makeAircraft("ac", general("A320") + section(0, "title=One\natc_parking_codes=KLM"));
    std::filesystem::resize_file(file, (256 << 20) + 1);
    EXPECT_THAT(search(file), IsEmpty());
    EXPECT_THAT(log_.lines(), ElementsAre(std::string("! Failed reading ") + path));
}

namespace {

/// A file read line by line, as the rules are told; what its sections give, as "title type".
std::vector<std::string> readLineByLine(const std::vector<std::string>& lines) {
    static const std::regex header(R"(\s*(\[fltsim\.)(\d+)\]\s*)");
    static const std::regex model(R"(\s*(atc_model)\s*=\s*(.*\S)\s*)");
    std::optional<std::string> type;
    std::vector<std::vector<std::string>> titles; // by section
    bool inSection = false;
    for (const std::string& line : lines) {
        std::smatch match;
        if (!type && std::regex_match(line, match, model)) {
            type = match[2].str();
        }
        bool isHeader = false;
        if (!line.starts_with("//")) {
            if (std::regex_match(line, match, header)) {
                if (std::stoi(match[2].str()) > 10000) {
                    return {};
                }
                isHeader = true;
            } else {
                isHeader = line.find("[fltsim.") != std::string::npos || line.find("[FLTSIM.") != std::string::npos;
            }
        }
        if (isHeader) {
            titles.emplace_back();
        }
        inSection = isHeader || (inSection && line.find('[') == std::string::npos);
        if (inSection && line.starts_with("title=")) {
            titles.back().push_back(line.substr(6));
        }
    }
    std::vector<std::string> found;
    for (const std::vector<std::string>& section : titles) {
        if (type && section.size() == 1) {
            found.push_back(section.front() + " " + *type);
        }
    }
    return found;
}

/// A few lines of which a file may consist; the number goes into a title.
std::vector<std::string> drawnLines(std::mt19937& random, int number) {
    static const std::vector<std::string> single{
        "[fltsim.1]", " [fltsim.22] ",  "[FLTSIM.3]",          "//[fltsim.4]",
        "[General]",  "a [ in a line",  "x[fltsim.5]y",        "",
        "// comment", "atc_model=A320", " atc_model = B738\t", "xatc_model=C172",
        "atc_model=", "[fltsim.10000]", "[fltsim.x]",          "atc_model"};
    const std::size_t drawn = random() % (2 * single.size());
    if (drawn < single.size()) {
        return {single[drawn]};
    }
    if (random() % 60 == 0) {
        return {"[fltsim.10001]"};
    }
    std::vector<std::string> lines{"title=T" + std::to_string(number), "model=M", "sim=S", "texture=T",
                                   "atc_parking_codes=KLM"};
    if (random() % 3 != 0) {
        lines.insert(lines.begin(), "[fltsim." + std::to_string(number) + "]");
    }
    return lines;
}

} // namespace

TEST_F(AircraftCfg, sectionsAndTypeAreThoseOfAReadingLineByLine) {
    std::mt19937 random(11);
    std::size_t liveries = 0;
    for (int round = 0; round < 1000; ++round) {
        std::vector<std::string> lines;
        std::string text;
        for (int i = 0; i < 12; ++i) {
            for (const std::string& line : drawnLines(random, i)) {
                lines.push_back(line);
                text += line + (random() % 2 == 0 ? "\n" : "\r\n");
            }
        }
        ScanState scan; // a title counts once a scan
        std::vector<std::string> found;
        for (const Livery& livery : lf_searchLiveriesinFile(3, scannedFile(makeAircraft("ac", text)), scan)) {
            found.push_back(livery.title + " " + livery.type);
        }
        ASSERT_EQ(found, readLineByLine(lines)) << text;
        liveries += found.size();
    }
    EXPECT_GT(liveries, 1000u);
}

TEST_F(AircraftCfg, aStopTakesNoFurtherSection) {
    const auto file = makeAircraft("ac", general("A320") + section(0, "title=One\natc_parking_codes=KLM"));
    gf_userCloses();
    EXPECT_THAT(search(file), IsEmpty());
    EXPECT_TRUE(nothingReported());
    gf_resetExitReason();
    EXPECT_THAT(search(file), SizeIs(1)) << "the title was not taken either";
}

// --- Numbers ---

TEST_F(AircraftCfg, sectionTenThousandIsTakenAndTheNextStopsTheFile) {
    const std::string values = "title=One\natc_parking_codes=KLM";
    EXPECT_THAT(searchText(general("A320") + section(10000, values)), SizeIs(1));
    EXPECT_TRUE(nothingReported());
    EXPECT_THAT(searchText(general("A320") + section(10001, values)), IsEmpty());
    EXPECT_THAT(report(ScanReport::invalidFiles),
                ElementsAre(std::string(path) + " contains a [fltsim.x] section with a number < 0 or > 10000"));
}

TEST_F(AircraftCfg, theNumbersAreLookedAtBeforeTheType) {
    EXPECT_THAT(searchText(section(10001, "title=One")), IsEmpty());
    EXPECT_THAT(searchText(general("CONC") + section(10001, "title=One")), IsEmpty());
    const std::string fault = std::string(path) + " contains a [fltsim.x] section with a number < 0 or > 10000";
    EXPECT_THAT(report(ScanReport::invalidFiles), ElementsAre(fault, fault));
    EXPECT_THAT(report(ScanReport::invalidModelCodes), IsEmpty());
}

TEST_F(AircraftCfg, aNumberThatDoesNotFitStopsTheFile) {
    EXPECT_THAT(searchText(general("A320") + "[fltsim.2147483648]\n"), IsEmpty());
    EXPECT_THAT(log_.errors(), ElementsAre("==> fltsim num 2147483648 incorrect"));
    EXPECT_TRUE(nothingReported());
}

TEST_F(AircraftCfg, aHeaderInUpperCaseOrWithACommentStillBeginsASection) {
    const std::string values = "model=M\nsim=S\ntexture=T\natc_parking_codes=KLM\ntitle=";
    EXPECT_THAT(titlesOf(searchText(general("A320") + "[FLTSIM.99999]\n" + values + "One\n[fltsim.99999] // two\n" +
                                    values + "Two\n[fltsim.-1]\n" + values + "Three\n")),
                ElementsAre("One", "Two", "Three"));
    EXPECT_TRUE(nothingReported());
}

TEST_F(AircraftCfg, aHeaderInMixedCaseIsNone) {
    EXPECT_THAT(searchText(general("A320") + "[Fltsim.0]\ntitle=One\n"), IsEmpty());
    EXPECT_THAT(report(ScanReport::filesWithoutSections), ElementsAre(path));
}

TEST_F(AircraftCfg, aHeaderBehindSlashesIsNoneAndEndsTheSectionBefore) {
    EXPECT_THAT(
        searchText(general("A320") + section(0, "title=One\natc_parking_codes=KLM\n//[fltsim.1]\natc_id=PH-ABC")),
        ElementsAre(Livery{"KLM", "A320", "One", "", 3, false}));
}

TEST_F(AircraftCfg, aLineWithABracketEndsTheSection) {
    EXPECT_THAT(searchSection("title=One\natc_parking_codes=KLM\nui_variation=[1]\natc_id=PH-ABC"),
                ElementsAre(Livery{"KLM", "A320", "One", "", 3, false}));
}

// --- The type ---

TEST_F(AircraftCfg, theFirstModelLineCountsWhereverItStands) {
    EXPECT_THAT(searchText(section(0, "title=One\natc_parking_codes=KLM\natc_model=B738") + general("A320")),
                ElementsAre(Livery{"KLM", "B738", "One", "", 3, false}));
}

TEST_F(AircraftCfg, aFileWithoutModelLineIsInvalid) {
    EXPECT_THAT(searchText(section(0, "title=One")), IsEmpty());
    EXPECT_THAT(report(ScanReport::invalidFiles),
                ElementsAre(std::string("Line atc_model= is missing in [General] section of ") + path));
}

TEST_F(AircraftCfg, aWrongModelIsFixed) {
    EXPECT_THAT(searchSectionOf("A32", "title=One\natc_parking_codes=KLM"),
                ElementsAre(Livery{"KLM", "A320", "One", "", 3, false}));
    EXPECT_THAT(report(ScanReport::codeFixes),
                ElementsAre(std::string("Model fix: A32 found in ") + path + " changed into A320"));
}

TEST_F(AircraftCfg, anUnknownModelIsReported) {
    EXPECT_THAT(searchSectionOf("CONC", "title=One\natc_parking_codes=KLM"), IsEmpty());
    EXPECT_THAT(report(ScanReport::invalidModelCodes), ElementsAre(std::string("CONC             in ") + path));
}

// --- Airline ---

TEST_F(AircraftCfg, theFirstParkingCodeIsTheAirlineInUpperCase) {
    EXPECT_THAT(searchSection("title=One\natc_parking_codes= klm , DLH"),
                ElementsAre(Livery{"KLM", "A320", "One", "", 3, false}));
}

TEST_F(AircraftCfg, aFourthLetterXOrCIsCut) {
    EXPECT_EQ(searchSection("title=One\natc_parking_codes=KLMX").front().airl, "KLM");
    EXPECT_EQ(searchSection("title=Two\natc_parking_codes=dlhc").front().airl, "DLH");
    EXPECT_EQ(searchSection("title=Three\natc_parking_codes=KLMA").front().airl, "PVT");
}

TEST_F(AircraftCfg, anUnknownAirlineIsReportedAndTheLiveryIsPrivate) {
    EXPECT_THAT(searchSection("title=One\natc_parking_codes=QQQ"),
                ElementsAre(Livery{"PVT", "A320", "One", "", 3, false}));
    EXPECT_THAT(report(ScanReport::invalidAirlineCodes),
                ElementsAre(std::string("QQQ          in ") + path + " [fltsim.0]"));
    EXPECT_THAT(report(ScanReport::incompleteSections),
                ElementsAre(std::string(path) + " [fltsim.0] icao_airline is missing, or it has invalid info "));
}

TEST_F(AircraftCfg, anEmptyFirstAirlineIsReportedAsTwelveBlanks) {
    EXPECT_THAT(searchSection("title=One\natc_parking_codes=,KLM"),
                ElementsAre(Livery{"PVT", "A320", "One", "", 3, false}));
    EXPECT_THAT(report(ScanReport::invalidAirlineCodes),
                ElementsAre(std::string(12, ' ') + " in " + path + " [fltsim.0]"));
}

TEST_F(AircraftCfg, anAirlineThatIsMissingIsReported) {
    EXPECT_THAT(searchSection("title=One"), SizeIs(1));
    EXPECT_THAT(report(ScanReport::invalidAirlineCodes), IsEmpty());
    EXPECT_THAT(report(ScanReport::incompleteSections),
                ElementsAre(std::string(path) + " [fltsim.0] icao_airline is missing, or it has invalid info "));
}

TEST_F(AircraftCfg, theCodeRfoDropsTheSectionWithoutAWord) {
    EXPECT_THAT(searchSection("title=One\natc_parking_codes=rfo"), IsEmpty());
    EXPECT_TRUE(nothingReported());
}

TEST_F(AircraftCfg, aGenericLiveryHasNoRegistration) {
    EXPECT_THAT(searchSection("title=One\natc_parking_codes=ZZZ\natc_id=PH-ABC"),
                ElementsAre(Livery{"ZZZ", "A320", "One", "", 3, false}));
}

TEST_F(AircraftCfg, aKnownRegistrationTellsTheAirline) {
    EXPECT_THAT(searchSection("title=One\natc_id=PH-BXA"),
                ElementsAre(Livery{"KLM", "A320", "One", "PH-BXA", 3, false}));
}

TEST_F(AircraftCfg, aKnownRegistrationWithoutAirlineIsPrivate) {
    EXPECT_THAT(searchSectionOf("C172", "title=One\natc_id=D-ECAR"),
                ElementsAre(Livery{"PVT", "C172", "One", "D-ECAR", 3, false}));
}

TEST_F(AircraftCfg, aRegistrationInTheTitleOfAPrivateAircraftIsFound) {
    EXPECT_THAT(searchSectionOf("C172", "title=Skyhawk N12AB"),
                ElementsAre(Livery{"PVT", "C172", "Skyhawk N12AB", "N12AB", 3, false}));
}

TEST_F(AircraftCfg, aHeavyWithoutAirlineAndRegistrationIsReported) {
    EXPECT_THAT(searchSectionOf("B744", "title=One"), ElementsAre(Livery{"PVT", "B744", "One", "", 3, false}));
    EXPECT_THAT(report(ScanReport::incompleteSections),
                Contains(std::string("'") + path + "' 'One' has no airline and no regcode info"));
}

TEST_F(AircraftCfg, aHeavyWithoutAirlineAndWithAnUnknownRegistrationIsReported) {
    EXPECT_THAT(searchSectionOf("B744", "title=One\natc_id=PH-QQQ"),
                ElementsAre(Livery{"PVT", "B744", "One", "PH-QQQ", 3, false}));
    EXPECT_THAT(report(ScanReport::incompleteSections),
                Contains(std::string("'") + path + "' 'One' has no airline and regcode not in dbase"));
}

TEST_F(AircraftCfg, onlyHeaviesAreReportedForTheirMissingAirline) {
    EXPECT_THAT(searchSection("title=One\natc_id=PH-QQQ"),
                ElementsAre(Livery{"PVT", "A320", "One", "PH-QQQ", 3, false}));
    EXPECT_THAT(report(ScanReport::incompleteSections), SizeIs(1));
}

// --- Registration and cargo ---

TEST_F(AircraftCfg, aRegistrationEndsAtASemicolon) {
    EXPECT_EQ(searchSection("title=One\natc_parking_codes=KLM\natc_id=PH-ABC;the first").front().atcid, "PH-ABC");
    EXPECT_EQ(searchSection("title=Two\natc_parking_codes=KLM\natc_id=PH-ABD \t; the second").front().atcid, "PH-ABD")
        << "with a blank at its end no aircraft would ever have it";
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(AircraftCfg, twoRegistrationsAreNoneAndNoFault) {
    EXPECT_EQ(searchSection("title=One\natc_parking_codes=KLM\natc_id=PH-ABC,PH-ABD").front().atcid, "");
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(AircraftCfg, anInvalidRegistrationIsLoggedAndLeftOut) {
    int number = 0;
    for (const char* id : {"PH-*", "PH-ABC,", "PH-ABC, ", "PH-ABC, ,PH-ABD", "ABCDEFGHIJKLM", "; none"}) {
        const std::string title = std::to_string(++number);
        EXPECT_EQ(searchSection("title=" + title + "\natc_parking_codes=KLM\natc_id=" + id).front().atcid, "") << id;
    }
    EXPECT_EQ(searchSection("title=12\natc_parking_codes=KLM\natc_id=ABCDEFGHIJKL").front().atcid, "ABCDEFGHIJKL");
    EXPECT_EQ(searchSection("title=letters\natc_parking_codes=KLM\natc_id=\u00C4BCDEFGHIJKL").front().atcid,
              "\u00C4BCDEFGHIJKL");
    EXPECT_THAT(log_.lines(),
                ElementsAre("invalid atc_id=PH-* in: ac\\aircraft.cfg", "invalid atc_id=PH-ABC, in: ac\\aircraft.cfg",
                            "invalid atc_id=PH-ABC, in: ac\\aircraft.cfg",
                            "invalid atc_id=PH-ABC, ,PH-ABD in: ac\\aircraft.cfg",
                            "invalid atc_id=ABCDEFGHIJKLM in: ac\\aircraft.cfg",
                            "invalid atc_id= in: ac\\aircraft.cfg"));
}

TEST_F(AircraftCfg, cargoInTheParkingTypesMakesAFreighter) {
    EXPECT_TRUE(searchSection("title=One\natc_parking_codes=KLM\natc_parking_types=ramp,mil_cargo").front().cargo);
    EXPECT_FALSE(searchSection("title=Two\natc_parking_codes=KLM\natc_parking_types=GATE").front().cargo);
}

// --- What drops a section ---

TEST_F(AircraftCfg, aSecondLineOfAKeyDropsTheSection) {
    const std::string begin = std::string(path) + " [fltsim.0] has more than one ";
    EXPECT_THAT(searchSection("title=One\ntitle=Two\natc_parking_codes=KLM"), IsEmpty());
    EXPECT_THAT(searchSection("title=One\natc_parking_codes=KLM\natc_parking_codes=KLM"), IsEmpty());
    EXPECT_THAT(searchSection("title=One\natc_parking_types=GATE\natc_parking_types=GATE"), IsEmpty());
    EXPECT_THAT(searchSection("title=One\natc_id=PH-*\natc_id=PH-ABC"), IsEmpty());
    EXPECT_THAT(report(ScanReport::incompleteSections),
                ElementsAre(begin + "title key", begin + "atc_parking_codes key", begin + "atc_parking_types key",
                            std::string(path) + ", [fltsim.0], has more than one atc_id key"));
}

TEST_F(AircraftCfg, ofModelAirAndTextureTheFirstCounts) {
    EXPECT_THAT(searchSection("title=One\natc_parking_codes=KLM\nmodel=no\nsim=no\ntexture=no"), SizeIs(1));
}

TEST_F(AircraftCfg, modelAirAndTextureMustBeThere) {
    const std::string end = "title=One\natc_parking_codes=KLM\n";
    EXPECT_THAT(searchText(general("A320") + "[fltsim.0]\nmodel=X\nsim=S\ntexture=T\n" + end), IsEmpty());
    EXPECT_THAT(searchText(general("A320") + "[fltsim.1]\nmodel=M\nsim=X\ntexture=T\n" + end), IsEmpty());
    EXPECT_THAT(searchText(general("A320") + "[fltsim.2]\nmodel=M\nsim=S\ntexture=X\n" + end), IsEmpty());
    const std::string middle = "] or related path does not exist: ac\\";
    EXPECT_THAT(report(ScanReport::incompleteSections),
                ElementsAre(std::string(path) + " [fltsim.0" + middle + "model.X",
                            std::string(path) + " [fltsim.1" + middle + "X.air",
                            std::string(path) + " [fltsim.2" + middle + "texture.X"));
}

TEST_F(AircraftCfg, aFileIsNoModelAndAFolderNoAirFile) {
    writeFile("ac/model.file", "");
    std::filesystem::create_directories("ac/folder.air");
    const std::string end = "texture=T\ntitle=One\natc_parking_codes=KLM\n";
    EXPECT_THAT(searchText(general("A320") + "[fltsim.0]\nmodel=file\nsim=S\n" + end), IsEmpty());
    EXPECT_THAT(searchText(general("A320") + "[fltsim.0]\nmodel=M\nsim=folder\n" + end), IsEmpty());
}

TEST_F(AircraftCfg, aValueThatNamesARootLeadsNowhereElse) {
    writeFile("elsewhere/S.air", "");
    const std::string root = std::filesystem::absolute("elsewhere/S").string();
    const std::string end = "\nmodel=M\ntexture=T\natc_parking_codes=KLM\ntitle=";
    EXPECT_THAT(searchText(general("A320") + "[fltsim.0]\nsim=" + root + end + "One"), IsEmpty());
    EXPECT_THAT(searchText(general("A320") + "[fltsim.0]\nsim=\\S" + end + "Two"), SizeIs(1));
}

TEST_F(AircraftCfg, withoutAValueTheFolderHasNoEnding) {
    std::filesystem::create_directories("ac/model");
    std::filesystem::create_directories("ac/texture");
    EXPECT_THAT(searchText(general("A320") + "[fltsim.0]\nmodel=\nsim=S\ntexture=\ntitle=One\natc_parking_codes=KLM"),
                SizeIs(1));
}

TEST_F(AircraftCfg, theNamesThatTheWalkSawSpareTheDisk) {
    writeFile("ac/aircraft.cfg", general("A320") + section(0, "title=One\natc_parking_codes=KLM"));
    ScannedFile file = scannedFile("ac/aircraft.cfg");
    EXPECT_THAT(lf_searchLiveriesinFile(1, file, scan_), IsEmpty());
    file.names = std::make_shared<FolderNames>(FolderNames{{"model.M", "texture.T"}, {"S.air"}});
    EXPECT_THAT(lf_searchLiveriesinFile(1, file, scan_), SizeIs(1));
}

TEST_F(AircraftCfg, airlineThenFilesThenTitleAreLookedAt) {
    EXPECT_THAT(searchText(general("A320") + "[fltsim.0]\nmodel=M\nsim=S\ntexture=X\n"), IsEmpty());
    const std::string begin = std::string(path) + " [fltsim.0] ";
    EXPECT_THAT(report(ScanReport::incompleteSections),
                ElementsAre(begin + "icao_airline is missing, or it has invalid info ",
                            begin + "or related path does not exist: ac\\texture.X"));
}

TEST_F(AircraftCfg, aSectionWithoutTitleIsReported) {
    EXPECT_THAT(searchSection("atc_parking_codes=KLM"), IsEmpty());
    EXPECT_THAT(report(ScanReport::incompleteSections), ElementsAre(std::string(path) + " [fltsim.0] misses title"));
}

TEST_F(AircraftCfg, aTitleThatMustNotBeUsedIsDroppedWithoutAWord) {
    scan_.dontUseTitles.insert("One");
    EXPECT_THAT(searchSection("title=One\natc_parking_codes=KLM"), IsEmpty());
    EXPECT_TRUE(nothingReported());
}

TEST_F(AircraftCfg, aTitleStandsOnceInAScan) {
    EXPECT_THAT(searchSection("title=One\natc_parking_codes=KLM"), SizeIs(1));
    EXPECT_THAT(searchSection("title=One\natc_parking_codes=DLH"), IsEmpty());
    EXPECT_THAT(report(ScanReport::incompleteSections),
                ElementsAre(std::string(path) + " [fltsim.0] title 'One' already exists"));
}

/// As the file of the scan, where a text ends at a zero.
TEST_F(AircraftCfg, aTitleEndsAtAZero) {
    const std::string zero(1, '\0');
    const std::string text = "\xEF\xBB\xBF" + general("A320");
    const auto titled = [&text](const std::string& title) {
        return text + section(0, "atc_parking_codes=KLM\ntitle=" + title);
    };
    EXPECT_THAT(titlesOf(searchText(titled("One " + zero + "a"))), ElementsAre("One"));
    EXPECT_THAT(titlesOf(searchText("\xEF\xBB\xBF" + general("A320" + zero) +
                                    section(0, "atc_parking_codes=KLM\ntitle=Of a type that ends at one"))),
                ElementsAre("Of a type that ends at one"));
    EXPECT_THAT(searchText(titled("One" + zero + "b")), IsEmpty());
    EXPECT_THAT(searchText(titled("One")), IsEmpty());
    EXPECT_THAT(searchText(titled(zero + "c")), IsEmpty());
    scan_.dontUseTitles.insert("Two");
    EXPECT_THAT(searchText(titled("Two" + zero)), IsEmpty());
    const std::string begin = std::string(path) + " [fltsim.0] ";
    EXPECT_THAT(report(ScanReport::incompleteSections),
                ElementsAre(begin + "title 'One' already exists", begin + "title 'One' already exists",
                            begin + "misses title"));
}

// --- What there is no memory for ---

TEST_F(AircraftCfg, aFileThatThrowsCostsItself) {
    const std::string longText = "//" + std::string(100000, 'x') + "\n" + general("A320");
    const auto file = makeAircraft("ac", longText + section(0, "title=One\natc_parking_codes=KLM"));
    {
        const FailingAllocation noMemoryForTheFile(longText.size());
        EXPECT_THAT(search(file), IsEmpty());
    }
    EXPECT_THAT(log_.lines(), ElementsAre("! Exception in lf_searchLiveriesinFile ac\\aircraft.cfg: std::bad_alloc"));
    EXPECT_THAT(titlesOf(searchText(longText + section(0, "title=Two\natc_parking_codes=KLM"))), ElementsAre("Two"));
}

TEST_F(IvaoCfg, aFileThatThrowsCostsItself) {
    const std::string longText = "//" + std::string(100000, 'x') + "\n";
    const auto file = makeAircraft("x/IVAO_MTL/IVAO_B738", longText + section(0, "title=B738 KLM 1"));
    {
        const FailingAllocation noMemoryForTheFile(longText.size());
        EXPECT_THAT(lf_searchLiveriesinIVAOFile(3, scannedFile(file), scan_), IsEmpty());
    }
    EXPECT_THAT(log_.lines(), ElementsAre("! Exception in lf_searchLiveriesinIVAOFile " + path_ + ": std::bad_alloc"));
    EXPECT_THAT(searchIvao("x/IVAO_MTL/IVAO_B738", longText + section(0, "title=B738 KLM 2")), SizeIs(1));
}

TEST_F(AircraftCfg, aSectionThatThrowsCostsItself) {
    const ScannedFile file = scannedFile(makeAircraft("ac", ""));
    const std::string title = "title=" + std::string(5000, 'x');
    const auto livery = [&](std::string_view titleLine) {
        const std::vector<std::string_view> lines{"[fltsim.0]", "model=M", "sim=S",
                                                  "texture=T",  titleLine, "atc_parking_codes=KLM"};
        return lf_procesFltSimSection(SectionForm::ordinary, lines, {file, "A320", 1}, scan_);
    };
    {
        const FailingAllocation noMemoryForTheTitle(5000);
        EXPECT_FALSE(livery(title));
    }
    EXPECT_THAT(log_.lines(),
                ElementsAre("Exception in lf_procesFltSimSection: std::bad_alloc, file: ac\\aircraft.cfg"));
    EXPECT_TRUE(livery(title + "y"));
}

// --- The IVAO form ---

TEST_F(IvaoCfg, theTypeIsInThePathAndTheAirlineInTheTitle) {
    EXPECT_THAT(
        searchIvaoSection("title=B738 KLM Royal\natc_id=PH-ABC\natc_parking_types=CARGO\natc_parking_codes=DLH"),
        ElementsAre(Livery{"KLM", "B738", "B738 KLM Royal", "PH-ABC", 3, false}));
    EXPECT_TRUE(nothingReported());
}

TEST_F(IvaoCfg, folderCodesAreShortenedToTypes) {
    EXPECT_EQ(ivaoModel("B738w"), "B738");
    EXPECT_EQ(ivaoModel("B744F"), "B744");
    EXPECT_EQ(ivaoModel("T154M"), "T154");
    EXPECT_EQ(ivaoModel("T154B2"), "T154");
    EXPECT_EQ(ivaoModel("GLID_SH"), "GLID");
    for (const char* code : {"GLID_A13", "GLID_A25", "GLID_KA6", "GLID_KA8", "GLID_L13"}) {
        EXPECT_EQ(ivaoModel(code), "GLID");
    }
    EXPECT_EQ(ivaoModel("A320"), "A320");
}

TEST_F(IvaoCfg, theFolderCodeTellsTheType) {
    EXPECT_EQ(searchIvao("x/IVAO_MTL/IVAO_GLID_KA8", section(0, "title=GLID DLH 1")).front().type, "GLID");
    EXPECT_EQ(searchIvao("x/IVAO_MTL/IVAO_T154B2", section(0, "title=T154 DLH 1")).front().type, "T154");
    EXPECT_EQ(searchIvao("x/IVAO_MTL/IVAO_A32", section(0, "title=A320 DLH 1")).front().type, "A320");
    EXPECT_THAT(report(ScanReport::codeFixes),
                ElementsAre("Model fix: A32 found in x\\IVAO_MTL\\IVAO_A32\\aircraft.cfg changed into A320"));
}

TEST_F(IvaoCfg, anUnknownOrMissingFolderCodeIsReported) {
    EXPECT_THAT(searchIvao("x/IVAO_MTL/IVAO_CONC", section(0, "title=CONC KLM")), IsEmpty());
    EXPECT_THAT(searchIvao("x/ivao_x-csl/B738", section(0, "title=B738 KLM")), IsEmpty());
    EXPECT_THAT(report(ScanReport::invalidModelCodes),
                ElementsAre("CONC             in x\\IVAO_MTL\\IVAO_CONC\\aircraft.cfg",
                            "                 in x\\ivao_x-csl\\B738\\aircraft.cfg"));
}

TEST_F(IvaoCfg, anUnknownAirlineInTheTitleIsReportedAndTheRegistrationMayStillTellOne) {
    EXPECT_THAT(searchIvaoSection("title=B738 QQQ\natc_id=PH-BXA"),
                ElementsAre(Livery{"KLM", "B738", "B738 QQQ", "PH-BXA", 3, false}));
    EXPECT_THAT(report(ScanReport::incompleteSections), IsEmpty());
    EXPECT_THAT(searchIvaoSection("title=B738 RRR\natc_id=PH-QQQ"), IsEmpty());
    EXPECT_THAT(searchIvaoSection("title=B738 SSS"), IsEmpty());
    EXPECT_THAT(report(ScanReport::invalidAirlineCodes),
                ElementsAre("QQQ          in " + path_ + " [fltsim.0]", "RRR          in " + path_ + " [fltsim.0]",
                            "SSS          in " + path_ + " [fltsim.0]"));
    EXPECT_THAT(report(ScanReport::incompleteSections), IsEmpty());
}

TEST_F(IvaoCfg, aGenericLiveryHasNoRegistration) {
    EXPECT_THAT(searchIvaoSection("title=B738 ZZZ\natc_id=PH-ABC"),
                ElementsAre(Livery{"ZZZ", "B738", "B738 ZZZ", "", 3, false}));
}

TEST_F(IvaoCfg, aKnownRegistrationTellsTheAirline) {
    EXPECT_THAT(searchIvaoSection("title=One\natc_id=PH-BXA"),
                ElementsAre(Livery{"KLM", "B738", "One", "PH-BXA", 3, false}));
}

TEST_F(IvaoCfg, withoutAnyAirlineTheTitleIsReported) {
    EXPECT_THAT(searchIvaoSection("title=One\natc_id=PH-QQQ"), IsEmpty());
    EXPECT_THAT(searchIvaoSection("title=Two"), IsEmpty());
    EXPECT_THAT(report(ScanReport::incompleteSections),
                ElementsAre(path_ + " misses airlinecode in title: One, and regcode unknown PH-QQQ",
                            path_ + " misses airlinecode in title: Two, and no regcode"));
}

TEST_F(IvaoCfg, aSecondLineOfAKeyDropsTheSection) {
    EXPECT_THAT(searchIvaoSection("title=B738 KLM\ntitle=B738 KLM"), IsEmpty());
    EXPECT_THAT(searchIvaoSection("title=B738 KLM\natc_parking_types=GATE\natc_parking_types=GATE"), IsEmpty());
    EXPECT_THAT(searchIvaoSection("title=B738 KLM\natc_id=A\natc_id=B"), IsEmpty());
    EXPECT_THAT(report(ScanReport::incompleteSections),
                ElementsAre(path_ + " [fltsim.0] has more than one title key",
                            path_ + " [fltsim.0] has more than one atc_parking_types key",
                            path_ + ", [fltsim.0], has more than one atc_id key"));
}

TEST_F(IvaoCfg, aSecondLineOfTheParkingCodesIsNoFault) {
    EXPECT_THAT(searchIvaoSection("title=B738 KLM\natc_parking_codes=A\natc_parking_codes=B"), SizeIs(1));
}

TEST_F(IvaoCfg, anInvalidRegistrationIsLogged) {
    EXPECT_THAT(searchIvaoSection("title=B738 KLM\natc_id=PH-*"), SizeIs(1));
    EXPECT_THAT(log_.lines(), ElementsAre("invalid atc_id=PH-* in " + path_));
}

TEST_F(IvaoCfg, modelAirAndTextureMustBeThere) {
    EXPECT_THAT(searchIvao("x/IVAO_MTL/IVAO_B738", "[fltsim.7]\nmodel=X\nsim=S\ntexture=T\ntitle=B738 KLM\n"
                                                   "[fltsim.8]\nmodel=M\nsim=X\ntexture=T\ntitle=B738 KLM\n"
                                                   "[fltsim.9]\nmodel=M\nsim=S\ntexture=X\ntitle=B738 KLM\n"),
                IsEmpty());
    EXPECT_THAT(report(ScanReport::incompleteSections),
                ElementsAre("x\\IVAO_MTL\\IVAO_B738\\model.X [fltsim.7] does not exist",
                            "x\\IVAO_MTL\\IVAO_B738\\X.air [fltsim.8] does not exist",
                            "x\\IVAO_MTL\\IVAO_B738\\texture.X [fltsim.9] does not exist"));
}

TEST_F(IvaoCfg, aSectionNeedsATitleThatMayBeUsedAndIsNew) {
    scan_.dontUseTitles.insert("B738 DLH");
    EXPECT_THAT(searchIvaoSection("atc_id=PH-BXA"), IsEmpty());
    EXPECT_THAT(searchIvaoSection("title=B738 DLH"), IsEmpty());
    EXPECT_THAT(searchIvaoSection("title=B738 KLM"), SizeIs(1));
    EXPECT_THAT(searchIvaoSection("title=B738 KLM"), IsEmpty());
    EXPECT_THAT(report(ScanReport::incompleteSections),
                ElementsAre(path_ + " [fltsim.0] misses title", path_ + " title already exists: B738 KLM"));
}
