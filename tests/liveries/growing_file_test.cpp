// A file that another program is writing while it is read.
#include "liveries/aircraft_cfg.h"

#include <atomic>
#include <fstream>
#include <string>
#include <thread>

#include "liveries/scan_state.h"
#include "tests/liveries/scan_test.h"
#include "tests/support/eventually.h"

namespace {

/// Of a thread of the test's own.
class GrowingFileThreads : public ScanTest {};

} // namespace

TEST_F(GrowingFileThreads, hasAtLeastWhatWasThereAndItsReadingEnds) {
    const std::filesystem::path file =
        makeAircraft("x", general("A320") + section(0, "title=T0\natc_parking_codes=KLM"));
    constexpr int mostSections = 5000; // a number above 9999 is a fault
    std::atomic<int> written{1};
    std::jthread writer([&](const std::stop_token& stop) {
        std::ofstream stream(file, std::ios::binary | std::ios::app);
        for (int i = 1; i < mostSections && !stop.stop_requested(); ++i) {
            stream << section(i, "title=T" + std::to_string(i) + "\natc_parking_codes=KLM") << std::flush;
            written = i + 1;
        }
    });
    for (int round = 0; round < 20; ++round) {
        ScanState scan; // a title counts once a scan
        const auto before = static_cast<std::size_t>(written);
        const std::size_t found = lf_searchLiveriesinFile(1, scannedFile(file), scan).size();
        EXPECT_GE(found, before);
        EXPECT_LE(found, static_cast<std::size_t>(written) + 1); // the one that is just being written
        EXPECT_TRUE(eventually([&] { return written == mostSections || static_cast<std::size_t>(written) > before; }));
    }
}
