// tests/liveries/posix/scan_box_test.cpp
// What the window shows of the scan's switch.
#include "liveries/livery_scan.h"

#include "platform/posix/memory_window.h"
#include "tests/liveries/scan_test.h"

namespace memory = window_system::memory;

namespace {

class ScanBox : public ScanTest {
public:
    ScanBox(const ScanBox&) = delete;
    ScanBox& operator=(const ScanBox&) = delete;
    ~ScanBox() override { memory::reset(); }

protected:
    ScanBox() {
        memory::reset();
        window_system::registerWindowClass("test", {});
        window_system::createWindow("test", 0, {0, 0, 100, 100});
        window_system::createControl(window_system::ControlKind::checkBox, SCAN_LIVERIES.controlId, "", {});
        showParameter(SCAN_LIVERIES);
    }

    static bool isChecked() { return memory::control(SCAN_LIVERIES.controlId).value().checked; }
};

TEST_F(ScanBox, isUncheckedByAScanThatIsOver) {
    setFolder(0, "liveries");
    std::filesystem::create_directories("liveries");
    EXPECT_THROW(gf_scanLiveries(), std::exception);
    EXPECT_TRUE(isChecked()) << "there was none to find";
    makeAircraft("liveries/ac", general("A320") + section(0, "title=One\natc_parking_codes=KLM"));
    gf_scanLiveries();
    EXPECT_FALSE(isChecked());
}

} // namespace
