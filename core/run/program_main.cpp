// core/run/program_main.cpp
#include <exception>

#include "core/run/process_entry.h"
#include "platform/program_entry.h"
#include "platform/text_encoding.h"
#include "platform/window_system.h"

int programMain(const std::vector<std::string>& arguments) {
    constexpr int failed = 1;
    try {
        return gf_processEntry(arguments);
    } catch (const std::exception& exception) {
        // Without a log there is no other place to say it.
        window_system::showMessageBox(platform::readableText(exception.what()));
        return failed;
    }
}
