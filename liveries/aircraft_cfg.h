// liveries/aircraft_cfg.h
// One aircraft.cfg or sim.cfg file of the user's, from its bytes to its liveries. Tasks of the scan, at the same time.
#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <string_view>

#include "liveries/aircraft_folder.h"
#include "liveries/livery.h"
#include "liveries/scan_state.h"

/// The liveries of a file. What is refused stands in the reports of the scan or in the log; no exceptions. A scan that
/// is to stop ends between two sections.
std::list<Livery> lf_searchLiveriesinFile(std::uint32_t scanNumber, const ScannedFile& file, ScanState& scan);
/// The same for a file whose type stands in the name of its folder and whose airlines stand in the titles.
std::list<Livery> lf_searchLiveriesinIVAOFile(std::uint32_t scanNumber, const ScannedFile& file, ScanState& scan);

/// The type that the code of an IVAO folder stands for, such as T154 for "T154B2".
std::string_view ivaoModel(std::string_view folderCode);
