// window/window_layout.h
// Where things stand in the client area, in pixels, and the colours they are painted in.
#pragma once

#include "platform/window_system.h"

inline constexpr int clientWidth = 880;

inline constexpr window_system::Rectangle titleStrip{0, 0, clientWidth, 28};
inline constexpr window_system::Rectangle statusStrip{0, 28, clientWidth, 112};
inline constexpr window_system::Rectangle optionArea{0, 112, clientWidth, 392};
inline constexpr window_system::Rectangle parkingStrip{0, 392, clientWidth, 448};
inline constexpr window_system::Rectangle messageLine{0, 448, clientWidth, 476};

inline constexpr window_system::Colour black = 0x000000;
inline constexpr window_system::Colour white = 0xFFFFFF;
inline constexpr window_system::Colour red = 0x0000FF;
inline constexpr window_system::Colour lightBlue = 0xFFCC99;
inline constexpr window_system::Colour green = 3329330;
inline constexpr window_system::Colour yellow = 65535;
