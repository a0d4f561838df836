// liveries/registration_codes.h
// Ties real aircraft to their liveries by registration, from the aircraft.cfg sections, AIG-regcodes.xml and the user's own
// files in input\my_regcodes. Start-up thread only.
#pragma once

#include <string>
#include <vector>

/// Titles that a scan must not take.
extern std::vector<std::string> DontUseTitles;

/// Empties DontUseTitles and fills it from the files. At the start of a scan.
void gf_loadDontUseTitles();
/// The registrations of the liveries' own sections into RegcodeTable. After lf_buildAirlineTables.
void gf_processInlineRegcodes();
/// The registrations of the files, which win over those of the sections. After gf_processInlineRegcodes.
void gf_processOfflineRegcodes();

/// No title, no report.
void resetRegistrationCodes();
