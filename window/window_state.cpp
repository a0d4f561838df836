// window/window_state.cpp
#include "window/window_state.h"

#include <utility>

#include <fmt/format.h>

#include "core/log.h"
#include "platform/window_system.h"

std::mutex gMessageMutex;
WindowState gWindowState;

namespace {

std::string messageText; // under gMessageMutex
std::string errorText;   // under gMessageMutex
// Counts up by seconds of the run while a message stands; under gMessageMutex.
int messageAgeSeconds = 0;
SimLampText lampText; // under gMessageMutex
std::atomic<bool> installPathWanted{false};
std::string editionText; // under gMessageMutex

void askForRepaint() {
    window_system::postMessage(WM_TRNW_REPAINT_MESSAGE);
}

void setMessage(std::string_view text) {
    {
        const std::lock_guard lock(gMessageMutex);
        if (!errorText.empty()) {
            return;
        }
        messageText = text;
        messageAgeSeconds = 0;
    }
    askForRepaint();
}

void setLampText(std::string SimLampText::*line, std::string_view text) {
    {
        const std::lock_guard lock(gMessageMutex);
        if (lampText.*line == text) {
            return;
        }
        lampText.*line = text;
    }
    repaintWindow();
}

/// A flag or a count.
template <typename Value>
void setShown(std::atomic<Value>& shown, Value value) {
    if (shown.exchange(value) != value) {
        repaintWindow();
    }
}

} // namespace

void showMessage(std::string_view text, LogCopy toLog) {
    setMessage(text);
    if (toLog == LogCopy::yes) {
        log(text);
    }
}

void clearMessage() {
    setMessage({});
}

StepMessage::StepMessage(std::string_view text) : text_(text), former_(shownMessage()) {
    setMessage(text_);
}

StepMessage::~StepMessage() {
    {
        const std::lock_guard lock(gMessageMutex);
        if (messageText != text_) {
            return;
        }
        messageText = std::move(former_);
        messageAgeSeconds = 0;
    }
    askForRepaint();
}

void showError(std::string_view text) {
    {
        const std::lock_guard lock(gMessageMutex);
        messageText.clear();
        errorText = text;
    }
    log(fmt::format("Error {}", text));
    askForRepaint();
}

void clearError() {
    {
        const std::lock_guard lock(gMessageMutex);
        errorText.clear();
    }
    askForRepaint();
}

std::string shownMessage() {
    const std::lock_guard lock(gMessageMutex);
    return messageText;
}

std::string shownError() {
    const std::lock_guard lock(gMessageMutex);
    return errorText;
}

SimLampText simLampText() {
    const std::lock_guard lock(gMessageMutex);
    return lampText;
}

void showSimulatorName(std::string_view text) {
    setLampText(&SimLampText::simulator, text);
}

void showUserTitle(std::string_view text) {
    setLampText(&SimLampText::userTitle, text);
}

void showUserStand(std::string_view text) {
    setLampText(&SimLampText::userStand, text);
}

void showUserAirport(std::string_view text) {
    setLampText(&SimLampText::userAirport, text);
}

void askForInstallPath() {
    installPathWanted = true;
    repaintWindow();
}

bool takeInstallPathRequest() {
    return installPathWanted.exchange(false);
}

void showSimConnected(bool connected) {
    setShown(gWindowState.simConnected, connected);
}

void showSimFlightRunning(bool running) {
    setShown(gWindowState.simFlightRunning, running);
}

void showLiveries(std::size_t count) {
    setShown(gWindowState.liveries, static_cast<int>(count));
}

void showAddOnAirports(int simAddon, int thirdParty) {
    setShown(gWindowState.simAddonAirports, simAddon);
    setShown(gWindowState.thirdPartyAirports, thirdParty);
}

void showLiveAircraft(std::size_t count) {
    setShown(gWindowState.liveAircraft, static_cast<int>(count));
}

std::string realTrafficEdition() {
    const std::lock_guard lock(gMessageMutex);
    return editionText;
}

void showRealTrafficEdition(std::string_view text) {
    {
        const std::lock_guard lock(gMessageMutex);
        editionText = text;
    }
    repaintWindow();
}

void ageMessage() {
    {
        const std::lock_guard lock(gMessageMutex);
        if (messageText.empty() || ++messageAgeSeconds < messageLifeSeconds) {
            return;
        }
        messageText.clear();
    }
    askForRepaint();
}

void repaintWindow() {
    window_system::invalidateAll();
}

void resetWindowState() {
    {
        const std::lock_guard lock(gMessageMutex);
        messageText.clear();
        errorText.clear();
        lampText = {};
        editionText.clear();
    }
    gWindowState.trafficLamp = FeedLamp::notRunning;
    gWindowState.weatherLamp = FeedLamp::notRunning;
    gWindowState.trafficAlive = true;
    gWindowState.weatherAlive = true;
    gWindowState.realTrafficLit = false;
    gWindowState.realTrafficWaiting = true;
    gWindowState.simConnected = false;
    installPathWanted = false;
    gWindowState.simFlightRunning = false;
    gWindowState.qnh = 1013;
    gWindowState.simAddonAirports = -1;
    gWindowState.thirdPartyAirports = -1;
    gWindowState.liveAircraft = 0;
    repaintWindow();
    askForRepaint();
}
