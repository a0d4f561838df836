// feed/feed_reset.h
// The feed as at the start: for the restart of a run, and when RealTraffic comes or goes.
#pragma once

/// Both readers' stop flags, counts and data; the QNH in all its copies; the lamps' alive flags. Run thread.
void resetFeed();
