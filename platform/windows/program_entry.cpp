// platform/windows/program_entry.cpp
#include "platform/program_entry.h"

#include <stdexcept>

#include <windows.h>

#include <shellapi.h>

#include "platform/windows/wide_text.h"

namespace {

/// A file name may hold half a character; such an argument cannot be one that the program knows.
std::string utf8Argument(const wchar_t* argument) {
    try {
        return platform::utf8FromWide(argument);
    } catch (const std::runtime_error&) {
        return {};
    }
}

std::vector<std::string> commandLineArguments() {
    int count = 0;
    wchar_t** split = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 0; split != nullptr && i < count; ++i) {
        arguments.push_back(utf8Argument(split[i]));
    }
    LocalFree(split);
    return arguments;
}

} // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    return programMain(commandLineArguments());
}
