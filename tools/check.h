// tools/check.h
// Reads an XML file as the program would, and tells what the program would leave out.
#pragma once

#include <filesystem>
#include <ostream>

/// Writes one line for each row that the program would complain of or pass over without a word, or the failure that
/// would end its start, and a line with what was read. The number of lines of complaint.
int checkDataFile(const std::filesystem::path& path, std::ostream& out);
