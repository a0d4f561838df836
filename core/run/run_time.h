// core/run/run_time.h
// The run's idea of the present half hour. Run thread only.
#pragma once

/// Sets gWeekSlot from the wall clock or, when the feed is of another time, from the last traffic time stamp.
void gf_setWeekSlot();
