// tests/liveries/livery_halves_test.cpp
#include "liveries/livery_halves.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <list>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "core/user_error.h"
#include "liveries/livery_file.h"
#include "tests/liveries/scan_test.h"

namespace fs = std::filesystem;

using testing::ElementsAre;

namespace {

constexpr std::string_view ours = "<?xml version=\"1.0\"?>";
/// The same, but a file with it is read in one piece.
constexpr std::string_view others = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";

std::string livery(std::string_view title) {
    return fmt::format("<liv airl=\"KLM\" type=\"A320\" title=\"{}\"/>", title);
}

std::string titles(const pugi::xml_document& document) {
    std::string text;
    for (const pugi::xml_node node : liveriesIn(document)) {
        text += node.attribute("title").value();
    }
    return text;
}

class LiveryHalves : public ScanTest {
protected:
    static void write(std::string_view text) { writeFile(scannedLiveriesFile, std::string(text)); }

    static std::optional<LiveryCut> cutOf(const std::string& text) {
        write(text);
        return ::cutOf(scannedLiveriesFile);
    }

    static bool firstHalfLoads(const LiveryCut& cut) {
        LiveryHalf half;
        return loadFirstHalf(scannedLiveriesFile, cut, half);
    }
    static bool secondHalfLoads(const LiveryCut& cut) {
        LiveryHalf half;
        return loadSecondHalf(scannedLiveriesFile, cut, half);
    }

    /// The titles of both halves, one bar between them; nothing when the file does not come in halves.
    static std::string inHalves(const std::string& text) {
        LiveryHalf first;
        LiveryHalf second;
        const std::optional<LiveryCut> cut = cutOf(text);
        if (!cut || !loadFirstHalf(scannedLiveriesFile, *cut, first) ||
            !loadSecondHalf(scannedLiveriesFile, *cut, second)) {
            return "";
        }
        return titles(first.document) + "|" + titles(second.document);
    }

    /// The cut is behind `before`, in the middle of which no document ends.
    static void cutsIn(const std::string& before, const std::string& inner, const std::string& behind) {
        const std::string text = std::string(ours) + "<root><liveries>" + before + inner + behind;
        const std::optional<LiveryCut> cut = cutOf(text + "</liveries></root>");
        ASSERT_TRUE(cut);
        EXPECT_GT(cut->place, text.find(inner)) << text;
        EXPECT_LT(cut->place, text.find(inner) + inner.size()) << text;
        EXPECT_FALSE(firstHalfLoads(*cut)) << text;
    }

    /// What comes of reading the file: its liveries, or why there are none.
    struct Outcome {
        std::list<Livery> liveries;
        std::string fault;

        friend bool operator==(const Outcome&, const Outcome&) = default;
    };

    static Outcome outcomeOf(const std::string& text) {
        write(text);
        try {
            return {readLiveries(), ""};
        } catch (const kvd::UserErrorException& error) {
            return {{}, fmt::format("{} {}", error.code(), error.what())};
        }
    }
};

/// Texts of some liveries with up to three pieces of markup anywhere in them.
class DamagedTexts {
public:
    explicit DamagedTexts(unsigned seed) : random_(seed) {}

    std::string next() {
        std::string text = "<root><meta/><liveries>";
        for (std::size_t left = 2 + below(40); left > 0; --left) {
            text += livery(fmt::format("Title {}", left)) + "\n";
        }
        text += "</liveries></root>\n";
        for (std::size_t left = below(4); left > 0; --left) {
            const std::size_t place = left % 2 == 0 ? below(text.size() + 1) : text.size() / 2 - below(60) + 30;
            text.insert(place, markup[below(markup.size())]);
        }
        return text;
    }

private:
    static constexpr std::array<std::string_view, 25> markup{
        "<!-- ",
        " -->",
        "<!-- <liv -->",
        "<![CDATA[ <liv ",
        "]]>",
        "<liv airl='K' title='x'/>",
        "<liv airl='K' type='A' title=' <liv '/>",
        "<liv airl='K' type='A' title='inside'><liv airl='L' type='B' title='deeper'/></liv>",
        "</liv>",
        "<liv ",
        "<liv>",
        "</liveries>",
        "<liveries>",
        "</liveries><other/><liveries>",
        "</liveries></root><root><liveries>",
        "</root>",
        "<root>",
        "<?xml version='1.0'?>",
        "<?php <liv ?>",
        "<!DOCTYPE x>",
        "\"",
        "'",
        ">",
        "&lt;liv ",
        std::string_view("\0", 1),
    };

    std::size_t below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_); }

    std::mt19937 random_;
};

} // namespace

TEST_F(LiveryHalves, aFileOfOursComesInTwoThatMakeTheWhole) {
    Liveries = {{"KLM", "A320", "a", "", 0, false}, {"KLM", "A320", "b", "", 0, false},
                {"KLM", "A320", "c", "", 0, false}, {"KLM", "A320", "d", "", 0, false},
                {"KLM", "A320", "e", "", 0, false}, {"KLM", "A320", "f", "", 0, false},
                {"KLM", "A320", "g", "", 0, false}, {"KLM", "A320", "h", "", 0, false}};
    lf_writeLiveries();
    std::string halves = inHalves(readFile(scannedLiveriesFile));
    EXPECT_THAT(halves, testing::MatchesRegex("a.*\\|.*h"));
    std::erase(halves, '|');
    EXPECT_EQ(halves, "abcdefgh");
}

TEST_F(LiveryHalves, eachHalfViewsItsOwnTextWithItsReferencesResolved) {
    const std::string text = livery("x &amp; ") + livery("y &lt; ") + livery("z&#65; ");
    EXPECT_EQ(inHalves(std::string(ours) + "<root><liveries>" + text + "</liveries></root>"), "x & y < |zA ");
}

TEST_F(LiveryHalves, anotherDeclarationMayMeanAnotherEncodingAndIsNotCut) {
    const std::string text = "<root><liveries>" + livery("x") + livery("y") + livery("z") + "</liveries></root>";
    EXPECT_EQ(inHalves(std::string(ours) + text), "xy|z");
    EXPECT_FALSE(cutOf(std::string(others) + text));
    EXPECT_FALSE(cutOf("<?xml version=\"1.0\" encoding=\"latin1\"?>" + text));
    EXPECT_FALSE(cutOf(text));
}

TEST_F(LiveryHalves, withoutAFileOrALiveryBehindTheMiddleThereIsNoPlaceToCut) {
    EXPECT_FALSE(::cutOf(scannedLiveriesFile));
    EXPECT_FALSE(::cutOf("output"));
    EXPECT_FALSE(cutOf(""));
    EXPECT_FALSE(cutOf(std::string(ours) + "<root><liveries/></root>"));
    EXPECT_FALSE(
        cutOf(std::string(ours) + "<root><liveries>" + livery("x") + "</liveries></root>" + std::string(500, ' ')));
}

TEST_F(LiveryHalves, aLiveryTooLongToFindTheNextOneIsReadAllTheSame) {
    const std::string longTitle(20'000, 't');
    const std::string text =
        std::string(ours) + "<root><liveries>" + livery(longTitle) + livery("y") + "</liveries></root>";
    EXPECT_FALSE(cutOf(text));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre(longTitle, "y"));
}

TEST_F(LiveryHalves, theFirstLiveryMayBeTheOneBehindTheCut) {
    const std::string text = std::string(ours) + "<root><meta>" + std::string(500, ' ') + "</meta><liveries>" +
                             livery("x") + livery("y") + "</liveries></root>";
    EXPECT_EQ(inHalves(text), "|xy");
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("x", "y"));
}

TEST_F(LiveryHalves, aCutWhereNoLiveryBeginsIsNoDocument) {
    const std::string few = livery("x") + livery("y");
    const std::string inside = livery("a") + livery("b") + livery("c") + livery("d");
    cutsIn(few, livery(std::string(150, '.') + "<liv " + std::string(100, '.')), few);
    cutsIn(few, "<liv airl='K' type='A' title='t' x='" + inside + "'/>", few);
    cutsIn(few, "<!-- " + inside + " -->", few);
    cutsIn(few, "<![CDATA[ " + inside + " ]]>", few);
    cutsIn(few, "<?target " + inside + " ?>", few);
    cutsIn(few, "<other>" + inside + "</other>", few);
    cutsIn(few, "<liv airl='K' type='A' title='t'>" + inside + "</liv>", few);
}

TEST_F(LiveryHalves, whatIsBrokenBehindTheCutMakesTheSecondHalfUnsound) {
    const std::string before = std::string(ours) + "<root><liveries>" + livery("w") + livery("x") + livery("y");
    for (const std::string& behind : {std::string("<other></liveries></root>"), std::string("</liveries>"),
                                      std::string("</root>"), std::string(1, '\0') + "</liveries></root>"}) {
        const std::optional<LiveryCut> cut = cutOf(before + livery("z") + behind);
        ASSERT_TRUE(cut);
        EXPECT_TRUE(firstHalfLoads(*cut)) << behind;
        EXPECT_FALSE(secondHalfLoads(*cut)) << behind;
    }
}

TEST_F(LiveryHalves, aFileThatIsAnotherOneMeanwhileIsNotTakenForItsOtherHalf) {
    const std::string text = "<root><liveries>" + livery("x") + livery("y");
    const std::string end = "</liveries></root>";
    const std::optional<LiveryCut> cut = cutOf(std::string(ours) + text + livery("z") + end);
    ASSERT_TRUE(cut);
    EXPECT_TRUE(firstHalfLoads(*cut));
    EXPECT_TRUE(secondHalfLoads(*cut));
    write(std::string(ours) + text + livery("z") + end + " ");
    EXPECT_FALSE(firstHalfLoads(*cut)) << "it is longer";
    EXPECT_FALSE(secondHalfLoads(*cut));
    write(std::string(ours) + " " + text + livery("") + end);
    EXPECT_FALSE(secondHalfLoads(*cut)) << "no livery begins at the cut";
    fs::remove(scannedLiveriesFile);
    EXPECT_FALSE(firstHalfLoads(*cut));
    EXPECT_FALSE(secondHalfLoads(*cut));
}

TEST_F(LiveryHalves, onlyTheFirstSectionCounts) {
    const std::string text = livery("x") + livery("y") + "</liveries><liveries>" + livery("z");
    EXPECT_EQ(
        inHalves(std::string(ours) + "<root><liveries>" + text + livery("a") + livery("b") + "</liveries></root>"), "")
        << "the cut is in the second one";
    EXPECT_EQ(
        inHalves(std::string(ours) + "<root><liveries>" + livery("a") + livery("b") + text + "</liveries></root>"),
        "abx|y");
}

TEST_F(LiveryHalves, nothingBehindAZeroComesToLight) {
    const std::string text = std::string(ours) + "<root><liveries>" + livery("x") + "</liveries></root>";
    EXPECT_EQ(inHalves(text + livery("y")), "") << "nor does what no document may have behind it";
    EXPECT_EQ(inHalves(text + std::string(1, '\0') + livery("y") + livery("z") + "</liveries></root>"), "");
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("x"));
}

TEST_F(LiveryHalves, anyTextIsReadAsInOnePiece) {
    DamagedTexts texts(1);
    int cut = 0;
    int liveries = 0;
    int faults = 0;
    for (int i = 0; i < 1500; ++i) {
        const std::string text = texts.next();
        const Outcome outcome = outcomeOf(std::string(ours) + text);
        ASSERT_EQ(outcome, outcomeOf(std::string(others) + text)) << text;
        cut += inHalves(std::string(ours) + text).empty() ? 0 : 1;
        liveries += outcome.liveries.empty() ? 0 : 1;
        faults += outcome.fault.empty() ? 0 : 1;
    }
    EXPECT_GT(cut, 300);
    EXPECT_GT(liveries, 300);
    EXPECT_GT(faults, 300);
}
