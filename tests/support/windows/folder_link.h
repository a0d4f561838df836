// Links in the file system of a Windows machine; for its tests alone.
#pragma once

#include <process.h>
#include <windows.h>

#include <filesystem>
#include <string>
#include <utility>

#include "tests/support/eventually.h"

/// A link while it lives. To a folder it is a junction, to a file a symbolic link. Wine makes neither, but shows those
/// of the machine that it runs on, so there it is one of theirs. Some machines let nobody make links.
class Link {
public:
    Link(std::filesystem::path link, const std::filesystem::path& target) : link_(std::move(link)) {
        if (isWine()) {
            isMade_ =
                runThere("ln", L"-s " + quoted(there(absolute(target))) + L" " + quoted(there(absolute(link_)))) &&
                eventually([this] { return exists(link_); });
        } else if (is_directory(target)) {
            _wspawnlp(_P_WAIT, L"cmd", L"cmd", L"/c", L"mklink", L"/J",
                      quoted(link_.make_preferred().wstring()).c_str(), quoted(absolute(target).wstring()).c_str(),
                      nullptr);
            isMade_ = exists(link_);
        } else {
            constexpr DWORD withoutPrivilege = 2;
            isMade_ = CreateSymbolicLinkW(link_.c_str(), absolute(target).c_str(), withoutPrivilege) != 0;
        }
    }
    ~Link() {
        if (isWine()) {
            if (runThere("rm", quoted(there(absolute(link_)))) && isMade_) {
                eventually([this] { return !exists(link_); });
            }
        } else if (!RemoveDirectoryW(link_.c_str())) {
            DeleteFileW(link_.c_str());
        }
    }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    bool isMade() const { return isMade_; }

private:
    using ToThere = char* (*)(const wchar_t*);
    using FromThere = wchar_t* (*)(const char*);

    static void* wineRoutine(const char* name) {
        return reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32"), name));
    }
    static bool isWine() { return wineRoutine("wine_get_unix_file_name") != nullptr; }
    static std::wstring quoted(const std::wstring& text) { return L"\"" + text + L"\""; }

    /// The path that Wine's machine has for it; of plain letters, as all temporary folders are.
    static std::wstring there(const std::filesystem::path& path) {
        char* const text = reinterpret_cast<ToThere>(wineRoutine("wine_get_unix_file_name"))(path.c_str());
        const std::string copy = text != nullptr ? text : "";
        HeapFree(GetProcessHeap(), 0, text);
        return {copy.begin(), copy.end()};
    }

    /// Whether it has started; nobody can wait for a program of that machine.
    static bool runThere(const std::string& program, const std::wstring& arguments) {
        const std::string unixPath = "/bin/" + program;
        wchar_t* const path = reinterpret_cast<FromThere>(wineRoutine("wine_get_dos_file_name"))(unixPath.c_str());
        if (path == nullptr) {
            return false; // no drive of Wine's leads there
        }
        std::wstring command = quoted(path) + L" " + arguments;
        HeapFree(GetProcessHeap(), 0, path);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                            &process)) {
            return false;
        }
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
        return true;
    }

    std::filesystem::path link_;
    bool isMade_ = false;
};
