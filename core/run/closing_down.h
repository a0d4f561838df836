// core/run/closing_down.h
// The end of a run: everything is stopped in its order, and the next run or the end of the process follows.
// Run thread only.
#pragma once

/// Lets no exception out. Its last act is to post WM_TRNW_START or WM_TRNW_EXIT to the window.
void lf_closingDown();
