#include "core/parameters.h"
#include "tests/sim/session_fixture.h"
#include "window/window_state.h"

namespace {

class InstallPathField : public SessionTest {
protected:
    InstallPathField() { P3D_VERSION.value = 5; }
};

TEST_F(InstallPathField, isAskedForOnceTheWrongVersionHasConnected) {
    EXPECT_EQ(userErrorOf([] { dispatch(openRecord("Prepar3D v6")); }).first, 78);
    EXPECT_TRUE(takeInstallPathRequest());
    EXPECT_FALSE(takeInstallPathRequest()) << "once";
}

TEST_F(InstallPathField, isNotAskedForWithTheRightVersion) {
    dispatch(openRecord("Prepar3D v5"));
    EXPECT_FALSE(takeInstallPathRequest());
}

TEST_F(InstallPathField, isNoHelpAgainstAnotherMakersSimulator) {
    EXPECT_EQ(userErrorOf([] { dispatch(openRecord("KittyHawk")); }).first, 78);
    EXPECT_FALSE(takeInstallPathRequest());
}

} // namespace
