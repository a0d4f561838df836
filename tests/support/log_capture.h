// tests/support/log_capture.h
// The log of a test: opened in a temporary folder of its own, read back by line.
#pragma once

#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// Every line so far but the first, which names the program.
    std::vector<std::string> lines() const;
    /// Those that are error lines, with their prefix "==> ".
    std::vector<std::string> errors() const;
    bool contains(const std::string& line) const;

private:
    TemporaryFolder folder_;
};
