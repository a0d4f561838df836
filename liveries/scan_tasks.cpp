// liveries/scan_tasks.cpp
#include "liveries/scan_tasks.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "core/detached_threads.h"
#include "platform/clock.h"

namespace {

/// How long a wait may keep the caller from seeing that it is to end.
constexpr std::chrono::milliseconds waitSlice{50};

/// How long the collecting waits for one file.
constexpr std::chrono::seconds longestWait{10};

/// Tasks handed out for each thread before their results are waited for: enough to do while the caller walks through
/// folders that hold none.
constexpr std::size_t tasksAhead = 32;

/// Waking a thread takes longer than reading most files, so one is woken for several of them.
constexpr std::size_t tasksPerWaking = 8;

} // namespace

/// Threads are kept from one file to the next: starting one takes longer than reading most files.
struct ScanTasks::Workers {
    std::mutex lock;
    std::condition_variable taskThere;
    std::deque<std::packaged_task<std::list<Livery>()>> tasks; // under lock, as all that follows
    std::size_t threads = 0;
    std::size_t idle = 0; ///< of the threads
    bool isOver = false;

    void run();
    void give(std::packaged_task<std::list<Livery>()> task, std::size_t atMost, const std::shared_ptr<Workers>& self);
    void wakeAll();
    void end();
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
        ++idle;
    }
}

void ScanTasks::Workers::give(std::packaged_task<std::list<Livery>()> task, std::size_t atMost,
                              const std::shared_ptr<Workers>& self) {
    const std::lock_guard held(lock);
    if (threads < atMost && idle <= tasks.size()) {
        gf_startDetached("LiveryScan", [self] { self->run(); });
        ++threads;
    }
    tasks.push_back(std::move(task));
    if (tasks.size() % tasksPerWaking == 0) {
        taskThere.notify_one();
    }
}

void ScanTasks::Workers::wakeAll() {
    taskThere.notify_all();
}

void ScanTasks::Workers::end() {
    const std::lock_guard held(lock);
    tasks.clear();
    isOver = true;
    taskThere.notify_all();
}

ScanTasks::ScanTasks(int atMost, WhileWaiting whileWaiting)
    : atMost_(static_cast<std::size_t>(atMost)), whileWaiting_(std::move(whileWaiting)),
      workers_(std::make_shared<Workers>()) {}

ScanTasks::~ScanTasks() {
    workers_->end();
}

bool ScanTasks::start(Task task, std::list<Livery>& into) {
    if (!whileWaiting_()) {
        return false;
    }
    while (waiting_.size() >= atMost_ * tasksAhead) {
        if (!collectOldest(into)) {
            return false;
        }
    }
    std::packaged_task<std::list<Livery>()> packaged(std::move(task));
    auto result = packaged.get_future();
    workers_->give(std::move(packaged), atMost_, workers_);
    waiting_.push_back(std::move(result));
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

void ScanTasks::abandon(std::list<Livery>& into) {
    for (std::future<std::list<Livery>>& result : waiting_) {
        if (result.wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
            into.splice(into.end(), result.get());
        }
    }
    waiting_.clear();
    const std::lock_guard held(workers_->lock);
    workers_->tasks.clear();
}

bool ScanTasks::collectOldest(std::list<Livery>& into) {
    std::future<std::list<Livery>>& oldest = waiting_.front();
    const platform::SteadyTime end = platform::steadyNow() + longestWait;
    if (oldest.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        workers_->wakeAll();
    }
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
