// platform/window_system.h
// The one window of the program, its controls and its message loop, as far as the program uses a window system.
// Made, painted and run by the window thread; what says so may be called from any thread. No call is to be made while a
// lock is held: a call from another thread waits for the window thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace window_system {

/// A rectangle with its right and bottom edges outside it, in pixels.
struct Rectangle {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

/// A colour as the window system counts it: 0x00BBGGRR.
using Colour = std::uint32_t;

/// What a paint handler draws with; in client coordinates.
class Painter {
public:
    virtual ~Painter() = default;
    virtual void fill(const Rectangle& area, Colour colour) = 0;
    /// A line one pixel wide; its last point is not drawn.
    virtual void line(int fromX, int fromY, int toX, int toY, Colour colour) = 0;
    /// Text without a background. Throws std::runtime_error when the text is not valid UTF-8.
    virtual void text(int x, int y, std::string_view text, Colour colour) = 0;
};

/// The routines of the program that the window procedure calls, all on the window thread.
struct WindowHandlers {
    void (*created)() = nullptr;
    void (*paint)(Painter&) = nullptr;
    void (*closeRequested)() = nullptr;
    /// A message of the program's own, of 32768 or above.
    void (*posted)(unsigned message) = nullptr;
    /// Enter was pressed in the edit control with this identifier.
    void (*entered)(int id) = nullptr;
};

/// The text of a string resource, at most 100 characters; empty when there is none.
std::string resourceString(int id);

/// False when the system refuses. The class has icon resource 100, the arrow cursor and a black background; the texts
/// in edit and static controls stand on `textBackground`.
bool registerWindowClass(std::string_view name, const WindowHandlers& handlers, Colour textBackground = 0xFFFFFF);

/// Makes the window of the registered class, outer size and position as given, and shows it. False when the system
/// refuses.
bool createWindow(std::string_view title, std::uint32_t style, const Rectangle& at);

/// Runs messages until quit; the quit code.
int runMessageLoop();

/// Ends the message loop with this code.
void postQuit(int code);

/// Any thread. As the user's click on the close button.
void clickClose();

/// Any thread. False when there is no window.
bool postMessage(unsigned message);

/// Any thread. Asks for a repaint of the area, or of everything, without erasing it.
void invalidate(const Rectangle& area);
void invalidateAll();

enum class ShowState { normal, minimised, maximised };

struct Placement {
    ShowState showState = ShowState::normal;
    Rectangle normalPosition;
};

Placement windowPlacement();
Rectangle windowRectangle();
void moveWindow(int left, int top);

/// The work area of the monitor that the rectangle lies on, or else of the nearest one.
Rectangle nearestWorkArea(const Rectangle& to);

/// Any thread.
void setTopMost(bool topMost);

/// Tells the user something in a box of its own and waits for the answer.
void showMessageBox(std::string_view text);

/// Destroys the window at the end of the process, or between tests.
void destroyWindow();

// Controls, known by their identifier. The calls on a control may come from any thread; they answer false, or nothing,
// when there is no such control.

enum class ControlKind { checkBox, button, edit, comboBox };

bool createControl(ControlKind kind, int id, std::string_view label, const Rectangle& at);
bool enableControl(int id, bool enabled);
bool setControlText(int id, std::string_view text);
/// What stands in the control. Throws std::runtime_error "wide_to_utf8: invalid UTF-16" when it is no text.
std::string controlText(int id);
bool setChecked(int id, bool checked);
bool setComboEntries(int id, const std::vector<std::string>& entries);
/// Selects an entry by its place; -1 selects none.
bool selectComboEntry(int id, int entry);

} // namespace window_system
