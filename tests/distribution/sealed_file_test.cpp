// tests/distribution/sealed_file_test.cpp
#include "distribution/sealed_file.h"

#include <gmock/gmock.h>
#include <random>
#include <string>

#include "tests/support/log_capture.h"
#include "tests/support/message_of.h"
#include "tests/support/sealed_input.h"
#include "tests/support/temporary_folder.h"

using testing::ElementsAre;

namespace {

constexpr std::size_t headerBytes = 24;
constexpr std::size_t sealedChunkBytes = 4113;

std::string randomBytes(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(count, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

/// The container of so many bytes, as bytes.
std::string sealedBytes(std::size_t clearCount) {
    writeSealed("made.enc", randomBytes(clearCount, 1));
    return readFile("made.enc");
}

std::string opened(std::string_view container) {
    writeFile("a.enc", container);
    lf_streamDecryptFile("a.enc", "a.xml", gf_dataKey());
    return readFile("a.xml");
}

std::string failureOf(std::string_view container) {
    return messageOf([&] { opened(container); });
}

} // namespace

TEST(SealedFile, whatIsSealedOpensAgainWhateverItsSize) {
    const TemporaryFolder folder;
    std::mt19937 random(7);
    std::vector<std::size_t> sizes{0, 1, 4095, 4096, 4097, 8192, 12288};
    for (int i = 0; i < 20; ++i) {
        sizes.push_back(random() % 50000);
    }
    for (const std::size_t size : sizes) {
        EXPECT_EQ(opened(sealedBytes(size)), randomBytes(size, 1)) << size;
    }
}

TEST(SealedFile, isAHeaderAndChunksOfAtMost4096ClearBytesAnd17MoreAndNothingElse) {
    const TemporaryFolder folder;
    EXPECT_EQ(sealedBytes(0).size(), headerBytes + 17);
    EXPECT_EQ(sealedBytes(4096).size(), headerBytes + sealedChunkBytes);
    EXPECT_EQ(sealedBytes(4097).size(), headerBytes + sealedChunkBytes + 1 + 17);
}

TEST(SealedFile, aFileTruncatedWithinAChunkYieldsDecryptionFailed) {
    const TemporaryFolder folder;
    const std::string container = sealedBytes(10000);
    EXPECT_EQ(failureOf(container.substr(0, container.size() - 1)), "Decryption failed");
    EXPECT_EQ(failureOf(container.substr(0, headerBytes + sealedChunkBytes + 5)), "Decryption failed");
}

TEST(SealedFile, aStreamWithoutAFinalChunkEndsAtTheEndOfFileWithNoError) {
    const TemporaryFolder folder;
    const std::string container = sealedBytes(10000);
    EXPECT_EQ(opened(container.substr(0, headerBytes + 2 * sealedChunkBytes)), randomBytes(10000, 1).substr(0, 8192));
    EXPECT_EQ(opened(container.substr(0, headerBytes)), "");
}

TEST(SealedFile, bytesBehindTheFinalChunkAreIgnored) {
    const TemporaryFolder folder;
    // The last chunk is full, so that the next reading begins behind it.
    EXPECT_EQ(opened(sealedBytes(8192) + "more and more"), randomBytes(8192, 1));
}

TEST(SealedFile, anyFlippedBitYieldsAnError) {
    const TemporaryFolder folder;
    const std::string container = sealedBytes(5000);
    for (const std::size_t place : {std::size_t{0}, std::size_t{23}, headerBytes, headerBytes + 100,
                                    headerBytes + sealedChunkBytes, container.size() - 1}) {
        std::string flipped = container;
        flipped[place] = static_cast<char>(flipped[place] ^ 1);
        EXPECT_EQ(failureOf(flipped), "Decryption failed") << place;
    }
}

TEST(SealedFile, aWrongKeyYieldsDecryptionFailed) {
    const TemporaryFolder folder;
    writeSealed("other.enc", "text", *parseDataKey("this is some other key, 32 bytes"));
    EXPECT_EQ(failureOf(readFile("other.enc")), "Decryption failed");
}

TEST(SealedFile, aFileTooShortForTheHeaderYieldsInvalidHeaderOrKey) {
    const TemporaryFolder folder;
    EXPECT_EQ(failureOf(""), "Invalid header or key");
    EXPECT_EQ(failureOf(std::string(headerBytes - 1, 'x')), "Invalid header or key");
}

TEST(SealedFile, aMissingInputIsNamed) {
    const TemporaryFolder folder;
    const std::string failure = messageOf([] { lf_streamDecryptFile("none.enc", "a.xml", gf_dataKey()); });
    EXPECT_EQ(failure, "Could not open input file: none.enc");
    EXPECT_FALSE(std::filesystem::exists("a.xml"));
}

TEST(SealedFile, anOutputThatCannotBeWrittenIsNamed) {
    const TemporaryFolder folder;
    writeSealed("a.enc", "text");
    const std::string failure = messageOf([] { lf_streamDecryptFile("a.enc", "absent/a.xml", gf_dataKey()); });
    EXPECT_EQ(failure, "Could not open output file: absent/a.xml");
}

TEST(SealedFile, theDecryptionOfTheProgramLogsAFailureAndAnswersFalse) {
    const LogCapture log;
    writeFile("bad.enc", "");
    EXPECT_FALSE(gf_streamDecrypt("bad.enc", "bad.xml"));
    EXPECT_FALSE(gf_streamDecrypt("none.enc", "bad.xml"));
    EXPECT_THAT(log.errors(), ElementsAre("==> gf_streamDecrypt exception: Invalid header or key",
                                          "==> gf_streamDecrypt exception: Could not open input file: none.enc"));
}

TEST(SealedFile, theDecryptionOfTheProgramUsesTheKeyOfTheBuild) {
    const LogCapture log;
    writeSealed("good.enc", "clear text");
    EXPECT_TRUE(gf_streamDecrypt("good.enc", "good.xml"));
    EXPECT_EQ(readFile("good.xml"), "clear text");
    EXPECT_THAT(log.errors(), ElementsAre());
}

TEST(SealedFile, aWholeContainerHasAllItsChunksAndTheFinalOne) {
    const TemporaryFolder folder;
    const std::string container = sealedBytes(10000);
    const auto isWhole = [](std::string_view bytes) {
        writeFile("w.enc", bytes);
        return gf_isWholeContainer("w.enc", gf_dataKey());
    };
    EXPECT_TRUE(isWhole(container));
    EXPECT_FALSE(isWhole(container.substr(0, headerBytes + 2 * sealedChunkBytes)));
    EXPECT_FALSE(isWhole(container.substr(0, container.size() - 1)));
    EXPECT_FALSE(isWhole(""));
    EXPECT_FALSE(gf_isWholeContainer("none.enc", gf_dataKey()));
    EXPECT_FALSE(gf_isWholeContainer("w.enc", *parseDataKey("this is some other key, 32 bytes")));
}

TEST(DataKey, isThirtyTwoCharactersOrSixtyFourHexadecimalDigits) {
    const auto key = parseDataKey("000102030405060708090a0b0c0d0e0f101112131415161718191A1B1C1D1E1F");
    ASSERT_TRUE(key);
    EXPECT_EQ((*key)[0], 0);
    EXPECT_EQ((*key)[10], 10);
    EXPECT_EQ((*key)[31], 31);
    const auto text = parseDataKey("abcdefghijklmnopqrstuvwxyz012345");
    ASSERT_TRUE(text);
    EXPECT_EQ((*text)[0], 'a');
    EXPECT_EQ((*text)[31], '5');
}

TEST(DataKey, anythingElseIsNone) {
    EXPECT_FALSE(parseDataKey(""));
    EXPECT_FALSE(parseDataKey("short"));
    EXPECT_FALSE(parseDataKey(std::string(33, 'x')));
    EXPECT_FALSE(parseDataKey(std::string(63, '0')));
    EXPECT_FALSE(parseDataKey(std::string(63, '0') + "g"));
}
