#include "sim/record_reader.h"

#include <gtest/gtest.h>

#include "tests/sim/record_builder.h"

namespace {

TEST(RecordReader, readsValueBehindValue) {
    const Bytes bytes = dataOf(1.5, std::int64_t{-7}) + fieldOf("KLM", 8) + dataOf(2.5);
    RecordReader reader(bytes);
    EXPECT_EQ(reader.float64(), 1.5);
    EXPECT_EQ(reader.int64(), -7);
    EXPECT_EQ(reader.text(8), "KLM");
    EXPECT_EQ(reader.float64(), 2.5);
    EXPECT_TRUE(reader.isWhole());
}

TEST(RecordReader, aTextMayFillItsField) {
    const Bytes bytes = fieldOf("ABCDEFGH", 8);
    RecordReader reader(bytes);
    EXPECT_EQ(reader.text(8), "ABCDEFGH");
}

TEST(RecordReader, beyondTheEndEverythingIsEmptyAndTheReaderSaysSo) {
    const Bytes bytes = dataOf(1.5, DWORD{1});
    RecordReader reader(bytes);
    EXPECT_EQ(reader.float64(), 1.5);
    EXPECT_TRUE(reader.isWhole());
    EXPECT_EQ(reader.int64(), 0);
    EXPECT_FALSE(reader.isWhole());
    EXPECT_EQ(reader.text(4), "") << "the rest is lost with the value that did not fit";
    EXPECT_FALSE(reader.isWhole());
}

TEST(RecordReader, aRecordNeedsAllItsBytes) {
    const Bytes bytes = eventRecord(201, 1);
    const RecordBytes all(bytes);
    ASSERT_TRUE(recordFrom<SIMCONNECT_RECV_EVENT>(all));
    EXPECT_EQ(recordFrom<SIMCONNECT_RECV_EVENT>(all)->uEventID, 201U);
    EXPECT_FALSE(recordFrom<SIMCONNECT_RECV_EVENT>(all.first(23)));
    EXPECT_FALSE(recordFrom<SIMCONNECT_RECV_EVENT>(RecordBytes()));
}

} // namespace
