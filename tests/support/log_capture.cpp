// tests/support/log_capture.cpp
#include "tests/support/log_capture.h"

#include <algorithm>
#include <sstream>

#include "core/log.h"

LogCapture::LogCapture() {
    gf_openLog();
}

LogCapture::~LogCapture() {
    gf_closeLog();
}

std::vector<std::string> LogCapture::lines() const {
    gf_flushLog();
    std::istringstream text(readFile(folder_.path() / "Log.txt"));
    std::vector<std::string> result;
    std::string line;
    for (bool first = true; std::getline(text, line); first = false) {
        if (!first) {
            result.push_back(line);
        }
    }
    return result;
}

std::vector<std::string> LogCapture::errors() const {
    std::vector<std::string> result = lines();
    std::erase_if(result, [](const std::string& line) { return !line.starts_with("==> "); });
    return result;
}

bool LogCapture::contains(const std::string& line) const {
    const std::vector<std::string> all = lines();
    return std::find(all.begin(), all.end(), line) != all.end();
}
