// tests/feed/qnh_reader_test.cpp
#include "feed/qnh_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "feed/feed_reset.h"
#include "tests/support/log_capture.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

class QnhReaderTest : public testing::Test {
protected:
    QnhReaderTest() { resetFeed(); }
    ~QnhReaderTest() override {
        resetFeed();
        resetWindowState();
    }

    void take(const std::string& datagram) {
        reader.datagram = datagram;
        reader.onDatagram();
    }

    /// The QNH that a value in JSON form leads to, starting from 1000.
    int qnhAfter(const std::string& value) {
        take(R"({"QNH": 1000})");
        take(R"({"ICAO": "EHAM", "QNH": )" + value + "}");
        return gQnh;
    }

    /// Whether the datagram was taken: the Weather lamp then comes out of "no data".
    bool isTaken(const std::string& datagram) {
        gWindowState.weatherLamp = FeedLamp::noData;
        take(datagram);
        return gWindowState.weatherLamp == FeedLamp::flowing;
    }

    LogCapture log;
    QnhReader reader;
};

TEST_F(QnhReaderTest, standsAtTheStandardValueAtFirst) {
    EXPECT_EQ(gQnh, 1013);
    EXPECT_EQ(gTrafficReader.qnh, 1013);
    EXPECT_EQ(gWindowState.qnh, 1013);
}

TEST_F(QnhReaderTest, goesToAllItsCopies) {
    take(R"({"QNH": 1020})");
    EXPECT_EQ(gQnh, 1020);
    EXPECT_EQ(gTrafficReader.qnh, 1020);
    EXPECT_EQ(gWindowState.qnh, 1020);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(QnhReaderTest, wholeNumbersFloatsAndTextsCount) {
    EXPECT_EQ(qnhAfter("998"), 998);
    EXPECT_EQ(qnhAfter("1019.7"), 1020);
    EXPECT_EQ(qnhAfter("1019.4"), 1019);
    EXPECT_EQ(qnhAfter("1019.5"), 1020);
    EXPECT_EQ(qnhAfter("\"1013\""), 1013);
    EXPECT_EQ(qnhAfter("\"987\""), 987);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(QnhReaderTest, aboveThatOfAnyWeatherItIsInHundredthsOfAnInch) {
    EXPECT_EQ(qnhAfter("2992"), 1013);
    EXPECT_EQ(qnhAfter("2996"), 1015);
    EXPECT_EQ(qnhAfter("\"2996\""), 1015);
    EXPECT_EQ(qnhAfter("2992.4"), 1013);
    EXPECT_EQ(qnhAfter("1100"), 1100);
    EXPECT_EQ(qnhAfter("1101"), 900); // 373 hectopascal, brought into the limits
}

TEST_F(QnhReaderTest, isBroughtIntoItsLimits) {
    EXPECT_EQ(qnhAfter("29.92"), 900);
    EXPECT_EQ(qnhAfter("899"), 900);
    EXPECT_EQ(qnhAfter("0"), 900);
    EXPECT_EQ(qnhAfter("-5"), 900);
    EXPECT_EQ(qnhAfter("4000"), 1100);
    EXPECT_EQ(qnhAfter("2147483647"), 1100);
    EXPECT_EQ(qnhAfter("-2147483648"), 900);
}

TEST_F(QnhReaderTest, whatIsNoNumberIsNoQnh) {
    for (const char* value : {"null", "{}", "[]", "true", "false", R"({"a": 1})", "[1013]"}) {
        EXPECT_EQ(qnhAfter(value), 1000) << value;
        EXPECT_EQ(log.lines().back(), std::string(R"(no QNH {"ICAO": "EHAM", "QNH": )") + value + "}");
    }
}

TEST_F(QnhReaderTest, aDatagramWithoutTheKeyHasNoQnh) {
    take(R"({"ICAO": "EHAM"})");
    take("{}");
    take("null");
    EXPECT_THAT(log.lines(), ElementsAre(R"(no QNH {"ICAO": "EHAM"})", "no QNH {}", "no QNH null"));
    EXPECT_EQ(gQnh, 1013);
}

TEST_F(QnhReaderTest, aTextThatIsNoWholeNumberIsAnError) {
    for (const std::string text : {"", "abc", "29.92", "1013hPa", " 1013", "+1013", "99999999999", "nan", "0x3F5"}) {
        EXPECT_EQ(qnhAfter("\"" + text + "\""), 1000) << text;
        EXPECT_EQ(log.errors().back(),
                  "==> QNH string parse error: " + text + R"( in {"ICAO": "EHAM", "QNH": ")" + text + "\"}");
    }
}

TEST_F(QnhReaderTest, aNumberBeyondAnIntIsAnExceptionAndChangesNothing) {
    for (const std::string value : {"2147483648", "-2147483649", "18446744073709551615", "-9223372036854775808", "3e9",
                                    "-3e9", "1e300", "1e999", "99999999999999999999999"}) {
        EXPECT_EQ(qnhAfter(value), 1000) << value;
        EXPECT_THAT(log.lines().back(),
                    AllOf(StartsWith("Exception "), EndsWith(R"(, in {"ICAO": "EHAM", "QNH": )" + value + "}")));
    }
}

TEST_F(QnhReaderTest, aDatagramThatDoesNotParseIsAnExceptionAndChangesNothing) {
    take(R"({"QNH": 1000})");
    for (const std::string datagram : {"{\"QNH\": 1020", "", "QNH 1020", "[1020]", "1020", "\"QNH\"", "{\"QNH\": nan}",
                                       "{\"QNH\": inf}", "{\"QNH\": 0x3FC}"}) {
        take(datagram);
        EXPECT_THAT(log.lines().back(), AllOf(StartsWith("Exception ["), EndsWith(", in " + datagram)));
        EXPECT_EQ(gQnh, 1000);
    }
    take(R"({"QNH": 1021})");
    EXPECT_EQ(gQnh, 1021);
}

TEST_F(QnhReaderTest, bytesThatAreNoUtf8LeaveTheLogWhole) {
    take("{\"QNH\": \"\xFF\n\"}");
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_THAT(log.lines().back(), AllOf(StartsWith("Exception ["), EndsWith(", in {\"QNH\": \"??\"}")));
    take(R"({"QNH": "\n\u0000"})");
    ASSERT_EQ(log.lines().size(), 2u);
    EXPECT_EQ(log.lines().back(), R"(==> QNH string parse error: ?? in {"QNH": "\n\u0000"})");
}

TEST_F(QnhReaderTest, deepNestingIsNoDanger) {
    take("{\"QNH\": " + std::string(16000, '['));
    EXPECT_THAT(log.lines().back(), StartsWith("Exception ["));
}

TEST_F(QnhReaderTest, aRepeatedStandardValueIsTakenEachTimeAndAnyOtherOnlyOnce) {
    EXPECT_TRUE(isTaken(R"({"QNH": 1013})"));
    EXPECT_TRUE(isTaken(R"({"QNH": 1013})"));
    EXPECT_TRUE(isTaken(R"({"QNH": 1020})"));
    EXPECT_FALSE(isTaken(R"({"QNH": 1020})"));
    EXPECT_FALSE(isTaken(R"({"QNH": 1019.7})"));
    EXPECT_TRUE(isTaken(R"({"QNH": 1021})"));
}

TEST_F(QnhReaderTest, lightsTheWeatherLampOnlyFromNoData) {
    gWindowState.weatherLamp = FeedLamp::notRunning;
    take(R"({"QNH": 1020})");
    EXPECT_EQ(gWindowState.weatherLamp, FeedLamp::notRunning);
}

TEST_F(QnhReaderTest, afterAResetTheSameValueIsTakenAgain) {
    take(R"({"QNH": 1020})");
    reader.reset();
    EXPECT_TRUE(isTaken(R"({"QNH": 1020})"));
}

TEST_F(QnhReaderTest, whenStoppedItPutsOutTheWeatherLamp) {
    gWindowState.trafficLamp = FeedLamp::flowing;
    gWindowState.weatherLamp = FeedLamp::flowing;
    reader.onStopped();
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::flowing);
    EXPECT_EQ(gWindowState.weatherLamp, FeedLamp::notRunning);
    EXPECT_THAT(log.lines(), ElementsAre("QNH Reader has stopped"));
}

} // namespace
