// liveries/registration_codes.h
// Ties real aircraft to their liveries by registration, from the aircraft.cfg sections, AIG-regcodes.xml and the user's
// own files in input\my_regcodes. Start-up thread only.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "liveries/livery.h"
#include "liveries/regcode_files.h"

/// Titles that a scan must not take.
extern std::vector<std::string> DontUseTitles;
/// The lines of OfflineRegcodes.txt until that is written.
extern std::vector<std::string> OfflineReport;

/// Empties DontUseTitles and fills it from the files. At the start of a scan.
void gf_loadDontUseTitles();
/// The registrations of the liveries' own sections into RegcodeTable. After lf_buildAirlineTables.
void gf_processInlineRegcodes(std::span<const LiveryView> liveries);
/// The registrations of the files, which win over those of the sections. After gf_processInlineRegcodes.
void gf_processOfflineRegcodes();

/// Brings one source into RegcodeTable, SpecialRegcodes, UniqueRegcodes and ReservedTitles; entries for titles that the
/// user does not have do nothing. What it replaced, and a line of counts, go to the report.
void lf_mergeRegcodes(const std::vector<RegEntry>& entries, std::vector<std::string>& report);

/// No title, no report.
void resetRegistrationCodes();
