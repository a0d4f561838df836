// core/run/feed_lamps.h
// Whether the feeds still deliver, as their lamps show it. Run thread only.
#pragma once

/// Compares each reader's count of datagrams with that of the former check. Only while the RealTraffic lamp is lit.
void gf_checkFeedLamps();
