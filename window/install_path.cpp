// window/install_path.cpp
#include "window/install_path.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "core/program_info.h"
#include "platform/files.h"
#include "platform/text_encoding.h"
#include "window/window_state.h"

namespace fs = std::filesystem;

namespace {

constexpr int secondsToRestart = 3;

std::string withoutQuotes(std::string_view text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
        text = text.substr(1, text.size() - 2);
    }
    return std::string(text);
}

/// What was last refused in place of an error; window thread.
std::string refusalShown;

/// Whether the error that stands is about the path, so that it may give way to a refusal. Any other has to be read.
bool errorAsksForPath() {
    const std::string error = shownError();
    return error.ends_with("then press Enter") || error.starts_with("wrong P3D version") ||
           (!error.empty() && error == refusalShown);
}

/// A message would not be seen while an error stands.
void refuse(const std::string& why) {
    if (errorAsksForPath()) {
        showError(why);
        refusalShown = why;
    } else {
        showMessage(why, LogCopy::yes);
    }
}

/// Why the path cannot be taken; empty when it can.
std::string objectionTo(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(platform::pathFromUtf8(path), error);
    if (error && status.type() != fs::file_type::not_found) {
        return fmt::format("Cannot access install path '{}': {}", path, platform::readableText(error.message()));
    }
    return fs::is_directory(status) ? "" : fmt::format("This install path does not exist: {}", path);
}

} // namespace

void takeInstallPath(const std::string& typed) {
    const std::string path = withoutQuotes(typed);
    if (path.empty()) {
        SIM_INSTALL_PATH.setValue({});
        return;
    }
    if (const std::string objection = objectionTo(path); !objection.empty()) {
        refuse(objection);
        return;
    }
    SIM_INSTALL_PATH.setValue(path);
    saveParameter(SIM_INSTALL_PATH);
    showMessage(fmt::format("Install path exists, {} will restart", programName), LogCopy::yes);
    gf_stopRun(ExitReason::newSettings, secondsToRestart);
}
