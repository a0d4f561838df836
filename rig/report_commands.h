// rig/report_commands.h
// The command that tells what flew: "report".
#pragma once

#include <iosfwd>

#include <CLI/CLI.hpp>

#include "rig/report/report_run.h"

class ReportCommands {
public:
    explicit ReportCommands(CLI::App& app);

    /// Runs the command if it was parsed.
    void run(std::ostream& out) const;

private:
    CLI::App* report_ = nullptr;
    rig::ReportOptions options_;
};
