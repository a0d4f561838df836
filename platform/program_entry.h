// platform/program_entry.h
// Where the system starts the program: platform/ splits the command line and calls this.
#pragma once

#include <string>
#include <vector>

/// Defined by the program. `arguments` begins with the program's own name; all are UTF-8. Answers the exit code.
int programMain(const std::vector<std::string>& arguments);
