// rig/map/map_page.h
// The page of the map, map.html, as it was when the program was built.
// A constant: usable from any thread.
#pragma once

#include <string_view>

namespace rig {

extern const std::string_view mapPage;

} // namespace rig
