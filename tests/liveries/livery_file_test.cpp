// tests/liveries/livery_file_test.cpp
#include "liveries/livery_file.h"

#include <chrono>

#include <fmt/format.h>

#include "core/program_info.h"
#include "core/program_version.h"
#include "core/user_error.h"
#include "platform/clock.h"
#include "tests/liveries/scan_test.h"
#include "tests/support/message_of.h"

namespace fs = std::filesystem;

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class LiveryFile : public ScanTest {
protected:
    static int readCode() {
        try {
            lf_readLiveries();
        } catch (const kvd::UserErrorException& error) {
            return error.code();
        }
        return 0;
    }
    static void writeXml(std::string_view liveries) {
        writeFile(scannedLiveriesFile, "<?xml version=\"1.0\"?><root>" + std::string(liveries) + "</root>");
    }
};

} // namespace

TEST_F(LiveryFile, holdsTheLiveriesInTheirOrder) {
    Liveries = {{"KLM", "A320", "One & \"only\"", "PH-ABC", 4, false}, {"DLH", "B744", "Two", "", 1, true}};
    lf_writeLiveries();
    const std::string text = readFile(scannedLiveriesFile);
    const std::size_t liveries = text.find("\t<liveries>");
    ASSERT_NE(liveries, std::string::npos);
    EXPECT_EQ(text.substr(liveries),
              "\t<liveries>\n"
              "\t\t<liv airl=\"KLM\" type=\"A320\" title=\"One &amp; &quot;only&quot;\" atcid=\"PH-ABC\" />\n"
              "\t\t<liv airl=\"DLH\" type=\"B744\" cargo=\"true\" title=\"Two\" />\n"
              "\t</liveries>\n"
              "</root>\n");
    EXPECT_THAT(log_.lines(), ElementsAre("2 liveries in output\\LiveriesScanned.xml"));
}

TEST_F(LiveryFile, beginsWithWhoWroteItAndWhen) {
    const platform::ManualClock clock(std::chrono::sys_days(std::chrono::year(2026) / 1 / 2) + std::chrono::hours(3));
    lf_writeLiveries();
    EXPECT_THAT(readFile(scannedLiveriesFile),
                testing::StartsWith("<?xml version=\"1.0\"?>\n<root>\n\t<meta>\n"
                                    "\t\t<info name=\"author\" value=\"Tarnwing_P3D\" />\n"
                                    "\t\t<info name=\"version\" value=\"" +
                                    versionText(thisVersion) +
                                    "\" />\n"
                                    "\t\t<info name=\"date\" value=\"Fri Jan 02 03:00:00 2026\" />\n"
                                    "\t\t<info name=\"copyright\" value=\"" +
                                    copyrightText + "\" />\n\t</meta>\n"));
}

TEST_F(LiveryFile, isReadAsItWasWrittenButForTheFolder) {
    const std::list<Livery> written{{"KLM", "A320", "Z\xC3\xBCrich\twith a tab", "PH-ABC", 0, false},
                                    {"PVT", "C172", "<Two>", "", 0, true}};
    Liveries = written;
    Liveries.front().scan = 7;
    lf_writeLiveries();
    EXPECT_EQ(readLiveries(), written);
    EXPECT_THAT(log_.lines(), Contains("2 liveries read from output\\LiveriesScanned.xml"));
}

TEST_F(LiveryFile, doesNotAppearWhenItCannotBeWrittenWhole) {
    fs::create_directories("output/LiveriesScanned.xml.new/inside");
    EXPECT_THAT(messageOf(lf_writeLiveries), testing::StartsWith("Error writing file output\\LiveriesScanned.xml: "));
    EXPECT_FALSE(fs::exists(scannedLiveriesFile));
}

TEST_F(LiveryFile, leavesNothingBesideItself) {
    lf_writeLiveries();
    EXPECT_FALSE(fs::exists("output/LiveriesScanned.xml.new"));
}

TEST_F(LiveryFile, missingOrUnreadableIsError51) {
    EXPECT_EQ(readCode(), 51);
    EXPECT_EQ(messageOf(lf_readLiveries), "File output\\LiveriesScanned.xml not found");
    writeFile(scannedLiveriesFile, "<root>");
    EXPECT_EQ(readCode(), 51);
    fs::remove(scannedLiveriesFile);
    fs::create_directories(scannedLiveriesFile);
    EXPECT_EQ(readCode(), 51);
}

TEST_F(LiveryFile, withoutRootOrLiveriesIsError52) {
    writeXml("<other/>");
    EXPECT_EQ(readCode(), 52);
    EXPECT_EQ(messageOf(lf_readLiveries), "output\\LiveriesScanned.xml does not contain a <liveries> section");
    for (const char* text : {"<other><liveries/></other>", "", "<?xml version=\"1.0\"?>", "<!-- nothing -->"}) {
        writeFile(scannedLiveriesFile, text);
        EXPECT_EQ(readCode(), 52) << text;
    }
}

TEST_F(LiveryFile, aLiveryWithoutARequiredAttributeIsError999) {
    writeXml("<liveries><liv type='A320' title='One'/></liveries>");
    EXPECT_EQ(readCode(), 999);
    EXPECT_EQ(messageOf(lf_readLiveries), "Missing required attribute 'airl' in <liv>");
    writeXml("<liveries><liv airl='KLM' title='One'/></liveries>");
    EXPECT_EQ(messageOf(lf_readLiveries), "Missing required attribute 'type' in <liv>");
    writeXml("<liveries><liv airl='KLM' type='A320'/></liveries>");
    EXPECT_EQ(messageOf(lf_readLiveries), "Missing required attribute 'title' in <liv>");
}

TEST_F(LiveryFile, ofSeveralFaultsTheFirstIsTold) {
    const std::string good = "<liv airl='KLM' type='A320' title='One'/>";
    const std::string fault = "<liv airl='KLM' type='A320'/>";
    const std::string otherFault = "<liv airl='KLM' title='One'/>";
    for (int before : {0, 3, 9, 17}) {
        std::string liveries;
        for (int i = 0; i < 20; ++i) {
            liveries += i < before ? good : i == before ? fault : otherFault;
        }
        writeXml("<liveries>" + liveries + "</liveries>");
        EXPECT_EQ(readCode(), 999);
        EXPECT_EQ(messageOf(lf_readLiveries), "Missing required attribute 'title' in <liv>") << before;
    }
}

TEST_F(LiveryFile, keepsTheOrderOfAnyNumberAndPassesOverWhatIsNoLivery) {
    for (const int count : {1, 2, 3, 1001}) {
        std::string text;
        std::list<Livery> expected;
        for (int i = 0; i < count; ++i) {
            text += fmt::format("<liv airl='KLM' type='A320' title='{}'/><other title='x'/>text<!-- liv -->", i);
            expected.push_back({"KLM", "A320", std::to_string(i), "", 0, false});
        }
        writeXml("<liveries><other/>" + text + "</liveries>");
        EXPECT_EQ(readLiveries(), expected) << count;
    }
}

TEST_F(LiveryFile, attributesMayComeInAnyOrderAndTheFirstOfANameCounts) {
    writeXml("<liveries><liv atcid='PH-ABC' sim='x' title='One' airlx='y' type='A320' cargo='true' airl='KLM'/>"
             "<liv airl='DLH' airl='KLM' type='B744' title='Two' type='A320' title='Three' atcid='' atcid='PH-X'/>"
             "</liveries>");
    EXPECT_EQ(readLiveries(),
              (std::list<Livery>{{"KLM", "A320", "One", "PH-ABC", 0, true}, {"DLH", "B744", "Two", "", 0, false}}));
}

TEST_F(LiveryFile, whatMayBeMissingIsEmptyOrFalse) {
    writeXml("<liveries><liv airl='KLM' type='A320' title='One'/><liv airl='' type='' title='' cargo='1'/></liveries>");
    EXPECT_EQ(readLiveries(), (std::list<Livery>{{"KLM", "A320", "One", "", 0, false}, {"", "", "", "", 0, true}}));
}

TEST_F(LiveryFile, anEmptySectionIsToldToTheUser) {
    writeXml("<liveries/>");
    EXPECT_THAT(readLiveries(), IsEmpty());
    EXPECT_EQ(shownMessage(), "output\\LiveriesScanned.xml does not contain liveries");
}
