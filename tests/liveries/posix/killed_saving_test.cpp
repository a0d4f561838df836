// The save of the scanned liveries, killed at each of its system calls in turn.
#include "liveries/livery_file.h"

#include <filesystem>

#include <fmt/format.h>

#include "tests/liveries/scan_test.h"
#include "tests/support/posix/killed_process.h"

namespace fs = std::filesystem;

namespace {

/// Enough for several writes.
constexpr int manyLiveries = 2000;

class KilledSaving : public ScanTest {
protected:
    KilledSaving() {
        for (int i = 0; i < manyLiveries; ++i) {
            written_.push_back({"KLM", "A320", fmt::format("Title {:04}", i), "PH-ABC", 0, false});
        }
    }

    bool saveIsKilledAfter(int stops) {
        return isKilledAfter(stops, [this] {
            Liveries = written_;
            lf_writeLiveries();
        });
    }

    std::list<Livery> written_;
};

} // namespace

TEST_F(KilledSaving, leavesTheWholeFileOrNone) {
    if (!canTrace()) {
        GTEST_SKIP() << "this machine lets no process trace another";
    }
    int none = 0;
    int whole = 0;
    for (int stops = 1; saveIsKilledAfter(stops); ++stops) {
        if (fs::exists(scannedLiveriesFile)) {
            ++whole;
            ASSERT_EQ(readLiveries(), written_) << stops;
            fs::remove(scannedLiveriesFile);
        } else {
            ++none;
        }
    }
    EXPECT_GT(none, 10);
    EXPECT_GT(whole, 0);
    EXPECT_EQ(readLiveries(), written_) << "by the last one, which nobody killed and which found what the others left";
    EXPECT_FALSE(fs::exists("output/LiveriesScanned.xml.new"));
}

TEST_F(KilledSaving, leavesTheOldFileUntilTheNewOneIsWhole) {
    if (!canTrace()) {
        GTEST_SKIP() << "this machine lets no process trace another";
    }
    const std::list<Livery> old{{"DLH", "B744", "Old", "", 0, false}};
    int olds = 0;
    int news = 0;
    for (int stops = 1;; ++stops) {
        Liveries = old;
        lf_writeLiveries();
        if (!saveIsKilledAfter(stops)) {
            break;
        }
        const std::list<Livery> found = readLiveries();
        ASSERT_TRUE(found == old || found == written_) << stops << ": " << found.size() << " liveries";
        ++(found == old ? olds : news);
    }
    EXPECT_GT(olds, 10);
    EXPECT_GT(news, 0);
    EXPECT_EQ(readLiveries(), written_);
}
