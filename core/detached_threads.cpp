// core/detached_threads.cpp
#include "core/detached_threads.h"

#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>

#include "platform/threads.h"

namespace {

std::mutex countLock;
std::condition_variable oneLess;
int running = 0; // under countLock

void countIn() {
    const std::lock_guard lock(countLock);
    ++running;
}

void countOut() {
    // Told under the lock: the process may end as soon as the waiting side has it.
    const std::lock_guard lock(countLock);
    --running;
    oneLess.notify_all();
}

} // namespace

void gf_startDetached(std::string_view name, std::function<void()> body) {
    countIn();
    try {
        platform::startDetached([threadName = std::string(name), run = std::move(body)]() mutable {
            platform::nameThisThread(threadName);
            run();
            run = nullptr;
            countOut();
        });
    } catch (...) {
        countOut();
        throw;
    }
}

bool gf_waitForDetachedThreads(std::chrono::milliseconds atMost, int stillIn) {
    std::unique_lock lock(countLock);
    return oneLess.wait_for(lock, atMost, [stillIn] { return running <= stillIn; });
}
