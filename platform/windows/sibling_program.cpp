// platform/windows/sibling_program.cpp
#include "platform/sibling_program.h"

#include <filesystem>
#include <stdexcept>

#include <windows.h>

#include "platform/files.h"
#include "platform/windows/wide_text.h"

namespace platform {

namespace {

constexpr std::size_t longestPath = 32768;

std::filesystem::path besideThis(const std::string& name) {
    std::wstring own(longestPath, L'\0');
    own.resize(GetModuleFileNameW(nullptr, own.data(), static_cast<DWORD>(own.size())));
    return std::filesystem::path(own).parent_path() / pathFromUtf8(name + ".exe");
}

/// As the system's splitting of a command line takes it apart again: backslashes count only before a quotation mark.
std::wstring quoted(const std::wstring& argument) {
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'"') {
            text.append(backslashes + 1, L'\\');
        }
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        text += c;
    }
    text.append(backslashes, L'\\');
    return text + L'"';
}

class OwnedHandle {
public:
    explicit OwnedHandle(HANDLE handle) : handle_(handle) {}
    ~OwnedHandle() { CloseHandle(handle_); }
    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;
    HANDLE get() const { return handle_; }

private:
    HANDLE handle_;
};

} // namespace

int runSibling(const std::string& name, const std::vector<std::string>& arguments) {
    const std::filesystem::path program = besideThis(name);
    std::wstring line = quoted(program.wstring());
    for (const std::string& argument : arguments) {
        line += L' ' + quoted(wideFromUtf8(argument));
    }
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION started{};
    if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &started) ==
        0) {
        throw std::runtime_error("cannot start " + utf8FromPath(program) + ": error " + std::to_string(GetLastError()));
    }
    const OwnedHandle thread(started.hThread);
    const OwnedHandle process(started.hProcess);
    WaitForSingleObject(process.get(), INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.get(), &code);
    return static_cast<int>(code);
}

} // namespace platform
