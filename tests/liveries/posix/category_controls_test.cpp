// tests/liveries/posix/category_controls_test.cpp
// Whether the user can press what the summary of the categories switches off.
#include "liveries/livery_tables.h"

#include <gtest/gtest.h>

#include "core/parameters.h"
#include "liveries/reference_tables.h"
#include "platform/posix/memory_window.h"
#include "tests/support/log_capture.h"
#include "tests/support/test_liveries.h"

namespace memory = window_system::memory;

namespace {

class CategoryControls : public testing::Test {
protected:
    CategoryControls() {
        reset();
        gCategoryTypes.rotorcraft = {"EC35"};
        gCategoryTypes.highPerformance = {"F16"};
        window_system::registerWindowClass("test", {});
        window_system::createWindow("test", 0, {0, 0, 100, 100});
        for (const CheckBoxParameter* parameter : {&LIGHT_AIRCRAFT, &HIGH_PERF_AIRCRAFT, &HELICOPTERS}) {
            window_system::createControl(window_system::ControlKind::checkBox, parameter->controlId, "", {});
            showParameter(*parameter);
        }
    }
    ~CategoryControls() override { reset(); }

    static void reset() {
        memory::reset();
        clearLiveryTables();
        resetReferenceTables();
        resetParameters();
    }

    static memory::Control boxOf(const CheckBoxParameter& parameter) {
        return memory::control(parameter.controlId).value();
    }

    LogCapture log;
};

TEST_F(CategoryControls, withoutLiveryTheBoxIsOffAndCannotBePressed) {
    window_system::enableControl(HELICOPTERS.controlId, true);
    HIGH_PERF_AIRCRAFT.value = false;
    window_system::enableControl(HIGH_PERF_AIRCRAFT.controlId, true);
    installLiveries({livery("KLM", "C172", "Light")});
    summarizeCategories();
    EXPECT_FALSE(boxOf(HELICOPTERS).enabled);
    EXPECT_FALSE(boxOf(HELICOPTERS).checked);
    EXPECT_FALSE(boxOf(HIGH_PERF_AIRCRAFT).enabled) << "even if it was off already";
}

TEST_F(CategoryControls, withALiveryTheBoxCanBePressedAndStaysAsItIs) {
    HELICOPTERS.value = false;
    for (const CheckBoxParameter* parameter : {&LIGHT_AIRCRAFT, &HIGH_PERF_AIRCRAFT, &HELICOPTERS}) {
        window_system::enableControl(parameter->controlId, false);
    }
    installLiveries(
        {livery("KLM", "C172", "Light"), livery("KLM", "F16", "Fighter"), freighter("KLM", "EC35", "Bird")});
    summarizeCategories();
    EXPECT_TRUE(boxOf(LIGHT_AIRCRAFT).enabled && boxOf(HIGH_PERF_AIRCRAFT).enabled && boxOf(HELICOPTERS).enabled);
    EXPECT_TRUE(LIGHT_AIRCRAFT.value && HIGH_PERF_AIRCRAFT.value);
    EXPECT_FALSE(HELICOPTERS.value);
}

} // namespace
