// tools/build.h
// Makes the program's data files from public tables.
#pragma once

#include <filesystem>
#include <ostream>
#include <vector>

/// The tables, plain or gzipped. JSON ones are objects by key, CSV ones are known by the names of their columns.
struct BuildSources {
    std::filesystem::path airports; ///< CSV: ICAO and IATA code, position, elevation in feet
    std::filesystem::path types;    ///< JSON: designator to name, class ("L2J") and wake category; or CSV
    std::vector<std::filesystem::path>
        wingspans; ///< CSV: designator and span, metres or feet; the first to name a type counts
    std::vector<std::filesystem::path> airlines; ///< JSON or CSV: three-letter codes
    std::vector<std::filesystem::path> aircraft; ///< JSON: registration and type by address; or CSV, with operators
    std::filesystem::path
        extra; ///< what no table tells, in the form of dbase.xml: publishers, cargo, similar types, ...
    std::filesystem::path archive; ///< airport files "stock/ICAO.xml"; may be empty
};

/// Writes dbase.xml, airports.xml and report.txt into the folder, and the sums of the report to `out`. A type that the
/// extra file names in a category is in that one; the others go by class and wake category. Throws std::runtime_error
/// when a table cannot be read.
void buildDataFiles(const BuildSources& sources, const std::filesystem::path& target, std::ostream& out);
