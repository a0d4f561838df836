#include "sim/check_simulator.h"

#include "core/parameters.h"
#include "core/run_flags.h"
#include "tests/sim/session_fixture.h"
#include "window/window_state.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class CheckSimulator : public SessionTest {
protected:
    CheckSimulator() {
        P3D_VERSION.value = 5;
        SIM_INSTALL_PATH.setValue("C:\\Prepar3D v5\\");
    }

    static std::pair<int, std::string> errorOf(std::string_view name) {
        return userErrorOf([name] { dispatch(openRecord(name)); });
    }

    static bool accepts(std::string_view name) { return errorOf(name).first == 0; }
};

TEST_F(CheckSimulator, nameAndVersionAreLoggedAndShown) {
    dispatch(openRecord("Lockheed Martin\xC2\xAE Prepar3D\xC2\xAE v5"));
    EXPECT_TRUE(log.contains("Lockheed Martin Prepar3D v5 (5.4.9.28482) connected"));
    EXPECT_EQ(simLampText().simulator, "Lockheed Martin Prepar3D v5 (5.4.9.28482)");
    EXPECT_EQ(shownMessage(), "Lockheed Martin Prepar3D v5 (5.4.9.28482) connected");
}

TEST_F(CheckSimulator, anEmptyNameIsALogLineAndNothingElse) {
    EXPECT_EQ(errorOf("").first, 0);
    EXPECT_THAT(log.lines(), ElementsAre("! Simulator name empty?"));
    EXPECT_EQ(simLampText().simulator, "");
}

TEST_F(CheckSimulator, aNameThatFillsItsFieldEndsThere) {
    const std::string name = "v5" + std::string(254, 'x');
    EXPECT_TRUE(accepts(name));
    EXPECT_EQ(simLampText().simulator, name + " (5.4.9.28482)");
}

TEST_F(CheckSimulator, kittyHawkStopsWithError78AndNoOtherAction) {
    EXPECT_EQ(errorOf("KittyHawk"),
              (std::pair<int, std::string>(78, "KittyHawk, (MSFS) not being P3D connects ... ?")));
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_EQ(simLampText().simulator, "");
    EXPECT_THAT(simulator->calls(), IsEmpty());
    EXPECT_FALSE(gStopRun);
    EXPECT_FALSE(simFailed);
}

TEST_F(CheckSimulator, sunRiseIsNoPrepar3DEither) {
    EXPECT_EQ(errorOf("SunRise"), (std::pair<int, std::string>(78, "SunRise, (MSFS) not being P3D connects ... ?")));
    EXPECT_TRUE(accepts("SunRise v5")) << "only the whole name counts";
}

TEST_F(CheckSimulator, v5IsAcceptedByThePathOrByTheWantedVersion) {
    struct Case {
        const char* path;
        int wanted;
        bool accepted;
    };
    for (const Case& c : {Case{"C:\\P3D v5", 6, true}, Case{"C:\\P3D V5", 6, true}, Case{"C:\\Sim", 5, true},
                          Case{"C:\\Sim", 6, false}, Case{"C:\\P3D v6", 6, false}, Case{"", 6, false}}) {
        SIM_INSTALL_PATH.setValue(c.path);
        P3D_VERSION.value = c.wanted;
        EXPECT_EQ(accepts("Prepar3D v5"), c.accepted) << c.path << " " << c.wanted;
    }
}

TEST_F(CheckSimulator, v6IsAcceptedByThePathOrByTheWantedVersion) {
    struct Case {
        const char* path;
        int wanted;
        bool accepted;
    };
    for (const Case& c : {Case{"C:\\P3D v6", 5, true}, Case{"C:\\P3D V6", 5, true}, Case{"C:\\Sim", 6, true},
                          Case{"C:\\Sim", 5, false}, Case{"C:\\P3D v5", 5, false}, Case{"", 5, false}}) {
        SIM_INSTALL_PATH.setValue(c.path);
        P3D_VERSION.value = c.wanted;
        EXPECT_EQ(accepts("Prepar3D v6"), c.accepted) << c.path << " " << c.wanted;
    }
}

TEST_F(CheckSimulator, aV5SimulatorWithAV6PathIsAcceptedWhenTheWantedVersionIs5) {
    SIM_INSTALL_PATH.setValue("D:\\Prepar3D v6\\");
    P3D_VERSION.value = 5;
    EXPECT_TRUE(accepts("Prepar3D v5"));
}

TEST_F(CheckSimulator, upperCaseInTheNameDoesNotCount) {
    EXPECT_FALSE(accepts("Prepar3D V5"));
}

TEST_F(CheckSimulator, theWrongVersionIsError78) {
    EXPECT_EQ(errorOf("Prepar3D v6"),
              (std::pair<int, std::string>(78, "wrong P3D version 'Prepar3D v6' connects ... ?)")));
    EXPECT_EQ(errorOf("Prepar3D v4").first, 78);
    EXPECT_TRUE(log.contains("Prepar3D v6 (5.4.9.28482) connected")) << "it is shown before it is judged";
}

} // namespace
