// liveries/livery_driver.cpp
#include "liveries/livery_driver.h"

#include "core/log.h"
#include "liveries/livery.h"
#include "liveries/livery_file.h"
#include "liveries/livery_scan.h"
#include "liveries/livery_tables.h"
#include "liveries/registration_codes.h"
#include "window/window_state.h"

namespace {

bool isDone = false;

void buildTables() {
    const StepMessage step("Building the livery tables ...");
    // Gone at the end: the tables hold the titles in their own storage.
    const ScannedLiveries scanned = lf_readLiveries();
    showLiveries(scanned.liveries.size());
    lf_buildAirlineTables(scanned.liveries);
    gf_processInlineRegcodes(scanned.liveries);
    gf_processOfflineRegcodes();
    logRegistrationCodes();
    lf_buildModelTables();
    logModelTables();
    lf_buildSimilarModels();
    summarizeCategories();
    summarizeGenericLiveries();
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
