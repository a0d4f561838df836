#include <gtest/gtest.h>

#include <filesystem>

#include "core/exit_reason.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "platform/files.h"
#include "platform/posix/memory_window.h"
#include "platform/text_encoding.h"
#include "tests/support/log_capture.h"
#include "tests/support/program_run.h"
#include "tests/support/temporary_folder.h"
#include "window/controls.h"
#include "window/status_display.h"
#include "window/window_layout.h"
#include "window/window_state.h"

namespace memory = window_system::memory;

namespace {

class InstallPathField : public testing::Test {
protected:
    InstallPathField() {
        resetProgram();
        memory::reset();
        std::filesystem::create_directories(gf_parameterFolder());
        SIM_INSTALL_PATH.setValue("of before");
        saveParameter(SIM_INSTALL_PATH);
        window_system::registerWindowClass("test",
                                           {createControls, paintWindow, nullptr, postedIsPassedOver, enterPressed});
        window_system::createWindow("test", 0, {0, 0, 880, 516});
        window_system::enableControl(ALL_INSTALL_PATH.controlId, true);
    }
    ~InstallPathField() override {
        memory::reset();
        resetProgram();
    }

    static void postedIsPassedOver(unsigned) {}

    /// As the user types it; the message loop has taken it when this returns.
    static void enter(std::u16string_view text) {
        ASSERT_TRUE(memory::enterText(ALL_INSTALL_PATH.controlId, text));
        window_system::postQuit(0);
        window_system::runMessageLoop();
    }
    static void enterPath(const std::filesystem::path& path) {
        enter(platform::utf16FromUtf8(platform::utf8FromPath(path)));
    }

    static std::string storedPath() {
        SIM_INSTALL_PATH.setValue("not read");
        gf_readParameters();
        return SIM_INSTALL_PATH.value();
    }

    static void expectNothingChanged() {
        EXPECT_FALSE(gStopRun);
        EXPECT_EQ(SIM_INSTALL_PATH.value(), "of before");
        EXPECT_EQ(storedPath(), "of before");
    }

    TemporaryFolder folder;
    LogCapture log;
};

TEST_F(InstallPathField, standsWhereItsLabelIsDisabledAndEmpty) {
    memory::reset();
    window_system::registerWindowClass("test", {createControls, paintWindow, nullptr, nullptr});
    window_system::createWindow("test", 0, {0, 0, 880, 516});
    const auto field = memory::control(32788);
    ASSERT_TRUE(field);
    EXPECT_EQ(field->kind, window_system::ControlKind::edit);
    EXPECT_EQ(field->at, (window_system::Rectangle{111, 119, 1311, 135}));
    EXPECT_EQ(field->text, "");
    EXPECT_FALSE(field->enabled);
    memory::paintNow();
    bool labelled = false;
    for (const memory::PaintedText& painted : memory::paintedTexts()) {
        labelled = labelled || (painted.text == "Install path:" && painted.y == 119 && painted.colour == black);
    }
    EXPECT_TRUE(labelled);
}

TEST_F(InstallPathField, canBeTypedInWithTheNextPaintOnceItIsAskedFor) {
    window_system::enableControl(ALL_INSTALL_PATH.controlId, false);
    memory::paintNow();
    EXPECT_FALSE(memory::control(ALL_INSTALL_PATH.controlId)->enabled);
    EXPECT_FALSE(memory::enterText(ALL_INSTALL_PATH.controlId, u"C:\\"));
    askForInstallPath();
    memory::paintNow();
    EXPECT_TRUE(memory::control(ALL_INSTALL_PATH.controlId)->enabled);
}

TEST_F(InstallPathField, aFolderIsStoredSavedAndStartsANewRun) {
    const std::filesystem::path sim = folder.path() / "Prepar3D v5 \xC3\xBC";
    std::filesystem::create_directory(sim);
    enterPath(sim);
    EXPECT_EQ(shownMessage(), "Install path exists, Tarnwing_P3D will restart");
    EXPECT_TRUE(log.contains("Install path exists, Tarnwing_P3D will restart"));
    EXPECT_TRUE(gStopRun);
    EXPECT_EQ(gf_exitReason(), ExitReason::newSettings);
    EXPECT_EQ(gf_restartDelaySeconds(), 3);
    EXPECT_EQ(storedPath(), platform::utf8FromPath(sim));
}

TEST_F(InstallPathField, theQuotesOfACopiedPathDoNotCount) {
    enter(platform::utf16FromUtf8("\"" + platform::utf8FromPath(folder.path()) + "\""));
    EXPECT_EQ(storedPath(), platform::utf8FromPath(folder.path()));
}

TEST_F(InstallPathField, whatDoesNotExistIsToldAndChangesNothing) {
    enter(u"/no/such/folder");
    EXPECT_EQ(shownMessage(), "This install path does not exist: /no/such/folder");
    EXPECT_TRUE(log.contains("This install path does not exist: /no/such/folder"));
    expectNothingChanged();
}

TEST_F(InstallPathField, aFileIsNoInstallPath) {
    writeFile(folder.path() / "Prepar3D.exe", "x");
    enterPath(folder.path() / "Prepar3D.exe");
    EXPECT_EQ(shownMessage(),
              "This install path does not exist: " + platform::utf8FromPath(folder.path() / "Prepar3D.exe"));
    expectNothingChanged();
}

TEST_F(InstallPathField, whatCannotBeLookedAtIsToldWithTheReason) {
    const std::string tooLong(300, 'x');
    enter(platform::utf16FromUtf8(tooLong));
    EXPECT_EQ(shownMessage(), "Cannot access install path '" + tooLong + "': File name too long");
    expectNothingChanged();
}

TEST_F(InstallPathField, anEmptyTextForgetsTheStoredPathAndNothingElse) {
    enter(u"");
    EXPECT_EQ(SIM_INSTALL_PATH.value(), "");
    EXPECT_FALSE(gStopRun);
    EXPECT_EQ(shownMessage(), "");
    EXPECT_EQ(storedPath(), "of before");
}

TEST_F(InstallPathField, enterClearsTheMessageThatStood) {
    showMessage("of before", LogCopy::no);
    enter(u"");
    EXPECT_EQ(shownMessage(), "");
}

TEST_F(InstallPathField, aRefusedPathIsSeenInPlaceOfAnErrorThatAsksForOne) {
    for (const char* error : {"No P3D install path detected. Type the full Install Path above, then press Enter",
                              "wrong P3D version 'Prepar3D v6' connects ... ?)"}) {
        showError(error);
        enter(u"/no/such/folder");
        EXPECT_EQ(shownError(), "This install path does not exist: /no/such/folder") << error;
        enter(u"/nor/this");
        EXPECT_EQ(shownError(), "This install path does not exist: /nor/this") << error;
    }
}

TEST_F(InstallPathField, anErrorOfAnotherKindStandsAndTheRefusalIsInTheLog) {
    showError("The port is taken");
    enter(u"/no/such/folder");
    EXPECT_EQ(shownError(), "The port is taken");
    EXPECT_TRUE(log.contains("This install path does not exist: /no/such/folder"));
}

TEST_F(InstallPathField, aTextThatIsNoneIsALineInTheLog) {
    enter(std::u16string(1, char16_t{0xD800}));
    EXPECT_TRUE(log.contains("lf_getTextFromId: UTF-16 UTF-8 failed for id 32788: wide_to_utf8: invalid UTF-16"));
    expectNothingChanged();
}

TEST_F(InstallPathField, aSystemErrorGivesWayToTheNewPath) {
    gf_setSystemError();
    enterPath(folder.path());
    EXPECT_EQ(gf_exitReason(), ExitReason::newSettings);
}

} // namespace
