// tools/command_line.h
// The command line of whoever maintains the reference data.
#pragma once

#include <ostream>
#include <string>
#include <vector>

/// Does what the arguments say, of which the first is the program's own name; results go to `out`, failures to `err`.
/// The exit code: 0 when all went well and a check found nothing.
int runTools(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err);
