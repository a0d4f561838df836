#include "core/run/simulator_detection.h"

#include <gtest/gtest.h>

#include "core/parameter_file.h"
#include "core/parameters.h"
#include "core/run_flags.h"
#include "core/user_error.h"
#include "platform/posix/memory_registry.h"
#include "platform/posix/memory_window.h"
#include "tests/support/log_capture.h"
#include "tests/support/program_run.h"
#include "window/window_state.h"

using platform::RegistryHive;

namespace {

constexpr const char* v5 = "SOFTWARE\\Lockheed Martin\\Prepar3D v5";
constexpr const char* v6 = "SOFTWARE\\Lockheed Martin\\Prepar3D v6";

class SimulatorDetection : public testing::Test {
protected:
    SimulatorDetection() {
        resetProgram();
        platform::clearRegistry();
        window_system::memory::reset();
        std::filesystem::create_directories(gf_parameterFolder());
    }
    ~SimulatorDetection() override {
        platform::clearRegistry();
        window_system::memory::reset();
        resetProgram();
    }

    static void install(const char* key, const char* path) {
        platform::setRegistryString(RegistryHive::machine, key, "SetupPath", path);
    }

    static std::string failure() {
        try {
            gf_findSimulator();
        } catch (const kvd::UserErrorException& exception) {
            return exception.what();
        }
        return "no failure";
    }

    LogCapture log;
};

TEST_F(SimulatorDetection, takesThePathOfTheOneVersionThatIsThereAndSavesIt) {
    install(v5, "C:\\P3D v5\\");
    gf_findSimulator();
    EXPECT_EQ(SIM_INSTALL_PATH.value(), "C:\\P3D v5\\");
    EXPECT_EQ(ALL_INSTALL_PATH.value(), "C:\\P3D v5\\");
    EXPECT_EQ(gSimulatorVersion, 5);
    EXPECT_TRUE(log.contains("P3Dv5 detected"));
    EXPECT_NE(readFile(gf_parameterFile()).find("C:\\P3D v5\\"), std::string::npos);
}

TEST_F(SimulatorDetection, version6IsNamedInTheLog) {
    install(v6, "D:\\Sim V6\\");
    gf_findSimulator();
    EXPECT_TRUE(log.contains("P3Dv6 detected"));
    EXPECT_EQ(gSimulatorVersion, 6);
}

TEST_F(SimulatorDetection, aStoredPathIsNotQuestioned) {
    install(v5, "C:\\P3D v5\\");
    SIM_INSTALL_PATH.setValue("E:\\Sims\\v6");
    gf_findSimulator();
    EXPECT_EQ(SIM_INSTALL_PATH.value(), "E:\\Sims\\v6");
    EXPECT_EQ(gSimulatorVersion, 6);
    EXPECT_FALSE(log.contains("P3Dv5 detected"));
}

TEST_F(SimulatorDetection, twoVersionsAreAnErrorOfTheUsers) {
    install(v5, "C:\\P3D v5\\");
    install(v6, "C:\\P3D v6\\");
    EXPECT_EQ(failure(), "More than one P3D version detected. Type the full Install Path to the wanted version above, "
                         "then press Enter");
}

TEST_F(SimulatorDetection, noVersionIsAnErrorOfTheUsers) {
    EXPECT_EQ(failure(), "No P3D install path detected. Type the full Install Path above, then press Enter");
    EXPECT_EQ(shownMessage(), "P3D not detected?");
}

TEST_F(SimulatorDetection, anEmptyPathInTheRegistryIsNoVersion) {
    install(v5, "");
    EXPECT_EQ(failure(), "No P3D install path detected. Type the full Install Path above, then press Enter");
}

TEST_F(SimulatorDetection, aKeyWithoutThePathIsNoVersionAndTheLogSaysWhy) {
    platform::setRegistryString(RegistryHive::machine, v5, "Other", "x");
    EXPECT_EQ(failure(), "No P3D install path detected. Type the full Install Path above, then press Enter");
    ASSERT_EQ(log.errors().size(), 1U);
    EXPECT_EQ(log.errors()[0].find("==> Cannot get the size of the string value: RegGetValueW failed."), 0U);
}

TEST_F(SimulatorDetection, theFieldIsEmptiedWhenNothingIsFound) {
    using namespace window_system;
    createControl(ControlKind::edit, ALL_INSTALL_PATH.controlId, "", {});
    setControlText(ALL_INSTALL_PATH.controlId, "of a former run");
    EXPECT_NE(failure(), "no failure");
    EXPECT_EQ(memory::control(ALL_INSTALL_PATH.controlId)->text, "");
    EXPECT_TRUE(memory::control(ALL_INSTALL_PATH.controlId)->enabled);
}

TEST_F(SimulatorDetection, noVersionIsFineWithALiveryFolderOfTheUsers) {
    lfolder[3].setValue("C:\\Liveries");
    EXPECT_EQ(failure(), "no failure");
    EXPECT_EQ(shownMessage(), "P3D not detected?");
    EXPECT_EQ(gSimulatorVersion, 5);
}

TEST_F(SimulatorDetection, noVersionIsFineWithAnAirportFolderOfTheUsers) {
    afolder[9].setValue("C:\\Airports");
    EXPECT_EQ(failure(), "no failure");
}

TEST_F(SimulatorDetection, aPathWithoutAVersionNeedsTheParameter) {
    SIM_INSTALL_PATH.setValue("C:\\P3D");
    P3D_VERSION.value = 6;
    gf_findSimulator();
    EXPECT_EQ(gSimulatorVersion, 6);
    P3D_VERSION.value = 4;
    EXPECT_EQ(failure(),
              "P3D install path does not contain v5 or v6. Use hidden parameter P3D_VERSION, set it to 5 or 6.");
}

TEST_F(SimulatorDetection, thePathIsShownInItsField) {
    using namespace window_system;
    createControl(ControlKind::edit, ALL_INSTALL_PATH.controlId, "", {});
    install(v5, "C:\\P3D v5\\");
    gf_findSimulator();
    const auto field = memory::control(ALL_INSTALL_PATH.controlId);
    EXPECT_EQ(field->text, "C:\\P3D v5\\");
    EXPECT_TRUE(field->enabled);
}

} // namespace
