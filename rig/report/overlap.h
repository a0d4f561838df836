// rig/report/overlap.h
// Which aircraft of a frame stand in one another. Belongs to whoever reads the frames; it keeps its memory between
// them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "core/geography.h"

namespace rig {

/// An aircraft as a cross: body and wings, each as long as the wing span and a tenth of it wide, a third of it high.
struct Footprint {
    LatLon at;
    double altFeet = 0;
    double headingRad = 0;
    double spanMetres = 0;
};

bool overlap(const Footprint& a, const Footprint& b);

class OverlapSearch {
public:
    /// Indices of all pairs that overlap, the smaller one first; good until the next call. Only neighbours of one cell
    /// of a grid are compared.
    const std::vector<std::pair<std::size_t, std::size_t>>& pairs(const std::vector<Footprint>& footprints);

private:
    struct Cell {
        std::int64_t key = 0;
        std::size_t index = 0;
    };

    void compareWithCell(const std::vector<Footprint>& footprints, const Cell& cell, std::int64_t key);

    std::vector<Cell> cells_; // by key
    std::vector<std::pair<std::size_t, std::size_t>> pairs_;
};

} // namespace rig
