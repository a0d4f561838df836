#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <windows.h>

#include "platform/window_system.h"

namespace {

constexpr int fieldId = 32788;
constexpr const char* className = "edit control test";

std::vector<int> entered;

class EditControl : public testing::Test {
protected:
    EditControl() {
        entered.clear();
        const window_system::WindowHandlers handlers{makeField, nullptr, nullptr, nullptr, note};
        window_system::registerWindowClass(className, handlers, 0xFFCC99);
        window_system::createWindow("test", 0xCA0000, {0, 0, 300, 100});
        window_system::enableControl(fieldId, true);
        field = GetDlgItem(FindWindowW(L"edit control test", nullptr), fieldId);
    }
    ~EditControl() override {
        window_system::destroyWindow();
        UnregisterClassW(L"edit control test", GetModuleHandleW(nullptr));
    }

    static void makeField() {
        window_system::createControl(window_system::ControlKind::edit, fieldId, "", {5, 5, 205, 21});
    }
    static void note(int id) { entered.push_back(id); }

    void type(const std::wstring& text) const {
        for (const wchar_t character : text) {
            SendMessageW(field, WM_CHAR, character, 0);
        }
    }

    HWND field = nullptr;
};

TEST_F(EditControl, whatIsTypedIsItsText) {
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(window_system::controlText(fieldId), "");
    type(L"C:\\Prepar3D v5 \u00FC");
    EXPECT_EQ(window_system::controlText(fieldId), "C:\\Prepar3D v5 \xC3\xBC");
    EXPECT_TRUE(entered.empty());
}

TEST_F(EditControl, enterReachesTheProgramAndLeavesTheText) {
    type(L"C:\\\r");
    EXPECT_EQ(entered, std::vector<int>{fieldId});
    EXPECT_EQ(window_system::controlText(fieldId), "C:\\");
}

TEST_F(EditControl, itsTextStandsOnTheColourOfTheClass) {
    const HWND window = GetParent(field);
    const HDC device = GetDC(field);
    for (const UINT message : {WM_CTLCOLOREDIT, WM_CTLCOLORSTATIC}) {
        SetBkMode(device, TRANSPARENT);
        SetBkColor(device, 0);
        const LRESULT brush =
            SendMessageW(window, message, reinterpret_cast<WPARAM>(device), reinterpret_cast<LPARAM>(field));
        EXPECT_EQ(brush, reinterpret_cast<LRESULT>(GetStockObject(DC_BRUSH)));
        EXPECT_EQ(GetBkColor(device), 0xFFCC99U);
        EXPECT_EQ(GetBkMode(device), OPAQUE);
    }
    ReleaseDC(field, device);
}

TEST_F(EditControl, aControlThatIsNotThereHasNoText) {
    EXPECT_EQ(window_system::controlText(1), "");
}

} // namespace
