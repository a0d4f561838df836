#include "liveries/regcode_files.h"

#include <filesystem>

#include <gmock/gmock.h>

#include <fmt/format.h>

#include "tests/support/log_capture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

std::string textOf(const RegEntry& entry) {
    return fmt::format("{}:{}{}", entry.title, fmt::join(entry.regs, ","), entry.special ? ":special" : "");
}

class RegcodeFiles : public testing::Test {
protected:
    std::vector<std::string> texts() const {
        std::vector<std::string> all;
        for (const RegEntry& entry : entries) {
            all.push_back(textOf(entry));
        }
        return all;
    }

    LogCapture log;
    std::vector<RegEntry> entries;
};

// AIG-regcodes.xml

class AigRegcodes : public RegcodeFiles {
protected:
    static constexpr const char* meta = "<meta><info name=\"author\" value=\"somebody\"/></meta>";

    bool readText(std::string_view text) {
        writeFile("AIG-regcodes.xml", text);
        return lf_readAigRegcodes("AIG-regcodes.xml", entries);
    }

    bool read(const std::string& elements) {
        return readText(fmt::format("<root>{}<AIG-regcodes>{}</AIG-regcodes></root>", meta, elements));
    }
};

TEST_F(AigRegcodes, titlesRegistrationsAndTheSpecialMarkAreRead) {
    EXPECT_TRUE(read(R"(<livery title="One" reg="PH-ABC, PH-DEF"/><livery title="Two" reg="D-AIPA" special="true"/>)"
                     R"(<livery title="Three" reg=""/><livery title="Four"/><other title="Five"/>)"));
    EXPECT_THAT(texts(), ElementsAre("One:PH-ABC,PH-DEF", "Two:D-AIPA:special", "Three:", "Four:"));
    EXPECT_THAT(log.lines(), ElementsAre("4 liveries read from AIG-regcodes.xml"));
}

TEST_F(AigRegcodes, whereNoneOfTheRegistrationsIsOneTheTitleIsLeftOutAndNotBarred) {
    EXPECT_TRUE(read(R"(<livery title="One" reg=","/><livery title="Two" reg=" , "/><livery title="Three" reg=" "/>)"
                     R"(<livery title="Four" reg=",PH-ABC,"/>)"));
    EXPECT_THAT(texts(), ElementsAre("Four:PH-ABC"));
    EXPECT_THAT(log.lines(), ElementsAre("==> One ; regs empty?", "==> Two ; regs empty?", "==> Three ; regs empty?",
                                         "1 livery read from AIG-regcodes.xml"));
}

TEST_F(AigRegcodes, oneLiveryIsALivery) {
    EXPECT_TRUE(read(R"(<livery title="One" reg="PH-ABC"/>)"));
    EXPECT_THAT(texts(), ElementsAre("One:PH-ABC"));
    EXPECT_THAT(log.lines(), ElementsAre("1 livery read from AIG-regcodes.xml"));
}

TEST_F(AigRegcodes, oneTitleTwiceInARowIsAFaultButTheRestIsRead) {
    EXPECT_FALSE(read(R"(<livery title="One" reg="PH-ABC"/><livery title="One" reg="PH-DEF"/>)"
                      R"(<livery title="One" reg="PH-GHI"/><livery title="Two" reg="D-AIPA"/>)"
                      R"(<livery title="One" reg="PH-JKL"/>)"));
    EXPECT_THAT(texts(), ElementsAre("One:PH-ABC", "Two:D-AIPA", "One:PH-JKL"));
    EXPECT_THAT(log.errors(), ElementsAre("==> Duplicate title 'One' (same as previous)",
                                          "==> Duplicate title 'One' (same as previous)"));
    EXPECT_TRUE(log.contains("3 liveries read from AIG-regcodes.xml"));
}

TEST_F(AigRegcodes, elementsWithoutTitleAreTaken) {
    EXPECT_TRUE(read(R"(<livery reg="PH-ABC"/><livery reg="PH-DEF"/>)"));
    EXPECT_THAT(texts(), ElementsAre(":PH-ABC", ":PH-DEF"));
}

TEST_F(AigRegcodes, withoutMetaItIsFaultyButRead) {
    EXPECT_FALSE(readText(R"(<root><AIG-regcodes><livery title="One" reg="PH-ABC"/></AIG-regcodes></root>)"));
    EXPECT_THAT(texts(), ElementsAre("One:PH-ABC"));
    EXPECT_THAT(log.lines(), ElementsAre("==> No <meta> node found in XML.", "1 livery read from AIG-regcodes.xml"));
}

TEST_F(AigRegcodes, metaIsLookedAtBeforeTheSectionIs) {
    EXPECT_FALSE(readText("<root/>"));
    EXPECT_THAT(log.lines(),
                ElementsAre("==> No <meta> node found in XML.", "==> No <AIG-regcodes> node found in XML."));
}

TEST_F(AigRegcodes, withoutItsSectionNothingIsRead) {
    EXPECT_FALSE(readText("<root><meta/></root>"));
    EXPECT_THAT(texts(), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre("==> No <AIG-regcodes> node found in XML."));
}

TEST_F(AigRegcodes, whatIsNoXmlIsDeleted) {
    EXPECT_FALSE(readText("<root><meta>"));
    EXPECT_THAT(log.lines(), ElementsAre("==> Failed to load AIG-regcodes.xml"));
    EXPECT_FALSE(fs::exists("AIG-regcodes.xml"));
    EXPECT_FALSE(lf_readAigRegcodes("AIG-regcodes.xml", entries));
}

// The user's text files

class OwnRegcodes : public RegcodeFiles {
protected:
    OwnRegcodes() { fs::create_directories("own"); }

    bool read(std::string_view text) {
        writeFile("own/my.txt", text);
        return lf_readRegcodeFiles("own", entries);
    }

    static std::string pathText(const char* name) { return (fs::path("own") / name).make_preferred().string(); }
};

TEST_F(OwnRegcodes, aTitleAloneHasNoRegistrations) {
    EXPECT_TRUE(read("Title one\n\n   \n  Title two  \n"));
    EXPECT_THAT(texts(), ElementsAre("Title one:", "Title two:"));
    EXPECT_THAT(log.lines(),
                ElementsAre(fmt::format("Processing regcodes file '{}'", pathText("my.txt")), "2 liveries"));
}

TEST_F(OwnRegcodes, oneRegistrationMakesATitleSpecial) {
    EXPECT_TRUE(read("One; PH-ABC\nTwo;PH-DEF;#\nThree;PH-GHI;no\nFour;PH-JKL,\n"));
    EXPECT_THAT(texts(),
                ElementsAre("One:PH-ABC:special", "Two:PH-DEF:special", "Three:PH-GHI:special", "Four:PH-JKL:special"));
}

TEST_F(OwnRegcodes, severalRegistrationsNeedTheMark) {
    EXPECT_TRUE(read("One ; PH-ABC , PH-DEF ; #\nTwo;PH-ABC,PH-DEF;x\nThree;PH-ABC,PH-DEF\n"));
    EXPECT_THAT(texts(), ElementsAre("One:PH-ABC,PH-DEF:special", "Two:PH-ABC,PH-DEF", "Three:PH-ABC,PH-DEF"));
}

TEST_F(OwnRegcodes, registrationsHaveThreeToTwelveCharacters) {
    EXPECT_TRUE(read("One;AB,ABC,ABCDEFGHIJKL,ABCDEFGHIJKLM\n"));
    EXPECT_THAT(texts(), ElementsAre("One:ABC,ABCDEFGHIJKL"));
    EXPECT_TRUE(log.contains("wrong regcode length 'AB' in my.txt"));
    EXPECT_TRUE(log.contains("wrong regcode length 'ABCDEFGHIJKLM' in my.txt"));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(OwnRegcodes, anOnlyRegistrationOfWrongLengthCostsItsLine) {
    EXPECT_TRUE(read("One;AB\nTwo;ABCDEFGHIJKLM;#\nThree;ABC\n"));
    EXPECT_THAT(texts(), ElementsAre("Three:ABC:special"));
    EXPECT_THAT(log.errors(), ElementsAre("==> wrong regcode length 'AB' in my.txt",
                                          "==> wrong regcode length 'ABCDEFGHIJKLM' in my.txt"));
}

TEST_F(OwnRegcodes, ifNoneOfSeveralRemainsTheLineIsGone) {
    EXPECT_TRUE(read("One;AB,CD\n"));
    EXPECT_THAT(texts(), IsEmpty());
    EXPECT_THAT(log.errors(), ElementsAre("==> One ; regs empty?"));
    EXPECT_TRUE(log.contains("wrong regcode length 'CD' in my.txt"));
}

TEST_F(OwnRegcodes, ofSeveralWithOneRemainingTheTitleIsSpecialWithAndWithoutTheMark) {
    EXPECT_TRUE(read("One;AB,PH-ABC\nTwo;AB,PH-ABC;#\nThree;AB,PH-ABC,PH-DEF\n"));
    EXPECT_THAT(texts(), ElementsAre("One:PH-ABC:special", "Two:PH-ABC:special", "Three:PH-ABC,PH-DEF"));
}

TEST_F(OwnRegcodes, aRegistrationsLengthIsThatOfItsCharacters) {
    EXPECT_TRUE(read("One;\xC3\x84\xC3\x84\nTwo;\xC3\x84-\xC3\x84\nThree;\xC3\x84"
                     "BCDEFGHIJKL\n"
                     "Four;\xC3\x84"
                     "BCDEFGHIJKLM\n"));
    EXPECT_THAT(texts(), ElementsAre("Two:\xC3\x84-\xC3\x84:special", "Three:\xC3\x84"
                                                                      "BCDEFGHIJKL:special"));
    EXPECT_THAT(log.errors(), ElementsAre("==> wrong regcode length '\xC3\x84\xC3\x84' in my.txt",
                                          "==> wrong regcode length '\xC3\x84"
                                          "BCDEFGHIJKLM' in my.txt"));
}

TEST_F(OwnRegcodes, withoutRegistrationsBehindTheTitleTheLineIsIgnored) {
    EXPECT_TRUE(read("One;\nTwo; ;#\nThree;,,\n"));
    EXPECT_THAT(texts(), IsEmpty());
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(OwnRegcodes, moreFieldsAreRefused) {
    EXPECT_TRUE(read("One;PH-ABC;#;more\n"));
    EXPECT_THAT(texts(), IsEmpty());
    EXPECT_THAT(log.errors(), ElementsAre("==> my.txt: wrong format 'One;PH-ABC;#;more'"));
}

TEST_F(OwnRegcodes, textFilesOfAnyCaseAreReadInTheOrderOfTheirNamesAndNoOthers) {
    writeFile("own/c.TXT", "Three\n");
    writeFile("own/a.txt", "One\n");
    writeFile("own/b.Txt", "Two\n");
    writeFile("own/d.text", "Four\n");
    fs::create_directories("own/e.txt");
    writeFile("own/e.txt/f.txt", "Five\n");
    EXPECT_TRUE(lf_readRegcodeFiles("own", entries));
    EXPECT_THAT(texts(), ElementsAre("One:", "Two:", "Three:"));
}

TEST_F(OwnRegcodes, otherCharsetsAreRead) {
    EXPECT_TRUE(read(std::string_view("\xFF\xFEO\0n\0e\0;\0P\0H\0-\0A\0B\0C\0\r\0\n\0", 26)));
    EXPECT_THAT(texts(), ElementsAre("One:PH-ABC:special"));
}

TEST_F(OwnRegcodes, anEmptyFileIsNoFault) {
    EXPECT_TRUE(read(""));
    EXPECT_THAT(log.errors(), IsEmpty());
    EXPECT_TRUE(log.contains("0 liveries"));
}

TEST_F(OwnRegcodes, whatIsNoTextIsAFaultThatCostsItself) {
    writeFile("own/a.txt", std::string_view("One\0Two", 7));
    EXPECT_FALSE(read("Three\n"));
    EXPECT_THAT(texts(), ElementsAre("Three:"));
    EXPECT_THAT(log.errors(), Contains(StartsWith("==> ")));
    EXPECT_TRUE(log.contains("1 livery"));
}

TEST_F(OwnRegcodes, aFolderThatIsNotThereIsTold) {
    EXPECT_FALSE(lf_readRegcodeFiles("other", entries));
    EXPECT_THAT(log.lines(), Contains(StartsWith("Error reading regcode files in other, what: ")));
    EXPECT_TRUE(log.contains("0 liveries"));
}

} // namespace
