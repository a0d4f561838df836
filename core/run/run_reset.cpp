// core/run/run_reset.cpp
#include "core/run/run_reset.h"

#include <mutex>

#include "core/exit_reason.h"
#include "core/run/run_loop.h"
#include "core/run_flags.h"
#include "engine/slot.h"
#include "feed/feed_reset.h"
#include "feed/real_traffic_link.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "sim/session.h"
#include "sim/user_state.h"
#include "window/window_state.h"

void gf_resetRun() {
    resetEngine();
    resetSession();
    closeRealTrafficLink();
    gUserState = {};
    resetFeed();
    gTrafficReader.collectCallSigns = false;
    {
        const std::lock_guard lock(gTrafficMutex);
        gLiveSampleQueue.clear();
        gAcceptSamples = false;
    }
    resetWindowState();
    gf_resetRunLoop();
    gf_resetRunFlags();
    gf_resetExitReason();
}
