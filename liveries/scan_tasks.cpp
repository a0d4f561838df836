// liveries/scan_tasks.cpp
#include "liveries/scan_tasks.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

#include "core/detached_threads.h"
#include "platform/clock.h"

namespace {

/// How long a wait may keep the caller from seeing that it is to end.
constexpr std::chrono::milliseconds waitSlice{50};

/// How long the collecting waits for one file.
constexpr std::chrono::seconds longestWait{10};

} // namespace

/// Threads are kept from one file to the next: starting one takes longer than reading most files.
struct ScanTasks::Workers {
    std::mutex lock;
    std::condition_variable taskThere;
    std::deque<std::packaged_task<std::list<Livery>()>> tasks; // under lock, as the next two
    int idle = 0;
    bool isOver = false;
    std::atomic<int> running = 0; ///< tasks started and not yet at their end

    void run();
    void give(std::packaged_task<std::list<Livery>()> task, const std::shared_ptr<Workers>& self);
};

void ScanTasks::Workers::run() {
    std::unique_lock held(lock);
    ++idle;
    for (;;) {
        taskThere.wait(held, [this] { return isOver || !tasks.empty(); });
        if (tasks.empty()) {
            return;
        }
        --idle;
        auto task = std::move(tasks.front());
        tasks.pop_front();
        held.unlock();
        task();
        task = {};
        held.lock();
        // At once, so that a thread that is free is never taken for one that runs.
        ++idle;
        --running;
    }
}

void ScanTasks::Workers::give(std::packaged_task<std::list<Livery>()> task, const std::shared_ptr<Workers>& self) {
    const std::lock_guard held(lock);
    const bool wantsThread = static_cast<std::size_t>(idle) <= tasks.size();
    if (wantsThread) {
        gf_startDetached("LiveryScan", [self] { self->run(); });
    }
    tasks.push_back(std::move(task));
    ++running;
    taskThere.notify_one();
}

ScanTasks::ScanTasks(int atMost, WhileWaiting whileWaiting)
    : atMost_(atMost), whileWaiting_(std::move(whileWaiting)), workers_(std::make_shared<Workers>()) {}

ScanTasks::~ScanTasks() {
    const std::lock_guard held(workers_->lock);
    workers_->isOver = true;
    workers_->taskThere.notify_all();
}

bool ScanTasks::waitForFreePlace() {
    while (workers_->running >= atMost_) {
        if (!whileWaiting_()) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

bool ScanTasks::start(Task task, std::list<Livery>& into) {
    if (!waitForFreePlace()) {
        return false;
    }
    std::packaged_task<std::list<Livery>()> packaged(std::move(task));
    auto result = packaged.get_future();
    workers_->give(std::move(packaged), workers_);
    waiting_.push_back(std::move(result));
    while (waiting_.size() > static_cast<std::size_t>(atMost_)) {
        if (!collectOldest(into)) {
            return false;
        }
    }
    return true;
}

bool ScanTasks::collectAll(std::list<Livery>& into) {
    while (!waiting_.empty()) {
        if (!collectOldest(into)) {
            return false;
        }
    }
    return true;
}

void ScanTasks::abandon() {
    waiting_.clear();
}

bool ScanTasks::collectOldest(std::list<Livery>& into) {
    std::future<std::list<Livery>>& oldest = waiting_.front();
    const platform::SteadyTime end = platform::steadyNow() + longestWait;
    while (oldest.wait_for(waitSlice) != std::future_status::ready) {
        if (!whileWaiting_()) {
            return false;
        }
        if (platform::steadyNow() >= end) {
            throw std::runtime_error("Future wait timed out after 10 seconds");
        }
    }
    into.splice(into.end(), oldest.get());
    waiting_.pop_front();
    return true;
}
