// tests/support/recorded_lines.h
// Lines of the real feed, recorded round Amsterdam, which lie beside the project on some machines.
#pragma once

#include <string>
#include <vector>

/// Empty where there are none. The path counts from the working directory at the start of the process.
std::vector<std::string> recordedTrafficLines();
