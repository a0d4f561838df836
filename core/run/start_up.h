// core/run/start_up.h
// One run, from reading the files to closing down. The body of the run thread.
#pragma once

/// A whole run. Lets no exception out; its last act is to post what follows to the window.
void lf_startUpTRNW();
