// rig/report/pictures.h
// Pictures for those who only look. Runs on the calling thread.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "rig/report/analysis.h"

namespace rig {

/// Writes "map.png", "worst.png" and "profiles.png" and answers their paths; none where no pictures can be drawn.
/// Throws std::runtime_error when one cannot be written.
std::vector<std::filesystem::path> drawPictures(const Analysis& analysis, const std::filesystem::path& folder);

} // namespace rig
