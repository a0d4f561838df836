// core/program_info.h
// What the program calls itself: its name, its version, and the lines that follow from them.
#pragma once

#include <string>

inline constexpr const char* programName = "Tarnwing_P3D";

/// Written into every XML file that the program makes, and painted in the title strip.
inline constexpr const char* copyrightText = "(c) 2026 Tarnwing developers";
