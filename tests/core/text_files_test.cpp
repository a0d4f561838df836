// tests/core/text_files_test.cpp
#include "core/text_files.h"

#include <gmock/gmock.h>

#include <random>

#include "platform/text_encoding.h"
#include "tests/support/code_page.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Lines = std::vector<std::string>;
using namespace std::string_literals;

namespace {

constexpr Charset allCharsets[] = {Charset::ANSI,          Charset::Unicode,          Charset::Unicode_big_endian,
                                   Charset::UTF8_with_BOM, Charset::UTF8_without_BOM, Charset::none_found};

std::string littleEndian(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

std::string bigEndian(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit >> 8);
        bytes += static_cast<char>(unit & 0xFF);
    }
    return bytes;
}

} // namespace

TEST(Charset, hasTheNumbersThatOthersKnow) {
    EXPECT_EQ(static_cast<int>(Charset::ANSI), 0);
    EXPECT_EQ(static_cast<int>(Charset::Unicode), 1);
    EXPECT_EQ(static_cast<int>(Charset::Unicode_big_endian), 2);
    EXPECT_EQ(static_cast<int>(Charset::UTF8_with_BOM), 3);
    EXPECT_EQ(static_cast<int>(Charset::UTF8_without_BOM), 4);
    EXPECT_EQ(static_cast<int>(Charset::none_found), 5);
}

TEST(Charset, aMarkDecidesWhateverFollows) {
    EXPECT_EQ(charsetOf("\xFF\xFE"), Charset::Unicode);
    EXPECT_EQ(charsetOf("\xFF\xFE\x41\0"s), Charset::Unicode);
    EXPECT_EQ(charsetOf("\xFE\xFF\0\x41"s), Charset::Unicode_big_endian);
    EXPECT_EQ(charsetOf("\xEF\xBB\xBF"), Charset::UTF8_with_BOM);
    EXPECT_EQ(charsetOf("\xEF\xBB\xBF\xE4\0"s), Charset::UTF8_with_BOM);
}

TEST(Charset, noBytesAreNoText) {
    EXPECT_EQ(charsetOf(""), Charset::none_found);
}

TEST(Charset, aZeroByteWithoutAMarkIsNoText) {
    EXPECT_EQ(charsetOf("title=x\0y"s), Charset::none_found);
    EXPECT_EQ(charsetOf("\0"s), Charset::none_found);
    EXPECT_EQ(charsetOf(littleEndian(u"title")), Charset::none_found);
}

TEST(Charset, validUtf8ThroughoutIsUtf8) {
    EXPECT_EQ(charsetOf("plain"), Charset::UTF8_without_BOM);
    EXPECT_EQ(charsetOf("caf\xC3\xA9 \xF0\x9F\x9B\xAB"), Charset::UTF8_without_BOM);
}

TEST(Charset, allElseIsAnsi) {
    EXPECT_EQ(charsetOf("caf\xE9"), Charset::ANSI);
    EXPECT_EQ(charsetOf("caf\xC3\xA9 and caf\xE9"), Charset::ANSI);
    EXPECT_EQ(charsetOf("cut off \xC3"), Charset::ANSI);
    EXPECT_EQ(charsetOf("\xFE"), Charset::ANSI);
    EXPECT_EQ(charsetOf("\xEF\xBB"), Charset::ANSI);
}

TEST(Charset, ofAFileIsThatOfItsBytes) {
    const TemporaryFolder folder;
    writeFile("utf8.cfg", "caf\xC3\xA9");
    writeFile("ansi.cfg", "caf\xE9");
    writeFile("marked.cfg", "\xFE\xFF");
    EXPECT_EQ(charsetOfFile("utf8.cfg"), Charset::UTF8_without_BOM);
    EXPECT_EQ(charsetOfFile("ansi.cfg"), Charset::ANSI);
    EXPECT_EQ(charsetOfFile("marked.cfg"), Charset::Unicode_big_endian);
}

TEST(Charset, aFileThatCannotBeReadHasNone) {
    const TemporaryFolder folder;
    std::filesystem::create_directory("folder");
    EXPECT_EQ(charsetOfFile("absent.cfg"), Charset::none_found);
    EXPECT_EQ(charsetOfFile("folder"), Charset::none_found);
}

TEST(LinesOf, aLineHasNeitherOfItsLineEnds) {
    EXPECT_THAT(linesOf(Charset::UTF8_without_BOM, "a\nb\r\nc\r\r\nd"), ElementsAre("a", "b", "c", "d"));
}

TEST(LinesOf, theLastLineNeedsNoLineEndAndALineEndAtTheEndBeginsNoLine) {
    EXPECT_THAT(linesOf(Charset::ANSI, "a\r\nb"), ElementsAre("a", "b"));
    EXPECT_THAT(linesOf(Charset::ANSI, "a\r\nb\r\n"), ElementsAre("a", "b"));
    EXPECT_THAT(linesOf(Charset::ANSI, "a\nb\n\n"), ElementsAre("a", "b", ""));
}

TEST(LinesOf, emptyLinesCount) {
    EXPECT_THAT(linesOf(Charset::UTF8_without_BOM, "\n\r\na\n\nb"), ElementsAre("", "", "a", "", "b"));
}

TEST(LinesOf, noBytesAreNoLines) {
    for (const Charset charset : allCharsets) {
        EXPECT_THAT(linesOf(charset, ""), IsEmpty());
    }
    EXPECT_THAT(linesOf(Charset::Unicode, "\xFF\xFE"), IsEmpty());
    EXPECT_THAT(linesOf(Charset::UTF8_with_BOM, "\xEF\xBB\xBF"), IsEmpty());
}

TEST(LinesOf, utf8LosesItsMarkOnlyAtTheBegin) {
    EXPECT_THAT(linesOf(Charset::UTF8_with_BOM, "\xEF\xBB\xBF\xC3\xA9\n\xEF\xBB\xBFx"),
                ElementsAre("\u00E9", "\xEF\xBB\xBFx"));
}

TEST(LinesOf, unicodeOfEitherOrderBecomesUtf8) {
    const std::u16string text = u"title=caf\u00E9 \u20AC\r\n\U0001F6EB second\n";
    const Lines expected{"title=caf\u00E9 \u20AC", "\U0001F6EB second"};
    EXPECT_EQ(linesOf(Charset::Unicode, "\xFF\xFE" + littleEndian(text)), expected);
    EXPECT_EQ(linesOf(Charset::Unicode_big_endian, "\xFE\xFF" + bigEndian(text)), expected);
}

TEST(LinesOf, unicodeCharactersWithALineEndsByteInsideStayWhole) {
    EXPECT_THAT(linesOf(Charset::Unicode, "\xFF\xFE" + littleEndian(u"\u010A\u0A0D\u0D0A")),
                ElementsAre("\u010A\u0A0D\u0D0A"));
}

TEST(LinesOf, unicodeOfAnOddSizeHasNoLines) {
    EXPECT_THAT(linesOf(Charset::Unicode, "\xFF\xFE" + littleEndian(u"a\nb") + 'x'), IsEmpty());
    EXPECT_THAT(linesOf(Charset::Unicode_big_endian, "\xFE\xFF" + bigEndian(u"a\nb") + 'x'), IsEmpty());
    EXPECT_THAT(linesOf(Charset::Unicode, "x"), IsEmpty());
}

TEST(LinesOf, aLoneSurrogateCostsOnlyItself) {
    EXPECT_THAT(linesOf(Charset::Unicode, "\xFF\xFE" + littleEndian(u"a\xD83Dz\nb\xDEEB\nc\xD83D")),
                ElementsAre("a\uFFFDz", "b\uFFFD", "c\uFFFD"));
    EXPECT_THAT(linesOf(Charset::Unicode_big_endian, "\xFE\xFF" + bigEndian(u"\xDEEB\xD83D")),
                ElementsAre("\uFFFD\uFFFD"));
}

TEST(LinesOf, bytesThatAreNoUtf8CostOnlyThemselves) {
    EXPECT_THAT(linesOf(Charset::UTF8_with_BOM, "\xEF\xBB\xBF"
                                                "a\xE9z\nb\xC3\nc\xC3\xA9"),
                ElementsAre("a\uFFFDz", "b\uFFFD", "c\u00E9"));
    EXPECT_THAT(linesOf(Charset::UTF8_without_BOM, "\xED\xA0\x80"), ElementsAre("\uFFFD\uFFFD\uFFFD"));
}

TEST(LinesOf, ansiBecomesUtf8) {
    if (!isCodePageWestern()) {
        GTEST_SKIP() << "this system has another code page";
    }
    EXPECT_THAT(linesOf(Charset::ANSI, "caf\xE9\r\n\x80 100\n"), ElementsAre("caf\u00E9", "\u20AC 100"));
}

TEST(LinesOf, randomBytesAreValidUtf8WithoutLineFeedsInEveryCharset) {
    std::mt19937 random(99);
    for (int round = 0; round < 2'000; ++round) {
        std::string bytes(random() % 64, '\0');
        for (char& byte : bytes) {
            // Line ends and marks shall be frequent.
            constexpr std::string_view special = "\r\n\xFF\xFE\xEF\xBB\xBF\xD8\xDC";
            byte = random() % 2 == 0 ? special[random() % special.size()] : static_cast<char>(random());
        }
        for (const Charset charset : allCharsets) {
            for (const std::string& line : linesOf(charset, bytes)) {
                EXPECT_TRUE(platform::isValidUtf8(line));
                EXPECT_EQ(line.find('\n'), std::string::npos);
                EXPECT_FALSE(line.ends_with('\r'));
            }
        }
    }
}

TEST(ReadLines, givesTheLinesInPlaceOfTheOldOnes) {
    const LogCapture log;
    writeFile("types.txt", "A320;NEO\r\nB738;");
    Lines lines{"old"};

    EXPECT_EQ(readLines(Charset::ANSI, "types.txt", lines), "");

    EXPECT_THAT(lines, ElementsAre("A320;NEO", "B738;"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(ReadLines, usesTheRoomThatTheLinesHave) {
    const LogCapture log;
    writeFile("types.txt", "A320;NEO\n");
    Lines lines;
    lines.reserve(1000);
    const std::string* const room = lines.data();
    EXPECT_EQ(readLines(Charset::ANSI, "types.txt", lines), "");
    EXPECT_EQ(lines.data(), room);
    EXPECT_GE(lines.capacity(), 1000U);
}

TEST(ReadLines, aUnicodeFileOfAnOddSizeReadsAsEmpty) {
    const LogCapture log;
    writeFile("odd.txt", "\xFF\xFE" + littleEndian(u"abc") + 'x');
    Lines lines{"old"};

    EXPECT_EQ(readLines(Charset::Unicode, "odd.txt", lines), "");

    EXPECT_THAT(lines, IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(ReadLines, aFileWithAForeignNameIsRead) {
    const LogCapture log;
    const std::filesystem::path name = std::filesystem::path(u8"caf\u00E9.txt");
    writeFile(name, "x");
    Lines lines;
    EXPECT_EQ(readLines(Charset::ANSI, name, lines), "");
    EXPECT_THAT(lines, ElementsAre("x"));
}

TEST(ReadLines, aFileThatDoesNotOpenAnswersSo) {
    const LogCapture log;
    Lines lines{"old"};
    EXPECT_EQ(readLines(Charset::ANSI, "absent.txt", lines), "open_failed");
    EXPECT_THAT(lines, IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(ReadLines, aFailedReadIsAnErrorLineAndTheAnswer) {
    const LogCapture log;
    std::filesystem::create_directory("folder");
    Lines lines{"old"};

    const std::string answer = readLines(Charset::UTF8_without_BOM, "folder", lines);

    if (answer == "open_failed") {
        GTEST_SKIP() << "this system does not open a folder as a file, so the read cannot be made to fail";
    }
    EXPECT_THAT(answer, StartsWith("Read failed for 'folder': "));
    EXPECT_THAT(log.errors(), ElementsAre("==> " + answer));
    EXPECT_THAT(lines, IsEmpty());
}

TEST(ReadLines, anUnknownCharsetIsAnErrorLineAndTheAnswer) {
    const LogCapture log;
    writeFile("types.txt", "A320");
    Lines lines{"old"};

    EXPECT_EQ(readLines(Charset::none_found, "types.txt", lines), "file types.txt has unknown charset: none_found");
    EXPECT_EQ(readLines(static_cast<Charset>(7), "types.txt", lines), "file types.txt has unknown charset: 7");

    EXPECT_THAT(lines, IsEmpty());
    EXPECT_THAT(log.errors(), ElementsAre("==> file types.txt has unknown charset: none_found",
                                          "==> file types.txt has unknown charset: 7"));
}

TEST(ReadLines, realAircraftFilesAreReadInTheCharsetThatIsFound) {
    const std::filesystem::path real = "../shared/data/liveries";
    if (!std::filesystem::exists(real)) {
        GTEST_SKIP() << "no recorded liveries here";
    }
    int files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(real)) {
        if (entry.path().extension() != ".cfg") {
            continue;
        }
        ++files;
        Lines lines;
        EXPECT_EQ(readLines(charsetOfFile(entry.path()), entry.path(), lines), "") << entry.path();
        EXPECT_FALSE(lines.empty()) << entry.path();
    }
    EXPECT_GT(files, 0);
}
