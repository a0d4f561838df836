// liveries/livery_file.h
// LiveriesScanned.xml: what a scan found, for every start until the next scan. Run thread.
#pragma once

#include <memory>
#include <vector>

#include "liveries/livery.h"

/// Relative to the working directory.
inline constexpr const char* scannedLiveriesFile = "output/LiveriesScanned.xml";

/// Writes Liveries in their order, the whole file or nothing of it. Throws std::runtime_error when that fails.
void lf_writeLiveries();

/// What the file holds, in its order.
struct ScannedLiveries {
    std::vector<LiveryView> liveries;
    std::shared_ptr<const void> texts; ///< what they view
};

/// Throws kvd::UserErrorException: 51 when the file is missing or cannot be read, 52 when it holds no element for
/// liveries, 999 when an attribute of a livery is missing.
ScannedLiveries lf_readLiveries();
