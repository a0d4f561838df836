// platform/windows/registry.cpp
#include "platform/registry.h"

#include <windows.h>

#include <string>

#include "platform/windows/wide_text.h"

namespace platform {

namespace {

class Key {
public:
    Key(RegistryHive hive, std::string_view path)
        : result_(RegOpenKeyExW(hive == RegistryHive::machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER,
                                wideFromUtf8(path).c_str(), 0, KEY_READ, &handle_)) {}
    ~Key() {
        if (handle_ != nullptr) {
            RegCloseKey(handle_);
        }
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    HKEY get() const { return handle_; }
    LSTATUS result() const { return result_; }

private:
    HKEY handle_ = nullptr;
    LSTATUS result_;
};

void check(LSTATUS status, const char* text) {
    if (status != ERROR_SUCCESS) {
        throw winreg::RegException(static_cast<int>(status), std::system_category(), text);
    }
}

} // namespace

bool registryKeyExists(RegistryHive hive, std::string_view key) {
    return Key(hive, key).result() == ERROR_SUCCESS;
}

std::string readRegistryString(RegistryHive hive, std::string_view key, std::string_view value) {
    const Key opened(hive, key);
    check(opened.result(), "RegOpenKeyExW failed.");
    const std::wstring name = wideFromUtf8(value);
    DWORD bytes = 0;
    check(RegGetValueW(opened.get(), nullptr, name.c_str(), RRF_RT_REG_SZ, nullptr, nullptr, &bytes),
          "Cannot get the size of the string value: RegGetValueW failed.");
    std::wstring text(bytes / sizeof(wchar_t), L'\0');
    check(RegGetValueW(opened.get(), nullptr, name.c_str(), RRF_RT_REG_SZ, nullptr, text.data(), &bytes),
          "Cannot get the string value: RegGetValueW failed.");
    text.resize(text.find(L'\0') == std::wstring::npos ? text.size() : text.find(L'\0'));
    return utf8FromWide(text);
}

std::string readRegistryStringOrNumber(RegistryHive hive, std::string_view key, std::string_view value) {
    DWORD number = 0;
    DWORD bytes = sizeof number;
    if (RegGetValueW(Key(hive, key).get(), nullptr, wideFromUtf8(value).c_str(), RRF_RT_REG_DWORD, nullptr, &number,
                     &bytes) == ERROR_SUCCESS) {
        return std::to_string(number);
    }
    return readRegistryString(hive, key, value);
}

} // namespace platform
