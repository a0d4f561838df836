// liveries/livery.h
// The liveries found on the user's machine: as the scan leaves them for the file, and as the reading of the file leaves
// them for the building of the tables. Start-up thread only.
#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <vector>

/// One section of an aircraft.cfg file.
struct Livery {
    std::string airl;       ///< airline code; "ZZZ" for a generic livery, "PVT" for a private aircraft
    std::string type;       ///< type code
    std::string title;      ///< unique across a scan
    std::string atcid;      ///< registration, may be empty
    std::uint32_t scan = 0; ///< ordinal of the folder in the scan, 1 to 10; not stored in the file
    bool cargo = false;     ///< a freighter
};

/// The liveries on their way from the scan to the file; empty otherwise.
extern std::list<Livery> Liveries;

/// A livery on its way from the file to the tables. Its texts belong to whoever made it.
struct LiveryView {
    std::string_view airl;
    std::string_view type;
    std::string_view title;
    std::string_view atcid;
    bool cargo = false;
};

/// Views of the list, in its order.
std::vector<LiveryView> viewsOf(const std::list<Livery>& liveries);
