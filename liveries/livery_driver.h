// liveries/livery_driver.h
// From the file of the scanned liveries to all tables that the search for a livery reads. Start-up, run thread.
#pragma once

/// Builds all tables, once per process and again after a scan; otherwise one line in the log. Throws what
/// lf_readLiveries throws.
void gf_processScannedLiveries();

/// As if nothing had been built yet.
void resetLiveryDriver();
