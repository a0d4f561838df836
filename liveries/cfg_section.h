// liveries/cfg_section.h
// One [fltsim.x] section of a scanned file as a livery. Tasks of the scan, at the same time; the reference tables are
// only read.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "liveries/aircraft_folder.h"
#include "liveries/livery.h"
#include "liveries/scan_state.h"

/// The lines of a section, its header first.
using CfgLines = std::span<const std::string_view>;

/// What a section needs to know of its file.
struct SectionFile {
    const ScannedFile& file;
    std::string_view type; ///< the file's type code
    std::uint32_t scan;    ///< ordinal of the folder in the scan
};

enum class SectionForm { ordinary, ivao };

/// The livery of a section. Nothing when the section is refused; the reports of the scan then say why, but for titles
/// that must not be used and the airline code "RFO". No exceptions.
std::optional<Livery> lf_procesFltSimSection(SectionForm form, CfgLines lines, const SectionFile& file,
                                             ScanState& scan);
