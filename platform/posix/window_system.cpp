// platform/posix/window_system.cpp
// A window system that lives in memory: it keeps the controls' state, the message queue and the last painted texts.
#include "platform/window_system.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <limits>
#include <map>
#include <mutex>

#include "platform/posix/memory_window.h"
#include "platform/text_encoding.h"

namespace window_system {

namespace {

constexpr Rectangle oneMonitor{0, 0, 1280, 1024};
constexpr int titleResource = 101;

struct State {
    bool classRegistered = false;
    bool windowExists = false;
    WindowHandlers handlers;
    std::deque<unsigned> posted;
    bool closeClicked = false;
    bool paintWanted = false;
    std::optional<int> quitCode;
    Rectangle rectangle;
    Placement placement;
    bool topMost = false;
    std::vector<Rectangle> monitors{oneMonitor};
    std::map<int, memory::Control> controls;
    /// What the user typed, as the window system keeps it: it need not be valid text.
    std::map<int, std::u16string> typedTexts;
    std::deque<int> entered;
    std::vector<memory::PaintedText> texts;
    std::vector<memory::PaintedFill> fills;
    std::vector<memory::PaintedLine> lines;
    std::vector<Rectangle> invalidated;
    std::string title;
    std::uint32_t style = 0;
    std::vector<std::string> messageBoxes;
    bool refuseResourceStrings = false;
    bool refuseWindowClass = false;
    bool refuseWindow = false;
};

std::mutex stateLock;
std::condition_variable somethingHappened;
State state; // under stateLock

class MemoryPainter : public Painter {
public:
    void fill(const Rectangle& area, Colour colour) override { fills.push_back({area, colour}); }
    void line(int fromX, int fromY, int toX, int toY, Colour colour) override {
        lines.push_back({fromX, fromY, toX, toY, colour});
    }
    void text(int x, int y, std::string_view text, Colour colour) override {
        platform::utf16FromUtf8(text);
        texts.push_back({x, y, std::string(text), colour});
    }

    std::vector<memory::PaintedText> texts;
    std::vector<memory::PaintedFill> fills;
    std::vector<memory::PaintedLine> lines;
};

/// What the message loop does next, decided under the lock and carried out without it.
struct Step {
    enum class Kind { close, posted, entered, paint, quit } kind = Kind::paint;
    unsigned message = 0;
    int quitCode = 0;
    int control = 0;
};

bool hasWork(const State& s) {
    return s.closeClicked || !s.posted.empty() || !s.entered.empty() || s.quitCode || s.paintWanted;
}

Step nextStep() {
    std::unique_lock lock(stateLock);
    somethingHappened.wait(lock, [] { return hasWork(state); });
    if (state.closeClicked) {
        state.closeClicked = false;
        return {Step::Kind::close};
    }
    if (!state.posted.empty()) {
        const unsigned message = state.posted.front();
        state.posted.pop_front();
        return {Step::Kind::posted, message};
    }
    if (!state.entered.empty()) {
        const int control = state.entered.front();
        state.entered.pop_front();
        return {Step::Kind::entered, 0, 0, control};
    }
    if (state.quitCode) {
        const int code = *state.quitCode;
        state.quitCode.reset();
        return {Step::Kind::quit, 0, code};
    }
    state.paintWanted = false;
    return {Step::Kind::paint};
}

template <typename Change>
void change(Change apply) {
    {
        const std::lock_guard lock(stateLock);
        apply(state);
    }
    somethingHappened.notify_all();
}

template <typename Change>
bool changeControl(int id, Change apply) {
    const std::lock_guard lock(stateLock);
    const auto found = state.controls.find(id);
    if (found == state.controls.end()) {
        return false;
    }
    apply(found->second);
    return true;
}

WindowHandlers handlers() {
    const std::lock_guard lock(stateLock);
    return state.handlers;
}

/// Pixels from the nearest point of `area` to the middle of `of`, squared.
long long squaredDistance(const Rectangle& area, const Rectangle& of) {
    const long long x = of.left + of.width() / 2;
    const long long y = of.top + of.height() / 2;
    const long long dx = x - std::clamp<long long>(x, area.left, area.right);
    const long long dy = y - std::clamp<long long>(y, area.top, area.bottom);
    return dx * dx + dy * dy;
}

} // namespace

std::string resourceString(int id) {
    const std::lock_guard lock(stateLock);
    return id == titleResource && !state.refuseResourceStrings ? "Tarnwing_P3D" : "";
}

bool registerWindowClass(std::string_view, const WindowHandlers& handlers, Colour) {
    const std::lock_guard lock(stateLock);
    state.handlers = handlers;
    state.classRegistered = !state.refuseWindowClass;
    return state.classRegistered;
}

bool createWindow(std::string_view title, std::uint32_t style, const Rectangle& at) {
    {
        const std::lock_guard lock(stateLock);
        if (!state.classRegistered || state.refuseWindow) {
            return false;
        }
        state.windowExists = true;
        state.title = title;
        state.style = style;
        state.rectangle = at;
        state.placement = {ShowState::normal, at};
        state.paintWanted = true;
    }
    if (const WindowHandlers routines = handlers(); routines.created != nullptr) {
        routines.created();
    }
    return true;
}

int runMessageLoop() {
    while (true) {
        const Step step = nextStep();
        switch (step.kind) {
        case Step::Kind::close: handlers().closeRequested(); break;
        case Step::Kind::posted: handlers().posted(step.message); break;
        case Step::Kind::entered: handlers().entered(step.control); break;
        case Step::Kind::paint: memory::paintNow(); break;
        case Step::Kind::quit: return step.quitCode;
        }
    }
}

void postQuit(int code) {
    change([code](State& s) { s.quitCode = code; });
}

void clickClose() {
    change([](State& s) { s.closeClicked = s.windowExists; });
}

bool postMessage(unsigned message) {
    bool posted = false;
    change([&](State& s) {
        posted = s.windowExists;
        if (posted) {
            s.posted.push_back(message);
        }
    });
    return posted;
}

void invalidate(const Rectangle& area) {
    change([&](State& s) {
        if (s.windowExists) {
            s.paintWanted = true;
            s.invalidated.push_back(area);
        }
    });
}

void invalidateAll() {
    invalidate({});
}

Placement windowPlacement() {
    const std::lock_guard lock(stateLock);
    return state.placement;
}

Rectangle windowRectangle() {
    const std::lock_guard lock(stateLock);
    return state.rectangle;
}

void moveWindow(int left, int top) {
    change([=](State& s) {
        s.rectangle = {left, top, left + s.rectangle.width(), top + s.rectangle.height()};
        s.placement.normalPosition = s.rectangle;
    });
}

Rectangle nearestWorkArea(const Rectangle& to) {
    const std::lock_guard lock(stateLock);
    return *std::min_element(state.monitors.begin(), state.monitors.end(), [&](const auto& a, const auto& b) {
        return squaredDistance(a, to) < squaredDistance(b, to);
    });
}

void setTopMost(bool topMost) {
    change([=](State& s) { s.topMost = topMost; });
}

void showMessageBox(std::string_view text) {
    change([&](State& s) { s.messageBoxes.emplace_back(text); });
}

void destroyWindow() {
    change([](State& s) {
        s.windowExists = false;
        s.controls.clear();
        s.typedTexts.clear();
        s.entered.clear();
        // What was meant for this window does not reach the next one.
        s.closeClicked = false;
        s.posted.clear();
        s.paintWanted = false;
    });
}

bool createControl(ControlKind kind, int id, std::string_view label, const Rectangle& at) {
    const std::lock_guard lock(stateLock);
    memory::Control control{};
    control.kind = kind;
    control.label = label;
    control.at = at;
    return state.controls.emplace(id, control).second;
}

bool enableControl(int id, bool enabled) {
    return changeControl(id, [=](memory::Control& c) { c.enabled = enabled; });
}

bool setControlText(int id, std::string_view text) {
    return changeControl(id, [=](memory::Control& c) {
        c.text = text;
        state.typedTexts.erase(id);
    });
}

std::string controlText(int id) {
    const std::lock_guard lock(stateLock);
    if (const auto typed = state.typedTexts.find(id); typed != state.typedTexts.end()) {
        return platform::utf8FromUtf16(typed->second);
    }
    const auto found = state.controls.find(id);
    return found == state.controls.end() ? std::string() : found->second.text;
}

bool setChecked(int id, bool checked) {
    return changeControl(id, [=](memory::Control& c) { c.checked = checked; });
}

bool setComboEntries(int id, const std::vector<std::string>& entries) {
    return changeControl(id, [&](memory::Control& c) {
        c.entries = entries;
        c.selected = -1;
    });
}

bool selectComboEntry(int id, int entry) {
    return changeControl(id, [=](memory::Control& c) { c.selected = entry; });
}

namespace memory {

std::vector<PaintedText> paintedTexts() {
    const std::lock_guard lock(stateLock);
    return state.texts;
}

std::vector<PaintedFill> paintedFills() {
    const std::lock_guard lock(stateLock);
    return state.fills;
}

std::vector<PaintedLine> paintedLines() {
    const std::lock_guard lock(stateLock);
    return state.lines;
}

std::vector<Rectangle> invalidated() {
    const std::lock_guard lock(stateLock);
    return state.invalidated;
}

std::string windowTitle() {
    const std::lock_guard lock(stateLock);
    return state.title;
}

std::uint32_t windowStyle() {
    const std::lock_guard lock(stateLock);
    return state.style;
}

void paintNow() {
    const WindowHandlers routines = handlers();
    if (routines.paint == nullptr) {
        return;
    }
    MemoryPainter painter;
    routines.paint(painter);
    change([&](State& s) {
        s.texts = std::move(painter.texts);
        s.fills = std::move(painter.fills);
        s.lines = std::move(painter.lines);
        s.invalidated.clear();
    });
}

void placeWindow(const Rectangle& at, ShowState showState, const Rectangle& normalPosition) {
    change([&](State& s) {
        s.rectangle = at;
        s.placement = {showState, normalPosition};
    });
}

std::optional<Control> control(int id) {
    const std::lock_guard lock(stateLock);
    const auto found = state.controls.find(id);
    return found == state.controls.end() ? std::nullopt : std::optional(found->second);
}

bool enterText(int id, std::u16string_view text) {
    bool entered = false;
    change([&](State& s) {
        const auto found = s.controls.find(id);
        entered = found != s.controls.end() && found->second.enabled;
        if (entered) {
            found->second.text = platform::repairedUtf8(text);
            s.typedTexts[id] = text;
            s.entered.push_back(id);
        }
    });
    return entered;
}

bool windowExists() {
    const std::lock_guard lock(stateLock);
    return state.windowExists;
}

bool isTopMost() {
    const std::lock_guard lock(stateLock);
    return state.topMost;
}

std::vector<std::string> messageBoxes() {
    const std::lock_guard lock(stateLock);
    return state.messageBoxes;
}

void setMonitors(const std::vector<Rectangle>& workAreas) {
    change([&](State& s) { s.monitors = workAreas; });
}

void refuseResourceStrings(bool refuse) {
    change([=](State& s) { s.refuseResourceStrings = refuse; });
}

void refuseWindowClass(bool refuse) {
    change([=](State& s) { s.refuseWindowClass = refuse; });
}

void refuseWindow(bool refuse) {
    change([=](State& s) { s.refuseWindow = refuse; });
}

void reset() {
    change([](State& s) { s = State{}; });
}

} // namespace memory

} // namespace window_system
