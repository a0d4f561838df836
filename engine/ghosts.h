// engine/ghosts.h
// Ghosts: aircraft whose call sign ends in "_", beside their real selves. Engine thread only.
#pragma once

#include <string_view>

/// Whether an aircraft of the ghost's plain call sign is there, and not on its way out.
bool hasPlainTwin(std::string_view ghostCallsign);
