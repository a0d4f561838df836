// rig/world/aircraft_titles.h
// The aircraft that the simulator has installed, by title.
// Value type without threads of its own.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "rig/world/world_object.h"

namespace rig {

class AircraftTitles {
public:
    void add(AircraftType type);
    /// Those of every aircraft.cfg below the folder, in whatever case its name is written. A file that cannot be read
    /// is left out.
    void addFolder(const std::filesystem::path& folder);
    /// Those of one aircraft.cfg: a title each [fltsim.n] section, the rest from the sections that all share.
    void addLines(const std::vector<std::string>& lines);

    /// Nothing for a title that is not installed.
    const AircraftType* find(std::string_view title) const;
    std::size_t count() const { return types_.size(); }

private:
    std::map<std::string, AircraftType, std::less<>> types_;
};

} // namespace rig
