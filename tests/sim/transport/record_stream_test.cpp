#include "sim/transport/record_stream.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "tests/sim/transport/peer.h"
#include "tests/support/allocation_count.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr std::size_t limit = 1000;

std::vector<std::string> recordsOf(RecordBatch& batch) {
    std::vector<std::string> records;
    batch.forEach([&](char* record, std::uint32_t size) { records.emplace_back(record, size); });
    return records;
}

std::string randomRecord(std::mt19937& random) {
    std::string body(std::uniform_int_distribution<std::size_t>(0, limit - 12)(random), '\0');
    std::generate(body.begin(), body.end(), [&] { return static_cast<char>(random()); });
    return recordBytes(static_cast<std::uint32_t>(random()), body);
}

class Records : public ::testing::Test {
protected:
    RecordStream stream_{limit};
    RecordBatch batch_;
};

} // namespace

TEST_F(Records, aBlockOfSeveralIsCutByTheirSizes) {
    const std::string first = recordBytes(4, "abc");
    const std::string second = recordBytes(3, "");
    EXPECT_TRUE(stream_.append(first + second, batch_));
    EXPECT_THAT(recordsOf(batch_), ElementsAre(first, second));
}

TEST_F(Records, aRecordInPiecesIsKeptUntilItIsWhole) {
    const std::string record = recordBytes(4, "abcdefgh");
    for (std::size_t i = 0; i + 1 < record.size(); ++i) {
        EXPECT_TRUE(stream_.append(record.substr(i, 1), batch_));
        EXPECT_THAT(recordsOf(batch_), IsEmpty()) << i;
    }
    EXPECT_TRUE(stream_.append(record.substr(record.size() - 1), batch_));
    EXPECT_THAT(recordsOf(batch_), ElementsAre(record));
}

TEST_F(Records, howTheStreamIsCutIntoPiecesDoesNotMatter) {
    std::mt19937 random(34);
    for (int round = 0; round < 200; ++round) {
        RecordStream stream(limit);
        RecordBatch batch;
        std::vector<std::string> sent;
        std::string bytes;
        for (int i = 0; i < 20; ++i) {
            sent.push_back(randomRecord(random));
            bytes += sent.back();
        }
        for (std::size_t at = 0; at < bytes.size();) {
            const std::size_t size = std::uniform_int_distribution<std::size_t>(0, 1500)(random);
            ASSERT_TRUE(stream.append(std::string_view(bytes).substr(at, size), batch));
            at += std::min(size, bytes.size() - at);
        }
        ASSERT_EQ(recordsOf(batch), sent) << "round " << round;
    }
}

TEST_F(Records, eachLiesAlignedForEightBytes) {
    for (std::size_t size = 0; size < 40; ++size) {
        ASSERT_TRUE(stream_.append(recordBytes(1, std::string(size, 'x')), batch_));
    }
    int count = 0;
    batch_.forEach([&](const char* record, std::uint32_t size) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(record) % 8, 0u) << size;
        ++count;
    });
    EXPECT_EQ(count, 40);
}

TEST_F(Records, aSizeBelowTheHeadOrAboveTheLimitEndsTheStream) {
    for (const std::uint32_t size : {0u, 1u, 11u, 1001u, 100'000'000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        RecordStream stream(limit);
        EXPECT_FALSE(stream.append(Bytes().dword(size), batch_)) << size;
        EXPECT_FALSE(stream.append(recordBytes(1, ""), batch_)) << size;
    }
    EXPECT_THAT(recordsOf(batch_), IsEmpty());
}

TEST_F(Records, theSmallestAndTheLargestSizeAreTaken) {
    const std::string smallest = recordBytes(3, "");
    const std::string largest = recordBytes(8, std::string(limit - 12, 'x'));
    EXPECT_TRUE(stream_.append(smallest + largest, batch_));
    EXPECT_THAT(recordsOf(batch_), ElementsAre(smallest, largest));
}

TEST_F(Records, thoseBeforeAFalseSizeAreKept) {
    const std::string good = recordBytes(4, "abc");
    EXPECT_FALSE(stream_.append(good + Bytes().dword(11).str() + good, batch_));
    EXPECT_THAT(recordsOf(batch_), ElementsAre(good));
}

TEST_F(Records, aBatchTakesOverAllOfAnother) {
    const std::string first = recordBytes(4, "abc");
    const std::string second = recordBytes(3, "");
    RecordBatch other;
    for (const std::string& record : {first, second}) {
        other.append(record);
        batch_.take(other);
        EXPECT_TRUE(other.empty());
    }
    batch_.take(other);
    EXPECT_THAT(recordsOf(batch_), ElementsAre(first, second));
}

TEST_F(Records, afterAJamABatchGivesItsMemoryBack) {
    constexpr std::size_t jamBytes = 2'000'000;
    while (batch_.bytes() < jamBytes) {
        batch_.append(recordBytes(8, std::string(500, 'x')));
    }
    batch_.clear();
    const std::string record = recordBytes(4, "abc");
    const std::size_t before = allocationsOfThisThread();
    batch_.append(record);
    EXPECT_EQ(allocationsOfThisThread(), before + 1);
}

TEST_F(Records, anEmptiedBatchTakesTheNextOnesWithoutNewMemory) {
    const std::string block = recordBytes(4, "abc") + recordBytes(8, std::string(500, 'x'));
    stream_.append(block, batch_);
    batch_.clear();
    EXPECT_EQ(batch_.bytes(), 0u);
    const std::size_t before = allocationsOfThisThread();
    for (int i = 0; i < 100; ++i) {
        stream_.append(block, batch_);
        batch_.clear();
    }
    EXPECT_EQ(allocationsOfThisThread(), before);
}
