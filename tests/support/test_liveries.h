// tests/support/test_liveries.h
// Liveries in the tables, as if they had been read from LiveriesScanned.xml.
#pragma once

#include <list>
#include <string>
#include <tuple>
#include <utility>

#include "liveries/livery.h"
#include "liveries/livery_tables.h"

inline Livery livery(const std::string& airline, const std::string& type, const std::string& title) {
    return {.airl = airline, .type = type, .title = title, .atcid = {}};
}

inline Livery freighter(const std::string& airline, const std::string& type, const std::string& title) {
    Livery made = livery(airline, type, title);
    made.cargo = true;
    return made;
}

/// The tables of airlines from the liveries, sorted as the file is.
inline void buildAirlineTables(std::list<Livery> liveries) {
    liveries.sort([](const Livery& a, const Livery& b) {
        return std::tie(a.airl, a.type, a.title) < std::tie(b.airl, b.type, b.title);
    });
    lf_buildAirlineTables(viewsOf(liveries));
}

/// All tables but those of the registrations, which `registrations` may fill.
template <typename Registrations>
void installLiveries(std::list<Livery> liveries, Registrations registrations) {
    buildAirlineTables(std::move(liveries));
    registrations();
    lf_buildModelTables();
    lf_buildSimilarModels();
}

inline void installLiveries(std::list<Livery> liveries) {
    installLiveries(std::move(liveries), [] {});
}
