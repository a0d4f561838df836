// liveries/reference_data.h
// Reads the data file of types, airlines, publishers and registrations into the tables. Start-up, run thread.
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

/// Where the words about a row that is left out go.
using RowReport = std::function<void(std::string_view)>;

/// Opens "input/dbase.enc" and fills every table; false, with an error line, when its XML does not parse. Throws
/// std::runtime_error "dbase.enc not available" or "dbase.enc stream decrypt failed", and kvd::UserErrorException 61
/// for a section that is missing or empty. The clear file is gone afterwards whatever happens.
bool gf_readDataFiles();

/// The reading of the clear file alone, with the same failures. What the tables held is gone in any case.
bool lf_readReferenceXml(const std::filesystem::path& path, const RowReport& report);
