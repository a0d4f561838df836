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

/// The tables hold the titles in their own storage; no one else reads the list.
class LiveriesFreed {
public:
    LiveriesFreed() { Liveries.clear(); }
    ~LiveriesFreed() { Liveries.clear(); }
    LiveriesFreed(const LiveriesFreed&) = delete;
    LiveriesFreed& operator=(const LiveriesFreed&) = delete;
};

void buildTables() {
    const StepMessage step("Building the livery tables ...");
    lf_readLiveries();
    showLiveries(Liveries.size());
    lf_buildAirlineTables();
    gf_processInlineRegcodes();
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
    const LiveriesFreed freed;
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
