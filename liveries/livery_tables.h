// liveries/livery_tables.h
// The tables that the search for a livery reads, built from the liveries once per process (or after a new scan). Built on the
// start-up thread before traffic starts; afterwards the engine thread reads them.
#pragma once

/// AirlineTable and AirlineModelTable from Liveries, which must be sorted by airline, type and title. Fills the arena that all
/// titles are views of.
void lf_buildAirlineTables();
/// ModelTable from AirlineTable.
void lf_buildModelTables();
/// SimilarAll, SimilarWithLiveries and SimilarByAirline, and one log line.
void lf_buildSimilarModels();
/// "N airlines, N pax aircraft models and N cargo aircraft models" to the log.
void logModelTables();
/// What there is of each category, in the order of the categories, and RandomTypes. Switches off the parameters of categories
/// without a livery.
void summarizeCategories();
/// How many types have a generic livery.
void summarizeGenericLiveries();
/// The number of entries of RegcodeTable, to the log.
void logRegistrationCodes();

/// All tables, the live aircraft's livery memory, and the arena empty, for building anew; FailedTitles stays.
void clearLiveryTables();
