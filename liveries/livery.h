// liveries/livery.h
// The liveries found on the user's machine, as the scan and the reading of LiveriesScanned.xml leave them for the building of
// the tables. Start-up thread only.
#pragma once

#include <cstdint>
#include <list>
#include <string>

/// One section of an aircraft.cfg file.
struct Livery {
    std::string airl;       ///< airline code; "ZZZ" for a generic livery, "PVT" for a private aircraft
    std::string type;       ///< type code
    std::string title;      ///< unique across a scan
    std::string atcid;      ///< registration, may be empty
    std::uint32_t scan = 0; ///< ordinal of the folder in the scan, 1 to 10; not stored in the file
    bool cargo = false;     ///< a freighter
};

/// The liveries on their way from the scan to the file, or from the file to the tables; empty otherwise.
extern std::list<Livery> Liveries;
