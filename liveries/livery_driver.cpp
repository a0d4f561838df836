// liveries/livery_driver.cpp
#include "liveries/livery_driver.h"

#include <span>

#include "core/log.h"
#include "core/side_by_side.h"
#include "liveries/livery.h"
#include "liveries/livery_file.h"
#include "liveries/livery_scan.h"
#include "liveries/livery_tables.h"
#include "liveries/registration_codes.h"
#include "window/window_state.h"

namespace {

bool isDone = false;

/// All behind AirlineTable but the similar types of what there is.
void fillTablesOfTitles(std::span<const LiveryView> liveries) {
    fillAirlineModelTables();
    gf_processInlineRegcodes(liveries);
    gf_processOfflineRegcodes();
    logRegistrationCodes();
    lf_buildModelTables();
    logModelTables();
    logSimilarModels();
    summarizeCategories();
    summarizeGenericLiveries();
}

void buildTables() {
    const StepMessage step("Building the livery tables ...");
    // Gone at the end: the tables hold the titles in their own storage.
    const ScannedLiveries scanned = lf_readLiveries();
    fillSimilarAll();
    showLiveries(scanned.liveries.size());
    fillAirlineTable(scanned.liveries);
    // The similar types take as long as all the rest behind the reading, and neither looks at the other's tables.
    runSideBySide([&scanned] { fillTablesOfTitles(scanned.liveries); }, "SimilarTypes", fillSimilarOfLiveries);
}

} // namespace

void gf_processScannedLiveries() {
    Liveries.clear(); // a scan has no use for them any more, and the tables come from the file
    if (takeNewScan()) {
        isDone = false;
    }
    if (isDone) {
        log("Processing scanned liveries skipped; already done in previous start-up");
        return;
    }
    clearLiveryTables();
    showLiveries(0);
    buildTables();
    isDone = true;
}

void resetLiveryDriver() {
    showLiveries(0);
    isDone = false;
    takeNewScan();
}
