// platform/windows/program_entry.cpp
#include "platform/program_entry.h"

#include <windows.h>

#include <shellapi.h>

#include "platform/windows/wide_text.h"

namespace {

std::vector<std::string> commandLineArguments() {
    int count = 0;
    wchar_t** split = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 0; split != nullptr && i < count; ++i) {
        arguments.push_back(platform::utf8FromWide(split[i]));
    }
    LocalFree(split);
    return arguments;
}

} // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    return programMain(commandLineArguments());
}
