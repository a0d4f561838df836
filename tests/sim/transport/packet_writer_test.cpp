#include "sim/transport/packet_writer.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/sim/transport/peer.h"

namespace {

class Packets : public ::testing::Test {
protected:
    PacketWriter packet_;
};

} // namespace

TEST_F(Packets, aPacketWithoutParametersIsItsHead) {
    packet_.begin(Operation::removeObject, 0x01020304);
    EXPECT_EQ(packet_.packet(), std::string_view("\x10\0\0\0\x04\0\0\0\x2C\0\0\xF0\x04\x03\x02\x01", 16));
}

TEST_F(Packets, valuesFollowInTheirOrderWithTheLowByteFirst) {
    packet_.begin(Operation::open, 7);
    packet_.dword(0x01020304);
    packet_.float32(1.0F);
    packet_.float64(-2.0);
    packet_.text("ab", 4);
    packet_.bytes(std::string_view("x\0y", 3));
    const std::string_view parameters("\x04\x03\x02\x01\0\0\x80\x3F\0\0\0\0\0\0\0\xC0"
                                      "ab\0\0x\0y",
                                      23);
    EXPECT_EQ(packet_.packet(), packetBytes(1, 7, parameters));
}

TEST_F(Packets, theNextPacketBeginsAnew) {
    packet_.begin(Operation::open, 1);
    packet_.dword(1);
    packet_.begin(Operation::open, 2);
    packet_.dword(2);
    EXPECT_EQ(packet_.packet(), packetBytes(1, 2, Bytes().dword(2)));
}

TEST_F(Packets, aTextFillsItsFieldWithZerosWhateverStoodThereBefore) {
    packet_.begin(Operation::open, 1);
    packet_.text("longer text", 12);
    packet_.begin(Operation::open, 2);
    packet_.text("t", 12);
    EXPECT_EQ(packet_.packet(), packetBytes(1, 2, Bytes().text("t", 12)));
}

TEST_F(Packets, aTextMayFillItsFieldUnlessAZeroMustFollow) {
    packet_.begin(Operation::open, 1);
    packet_.text("abcd", 4);
    packet_.terminatedText("abc", 4);
    EXPECT_TRUE(packet_.valid());
    packet_.terminatedText("abcd", 4);
    EXPECT_FALSE(packet_.valid());
}

TEST_F(Packets, aTextLongerThanItsFieldMakesThePacketInvalid) {
    packet_.begin(Operation::open, 1);
    packet_.text("abcde", 4);
    EXPECT_FALSE(packet_.valid());
    packet_.dword(1);
    EXPECT_FALSE(packet_.valid());
    packet_.begin(Operation::open, 1);
    EXPECT_TRUE(packet_.valid());
    packet_.terminatedText("abcde", 4);
    EXPECT_FALSE(packet_.valid());
}

TEST_F(Packets, aPacketMayFillTheBufferAndNotMore) {
    const std::string most(65536 - 16, 'm');
    packet_.begin(Operation::setDataOnObject, 1);
    packet_.bytes(most);
    EXPECT_TRUE(packet_.valid());
    EXPECT_EQ(packet_.packet(), packetBytes(0x10, 1, most));
    packet_.bytes(std::string_view("x"));
    EXPECT_FALSE(packet_.valid());
}
