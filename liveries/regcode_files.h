// liveries/regcode_files.h
// The files that tie registrations to titles: AIG-regcodes.xml, and the user's own text files. Start-up thread only.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

struct RegEntry {
    std::string title;
    std::vector<std::string> regs; ///< none: a title that must not be used
    bool special = false;          ///< the title is reserved for these registrations
};

/// Appends the entries of AIG-regcodes.xml. False, with an error line for each fault, when the file is not quite as it
/// should be; what could be read is in the list all the same. A file that does not load is deleted.
bool lf_readAigRegcodes(const std::filesystem::path& file, std::vector<RegEntry>& entries);

/// Appends the entries of the .txt files that lie directly in the folder, in the order of their names. A faulty line,
/// or the faulty one of several registrations, costs itself, with a log line. An entry is special by its mark, or when
/// one registration alone is left; a repeated registration stays as it was told. False, with the reason in the log,
/// when the folder or a file cannot be read.
bool lf_readRegcodeFiles(const std::filesystem::path& folder, std::vector<RegEntry>& entries);
