// distribution/check_versions.h
// At a start: which data files the download server has in a newer version, and the fetching of those. Run thread.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "core/program_version.h"

/// Asks the server for its versions, fetches the data files that are newer there or missing here, and asks for the
/// scans that are due. Without a network the program goes on with what it has. False ends the start-up. Throws what
/// parseVersion throws when an installed version is no version.
bool gf_checkVersions();

/// The versions that the server's version file holds, by key; what is no version is left out. Nothing when the text is
/// no JSON object.
std::optional<std::map<std::string, ProgramVersion>> parseWebVersions(std::string_view text);
