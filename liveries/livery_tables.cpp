// liveries/livery_tables.cpp
#include "liveries/livery_tables.h"

void lf_buildAirlineTables() {}
void lf_buildModelTables() {}
void lf_buildSimilarModels() {}
void logModelTables() {}
void summarizeCategories() {}
void summarizeGenericLiveries() {}
void logRegistrationCodes() {}
void clearLiveryTables() {}
