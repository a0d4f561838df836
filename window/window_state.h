// window/window_state.h
// What the window shows of the run: the message and error line, the lamps and the displayed numbers. Everybody writes
// it, the window thread paints it. The texts are under gMessageMutex, all else is atomic.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <string_view>

/// Messages of the program's own to its window.
inline constexpr unsigned WM_TRNW_START = 32769;
inline constexpr unsigned WM_TRNW_EXIT = 32770;
inline constexpr unsigned WM_TRNW_REPAINT_MESSAGE = 32864;

/// Guards the message, the error and the lamps' texts; a leaf: nothing else is taken while it is held.
extern std::mutex gMessageMutex;

/// A message that has stood this long is cleared.
inline constexpr int messageLifeSeconds = 25;

/// The state of a feed as its lamp shows it.
enum class FeedLamp : int { flowing = 1, noData = 2, notRunning = 3 };

struct WindowState {
    std::atomic<FeedLamp> trafficLamp{FeedLamp::notRunning};
    std::atomic<FeedLamp> weatherLamp{FeedLamp::notRunning};
    /// Whether data came in between the last two looks of the feed-lamp check.
    std::atomic<bool> trafficAlive{true};
    std::atomic<bool> weatherAlive{true};
    std::atomic<bool> realTrafficLit{false};
    std::atomic<bool> realTrafficWaiting{true};
    std::atomic<bool> simConnected{false};
    std::atomic<bool> simFlightRunning{false};
    /// Hectopascal.
    std::atomic<int> qnh{1013};
    /// Read into the tables; lasts over the runs of a process as they do.
    std::atomic<int> liveries{0};
    /// Files of add-on airports; below 0 while they are not counted.
    std::atomic<int> simAddonAirports{-1};
    std::atomic<int> thirdPartyAirports{-1};
    /// Objects of live aircraft in the simulator.
    std::atomic<int> liveAircraft{0};
};

extern WindowState gWindowState;

enum class LogCopy { no, yes };

/// Shows a line until it is replaced or 25 seconds old. While an error stands the line is not shown. Any thread.
void showMessage(std::string_view text, LogCopy toLog);
void clearMessage();

/// A line for as long as a step of the start-up lasts. In the end the line before it stands again, unless another has
/// taken the place of the step's meanwhile. Any thread.
class StepMessage {
public:
    explicit StepMessage(std::string_view text);
    ~StepMessage();
    StepMessage(const StepMessage&) = delete;
    StepMessage& operator=(const StepMessage&) = delete;

private:
    std::string text_;
    std::string former_;
};

/// Shows a line on red that stays, and logs "Error {}". Any thread.
void showError(std::string_view text);
void clearError();

/// The texts now standing.
std::string shownMessage();
std::string shownError();

/// What stands beside the simulator's lamp.
struct SimLampText {
    std::string simulator;   ///< name and version
    std::string userTitle;   ///< of the user's aircraft
    std::string userStand;   ///< empty while the user is on none
    std::string userAirport; ///< the airport that the user is at, and its flight
};

SimLampText simLampText();
// Each asks for a repaint when the text is a new one. Any thread.
void showSimulatorName(std::string_view text);
void showUserTitle(std::string_view text);
void showUserStand(std::string_view text);
void showUserAirport(std::string_view text);

/// The user is to say where the simulator is: the window thread lets its field take a text. Any thread.
void askForInstallPath();
/// Whether that was asked for since the last call. Window thread.
bool takeInstallPathRequest();

/// Sets the flag, and asks for a repaint when that changes it. Any thread.
void showSimConnected(bool connected);
void showSimFlightRunning(bool running);
// Each asks for a repaint when the count is a new one. Any thread.
void showLiveries(std::size_t count);
void showAddOnAirports(int simAddon, int thirdParty);
void showLiveAircraft(std::size_t count);
/// The line beside the RealTraffic lamp: edition and version of the client, empty while they are not known.
std::string realTrafficEdition();
/// Asks for a repaint. Any thread.
void showRealTrafficEdition(std::string_view text);

/// Makes the standing message one second older, and clears it at the end of its life. Called once a second of the run.
void ageMessage();

/// Any thread: asks for a repaint of the whole window.
void repaintWindow();

/// Everything as at the start of a run.
void resetWindowState();
