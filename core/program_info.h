// core/program_info.h
// What the program calls itself, and the line that says whose it is.
#pragma once

inline constexpr const char* programName = "Tarnwing_P3D";

/// Written into every XML file that the program makes, and painted in the title strip.
inline constexpr const char* copyrightText = "(c) 2026 Tarnwing developers";
