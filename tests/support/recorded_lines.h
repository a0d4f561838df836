// tests/support/recorded_lines.h
// Recordings of real traffic, which lie beside the project on some machines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The unzipped text of "../shared/data/traffic/<name>", the path counting from the working directory at the start of
/// the process. Empty where there is none.
std::string recordedText(std::string_view name);

std::vector<std::string> linesOf(std::string_view text);

/// Lines of the real feed, recorded round Amsterdam. Empty where there are none.
std::vector<std::string> recordedTrafficLines();
