// platform/windows/window_system.cpp
#include "platform/window_system.h"

#include <atomic>
#include <exception>
#include <stdexcept>
#include <utility>

#include <windows.h>

#include "platform/windows/wide_text.h"

namespace window_system {

namespace {

constexpr int iconResource = 100;
constexpr int longestResourceString = 100;
constexpr unsigned firstOwnMessage = 32768;
/// From here on messages are those that programs register by name.
constexpr unsigned endOfOwnMessages = 0xC000;

// The window thread makes and destroys the window; other threads only post to it or ask for a repaint.
std::atomic<HWND> window{nullptr};
std::wstring className;
WindowHandlers handlers;
Colour textBackground = 0xFFFFFF;
constexpr WPARAM enterCharacter = 13;

HINSTANCE module() {
    return GetModuleHandleW(nullptr);
}

RECT native(const Rectangle& r) {
    return {r.left, r.top, r.right, r.bottom};
}

Rectangle fromNative(const RECT& r) {
    return {static_cast<int>(r.left), static_cast<int>(r.top), static_cast<int>(r.right), static_cast<int>(r.bottom)};
}

class DevicePainter : public Painter {
public:
    explicit DevicePainter(HDC device) : device_(device) {
        SetBkMode(device_, TRANSPARENT);
        SelectObject(device_, GetStockObject(DC_PEN));
    }

    void fill(const Rectangle& area, Colour colour) override {
        const RECT rectangle = native(area);
        SetDCBrushColor(device_, colour);
        FillRect(device_, &rectangle, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    }

    void line(int fromX, int fromY, int toX, int toY, Colour colour) override {
        SetDCPenColor(device_, colour);
        MoveToEx(device_, fromX, fromY, nullptr);
        LineTo(device_, toX, toY);
    }

    void text(int x, int y, std::string_view text, Colour colour) override {
        const std::wstring wide = platform::wideFromUtf8(text);
        SetTextColor(device_, colour);
        TextOutW(device_, x, y, wide.c_str(), static_cast<int>(wide.size()));
    }

private:
    HDC device_;
};

/// A picture of the client area beside the screen: painted there and copied over whole, so that nothing flickers.
class OffScreen {
public:
    OffScreen(HDC screen, const RECT& client)
        : device_(CreateCompatibleDC(screen)), bitmap_(CreateCompatibleBitmap(screen, client.right, client.bottom)),
          former_(SelectObject(device_, bitmap_)) {}
    ~OffScreen() {
        SelectObject(device_, former_);
        DeleteObject(bitmap_);
        DeleteDC(device_);
    }
    OffScreen(const OffScreen&) = delete;
    OffScreen& operator=(const OffScreen&) = delete;

    HDC device() const { return device_; }

private:
    HDC device_;
    HBITMAP bitmap_;
    HGDIOBJ former_;
};

class PaintScope {
public:
    explicit PaintScope(HWND handle) : handle_(handle), screen_(BeginPaint(handle, &paint_)) {}
    ~PaintScope() { EndPaint(handle_, &paint_); }
    PaintScope(const PaintScope&) = delete;
    PaintScope& operator=(const PaintScope&) = delete;

    HDC screen() const { return screen_; }

private:
    HWND handle_;
    PAINTSTRUCT paint_{};
    HDC screen_;
};

/// The controls paint themselves; what is copied over them would make them flicker.
void leaveOutControls(HWND handle, HDC screen) {
    for (HWND child = GetWindow(handle, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        RECT at{};
        GetWindowRect(child, &at);
        MapWindowPoints(nullptr, handle, reinterpret_cast<POINT*>(&at), 2);
        ExcludeClipRect(screen, at.left, at.top, at.right, at.bottom);
    }
}

void paint(HWND handle) {
    const PaintScope scope(handle);
    const HDC screen = scope.screen();
    RECT client{};
    GetClientRect(handle, &client);
    if (handlers.paint != nullptr && client.right > 0 && client.bottom > 0) {
        const OffScreen picture(screen, client);
        DevicePainter painter(picture.device());
        handlers.paint(painter);
        leaveOutControls(handle, screen);
        BitBlt(screen, 0, 0, client.right, client.bottom, picture.device(), 0, 0, SRCCOPY);
    }
}

LRESULT paintControlText(HDC device) {
    SetBkMode(device, OPAQUE);
    SetBkColor(device, textBackground);
    return reinterpret_cast<LRESULT>(GetStockObject(DC_BRUSH));
}

LRESULT handleMessage(HWND handle, UINT message, WPARAM wide, LPARAM extra) {
    switch (message) {
    case WM_CREATE:
        window = handle;
        if (handlers.created != nullptr) {
            handlers.created();
        }
        return 0;
    case WM_PAINT: paint(handle); return 0;
    // Every pixel is painted anyway; erasing first would only make it flicker.
    case WM_ERASEBKGND: return 1;
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORSTATIC: return paintControlText(reinterpret_cast<HDC>(wide));
    case WM_CLOSE: handlers.closeRequested(); return 0;
    case WM_DESTROY:
        window = nullptr;
        PostQuitMessage(0);
        return 0;
    default: break;
    }
    if (message >= firstOwnMessage && message < endOfOwnMessages && handlers.posted != nullptr) {
        handlers.posted(message);
        return 0;
    }
    return DefWindowProcW(handle, message, wide, extra);
}

/// What a handler of the program threw; it must not pass through the system's code, so the message loop throws it on.
std::exception_ptr handlerFailure;

template <typename Handler>
LRESULT keepingFailures(Handler handle) {
    try {
        return handle();
    } catch (...) {
        handlerFailure = std::current_exception();
        PostQuitMessage(0);
        return 0;
    }
}

LRESULT CALLBACK windowProcedure(HWND handle, UINT message, WPARAM wide, LPARAM extra) {
    return keepingFailures([&] { return handleMessage(handle, message, wide, extra); });
}

/// That of all edit controls before the program took Enter from them.
WNDPROC formerEditProcedure = nullptr;

LRESULT CALLBACK editProcedure(HWND handle, UINT message, WPARAM wide, LPARAM extra) {
    if (message != WM_CHAR || wide != enterCharacter) {
        return CallWindowProcW(formerEditProcedure, handle, message, wide, extra);
    }
    return keepingFailures([&]() -> LRESULT {
        if (handlers.entered != nullptr) {
            handlers.entered(GetDlgCtrlID(handle));
        }
        return 0;
    });
}

void takeEnterFrom(HWND edit) {
    formerEditProcedure =
        reinterpret_cast<WNDPROC>(SetWindowLongPtrW(edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&editProcedure)));
}

const wchar_t* controlClass(ControlKind kind) {
    switch (kind) {
    case ControlKind::edit: return L"EDIT";
    case ControlKind::comboBox: return L"COMBOBOX";
    default: return L"BUTTON";
    }
}

DWORD controlStyle(ControlKind kind) {
    constexpr DWORD common = WS_CHILD | WS_VISIBLE | WS_DISABLED;
    switch (kind) {
    case ControlKind::checkBox: return common | BS_AUTOCHECKBOX;
    case ControlKind::button: return common | BS_PUSHBUTTON;
    case ControlKind::edit: return common | ES_AUTOHSCROLL;
    case ControlKind::comboBox: return common | CBS_DROPDOWNLIST | WS_VSCROLL;
    }
    return common;
}

HWND control(int id) {
    const HWND parent = window;
    return parent == nullptr ? nullptr : GetDlgItem(parent, id);
}

} // namespace

std::string resourceString(int id) {
    wchar_t text[longestResourceString + 1] = {};
    const int length = LoadStringW(module(), static_cast<UINT>(id), text, longestResourceString + 1);
    return length <= 0 ? std::string() : platform::utf8FromWide({text, static_cast<std::size_t>(length)});
}

bool registerWindowClass(std::string_view name, const WindowHandlers& routines, Colour behindTexts) {
    handlers = routines;
    textBackground = behindTexts;
    className = platform::wideFromUtf8(name);
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof windowClass;
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpfnWndProc = windowProcedure;
    windowClass.hInstance = module();
    windowClass.hIcon = LoadIconW(module(), MAKEINTRESOURCEW(iconResource));
    windowClass.hIconSm = windowClass.hIcon;
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    windowClass.lpszClassName = className.c_str();
    return RegisterClassExW(&windowClass) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

bool createWindow(std::string_view title, std::uint32_t style, const Rectangle& at) {
    const HWND handle = CreateWindowExW(0, className.c_str(), platform::wideFromUtf8(title).c_str(), style, at.left,
                                        at.top, at.width(), at.height(), nullptr, nullptr, module(), nullptr);
    if (handle == nullptr) {
        return false;
    }
    window = handle;
    ShowWindow(handle, SW_SHOWNORMAL);
    UpdateWindow(handle);
    return true;
}

int runMessageLoop() {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    if (handlerFailure) {
        std::rethrow_exception(std::exchange(handlerFailure, nullptr));
    }
    return static_cast<int>(message.wParam);
}

void postQuit(int code) {
    PostQuitMessage(code);
}

void clickClose() {
    if (const HWND handle = window; handle != nullptr) {
        PostMessageW(handle, WM_CLOSE, 0, 0);
    }
}

bool postMessage(unsigned message) {
    const HWND handle = window;
    return handle != nullptr && PostMessageW(handle, message, 0, 0) != 0;
}

void invalidate(const Rectangle& area) {
    const RECT rectangle = native(area);
    if (const HWND handle = window; handle != nullptr) {
        RedrawWindow(handle, &rectangle, nullptr, RDW_INVALIDATE | RDW_NOCHILDREN);
    }
}

void invalidateAll() {
    if (const HWND handle = window; handle != nullptr) {
        RedrawWindow(handle, nullptr, nullptr, RDW_INVALIDATE | RDW_NOCHILDREN);
    }
}

Placement windowPlacement() {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof placement;
    GetWindowPlacement(window, &placement);
    // The normal position counts from the work area's corner, which a taskbar may have moved.
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
    OffsetRect(&placement.rcNormalPosition, monitor.rcWork.left - monitor.rcMonitor.left,
               monitor.rcWork.top - monitor.rcMonitor.top);
    Placement result;
    result.normalPosition = fromNative(placement.rcNormalPosition);
    if (placement.showCmd == SW_SHOWMINIMIZED) {
        result.showState = ShowState::minimised;
    } else if (placement.showCmd == SW_SHOWMAXIMIZED) {
        result.showState = ShowState::maximised;
    }
    return result;
}

Rectangle windowRectangle() {
    RECT rectangle{};
    GetWindowRect(window, &rectangle);
    return fromNative(rectangle);
}

void moveWindow(int left, int top) {
    SetWindowPos(window, nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

Rectangle nearestWorkArea(const Rectangle& to) {
    const RECT rectangle = native(to);
    MONITORINFO info{};
    info.cbSize = sizeof info;
    GetMonitorInfoW(MonitorFromRect(&rectangle, MONITOR_DEFAULTTONEAREST), &info);
    return fromNative(info.rcWork);
}

void setTopMost(bool topMost) {
    if (const HWND handle = window; handle != nullptr) {
        SetWindowPos(handle, topMost ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0,
                     SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    }
}

void showMessageBox(std::string_view text) {
    MessageBoxW(window, platform::wideFromUtf8(text).c_str(), className.c_str(), MB_OK | MB_ICONWARNING);
}

void destroyWindow() {
    if (const HWND handle = window; handle != nullptr) {
        DestroyWindow(handle);
        // The destroy message has posted a quit that no message loop is left to take.
        MSG quit{};
        PeekMessageW(&quit, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);
    }
}

bool createControl(ControlKind kind, int id, std::string_view label, const Rectangle& at) {
    const HWND handle = CreateWindowExW(0, controlClass(kind), platform::wideFromUtf8(label).c_str(),
                                        controlStyle(kind), at.left, at.top, at.width(), at.height(), window,
                                        reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), module(), nullptr);
    if (handle != nullptr && kind == ControlKind::edit) {
        takeEnterFrom(handle);
    }
    return handle != nullptr;
}

bool enableControl(int id, bool enabled) {
    const HWND handle = control(id);
    if (handle != nullptr) {
        EnableWindow(handle, enabled ? TRUE : FALSE);
    }
    return handle != nullptr;
}

bool setControlText(int id, std::string_view text) {
    const HWND handle = control(id);
    return handle != nullptr && SetWindowTextW(handle, platform::wideFromUtf8(text).c_str()) != 0;
}

std::string controlText(int id) {
    const HWND handle = control(id);
    if (handle == nullptr) {
        return {};
    }
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(handle)), L'\0');
    // One more for the zero behind it, which the string has room for.
    const int length = GetWindowTextW(handle, text.data(), static_cast<int>(text.size()) + 1);
    text.resize(static_cast<std::size_t>(length));
    return platform::utf8FromWide(text);
}

bool setChecked(int id, bool checked) {
    const HWND handle = control(id);
    if (handle != nullptr) {
        SendMessageW(handle, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
    }
    return handle != nullptr;
}

bool setComboEntries(int id, const std::vector<std::string>& entries) {
    const HWND handle = control(id);
    if (handle == nullptr) {
        return false;
    }
    SendMessageW(handle, CB_RESETCONTENT, 0, 0);
    for (const std::string& entry : entries) {
        SendMessageW(handle, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(platform::wideFromUtf8(entry).c_str()));
    }
    return true;
}

bool selectComboEntry(int id, int entry) {
    const HWND handle = control(id);
    if (handle != nullptr) {
        SendMessageW(handle, CB_SETCURSEL, static_cast<WPARAM>(entry), 0);
    }
    return handle != nullptr;
}

} // namespace window_system
