// platform/posix/memory_window.h
// The window system in memory of the native half: what a test presses, sets and reads. Usable from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/window_system.h"

namespace window_system::memory {

struct PaintedText {
    int x;
    int y;
    std::string text;
    Colour colour;
};

struct PaintedFill {
    Rectangle area;
    Colour colour;
};

struct PaintedLine {
    int fromX;
    int fromY;
    int toX;
    int toY;
    Colour colour;
};

struct Control {
    ControlKind kind;
    std::string label;
    Rectangle at;
    bool enabled = false;
    std::string text;
    bool checked = false;
    std::vector<std::string> entries;
    int selected = -1;
};

/// What the last paint drew.
std::vector<PaintedText> paintedTexts();
std::vector<PaintedFill> paintedFills();
std::vector<PaintedLine> paintedLines();
/// The areas that a repaint was asked for since the last paint; the whole window is an empty rectangle.
std::vector<Rectangle> invalidated();
/// Paints at once on the calling thread, as the message loop would.
void paintNow();

/// Where the user has put the window.
void placeWindow(const Rectangle& at, ShowState state, const Rectangle& normalPosition);

std::optional<Control> control(int id);
/// The user types a text into an edit control in place of what stands there, and presses Enter; the message loop takes
/// it. False when he cannot: there is no such control, or it is disabled.
bool enterText(int id, std::u16string_view text);
bool windowExists();
std::string windowTitle();
std::uint32_t windowStyle();
bool isTopMost();
std::vector<std::string> messageBoxes();

/// What the system answers.
void setMonitors(const std::vector<Rectangle>& workAreas);
void refuseResourceStrings(bool refuse);
void refuseWindowClass(bool refuse);
void refuseWindow(bool refuse);

/// No window, no class, no control, one monitor of 1280 by 1024, nothing refused.
void reset();

} // namespace window_system::memory
