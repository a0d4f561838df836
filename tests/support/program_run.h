// tests/support/program_run.h
// The whole program in a folder of its own, on threads of this process.
#pragma once

#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temporary_folder.h"

/// Sets every global of the program back to what it is at the start of a process.
void resetProgram();

/// A program folder with "docs", "input" with a few types and airports, a few scanned liveries, and a simulator's
/// folder with stock scenery that parameters.xml points to. No download server answers, unless the test names one.
/// start() runs the program as its process entry does; the program is closed when this goes.
class ProgramRun {
public:
    ProgramRun();
    ~ProgramRun();
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;

    void start(const std::vector<std::string>& arguments = {});

    /// The quit code, once the program is gone; nothing while it runs.
    std::optional<int> quitCode();
    /// Waits for its end as long as a test has patience.
    bool ends();
    /// Time in which the machine gives this process nothing to run on does not count, up to four times as much.
    bool endsWithin(std::chrono::milliseconds time);

    std::string log() const;
    bool logs(const std::string& text) const;
    /// Waits for a text in the log as long as a test has patience.
    bool willLog(const std::string& text) const;

    /// The parameter file that the program starts with. No scan for liveries, unless SCAN_LIVERIES is among the values.
    void setParameters(const std::vector<std::pair<std::string, std::string>>& values);
    const std::filesystem::path& folder() const { return folder_.path(); }

private:
    TemporaryFolder folder_;
    std::thread windowThread_;
    std::future<int> code_;
    std::optional<int> quitCode_;
};
