// What the controls show of the settings, seen in the window system in memory.
#include "core/parameters.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "core/injection_radius.h"
#include "core/parameter_file.h"
#include "platform/posix/memory_window.h"
#include "platform/window_system.h"
#include "tests/support/log_capture.h"

namespace memory = window_system::memory;
using window_system::ControlKind;

namespace {

class ParameterControlsTest : public testing::Test {
protected:
    ParameterControlsTest() {
        memory::reset();
        toDefaults();
        std::filesystem::create_directories(gf_parameterFolder());
        for (const CheckBoxParameter* box : checkBoxes()) {
            window_system::createControl(ControlKind::checkBox, box->controlId, box->key, {});
        }
        for (const ComboParameter* combo : comboIntegers()) {
            window_system::createControl(ControlKind::comboBox, combo->controlId, combo->key, {});
        }
        window_system::createControl(ControlKind::comboBox, MAX_FIT_FL.controlId, "", {});
        for (const EditParameter* edit : {&DESTINATION, &BLOCK_CALLSIGN, &ALL_INSTALL_PATH}) {
            window_system::createControl(ControlKind::edit, edit->controlId, "", {});
        }
    }
    ~ParameterControlsTest() override {
        toDefaults();
        memory::reset();
    }

    static void toDefaults() {
        PROGRAM_VERSION.setDefault("");
        resetParameters();
    }

    static memory::Control shown(const WindowControl& control) { return memory::control(control.controlId).value(); }

    const LogCapture log_;
};

TEST_F(ParameterControlsTest, aReadShowsTheValuesInTheirControls) {
    gf_writeDefaultParameters();
    HELICOPTERS.value = false;
    WEEK.value = true;
    AIRP_HEIGHT.value = 36000;
    MAX_LIVE_SEL.value = 0;
    MAX_FIT.value = 9;
    saveParameter(HELICOPTERS);
    saveParameter(WEEK);
    saveParameter(AIRP_HEIGHT);
    saveParameter(MAX_LIVE_SEL);
    saveParameter(MAX_FIT);
    DESTINATION.setValue("EHAM");
    saveParameter(DESTINATION);
    BLOCK_CALLSIGN.setValue("KLM123");
    saveParameter(BLOCK_CALLSIGN);

    EXPECT_FALSE(gf_readParameters());
    EXPECT_FALSE(shown(HELICOPTERS).checked);
    EXPECT_TRUE(shown(WEEK).checked);
    EXPECT_TRUE(shown(LIGHT_AIRCRAFT).checked);
    EXPECT_EQ(shown(AIRP_HEIGHT).selected, 9);
    EXPECT_EQ(shown(MAX_LIVE_SEL).selected, 0);
    EXPECT_EQ(shown(RANGE).selected, 15);
    EXPECT_EQ(shown(MAX_FIT_FL).selected, 9);
    EXPECT_EQ(shown(DESTINATION).text, "EHAM");
    EXPECT_EQ(shown(BLOCK_CALLSIGN).text, "KLM123");
}

TEST_F(ParameterControlsTest, aFreshFileShowsBothScanBoxesSet) {
    SCAN_LIVERIES.value = false;
    SCAN_AIRPORTS.value = false;
    showParameter(SCAN_LIVERIES);
    showParameter(SCAN_AIRPORTS);
    EXPECT_TRUE(gf_readParameters());
    EXPECT_TRUE(shown(SCAN_LIVERIES).checked);
    EXPECT_TRUE(shown(SCAN_AIRPORTS).checked);
}

TEST_F(ParameterControlsTest, aComboSelectsTheEntryOfItsValue) {
    for (const ComboParameter* combo : comboIntegers()) {
        for (std::size_t entry = 0; entry < combo->choices.size(); ++entry) {
            showChoice(*combo, combo->choices[entry]);
            EXPECT_EQ(shown(*combo).selected, static_cast<int>(entry)) << combo->key;
        }
    }
}

TEST_F(ParameterControlsTest, aValueThatIsNoChoiceSelectsNothing) {
    RANGE.value = 7;
    showParameter(RANGE);
    EXPECT_EQ(shown(RANGE).selected, -1);
    MAX_FIT_FL.value = 5.5F;
    showParameter(MAX_FIT_FL);
    EXPECT_EQ(shown(MAX_FIT_FL).selected, -1);
}

TEST_F(ParameterControlsTest, aRadiusIsSelectedInItsComboWithoutChangingTheChosenRange) {
    gf_setInjectionRadius(10);
    EXPECT_EQ(shown(RANGE).selected, 6);
    EXPECT_EQ(RANGE.value, 40);
    gf_setInjectionRadius(40);
}

TEST_F(ParameterControlsTest, anEditFieldShowsItsText) {
    ALL_INSTALL_PATH.setValue("C:\\P3D");
    showParameter(ALL_INSTALL_PATH);
    EXPECT_EQ(shown(ALL_INSTALL_PATH).text, "C:\\P3D");
}

TEST_F(ParameterControlsTest, aSettingWithoutAControlIsNoFailure) {
    memory::reset();
    EXPECT_TRUE(gf_readParameters());
    showParameter(ALL_INSTALL_PATH);
    EXPECT_FALSE(memory::control(RANGE.controlId).has_value());
}

} // namespace
