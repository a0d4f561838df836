// liveries/scan_tasks.cpp
#include "liveries/scan_tasks.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "core/detached_threads.h"
#include "platform/clock.h"

namespace {

/// How long a wait may keep the caller from seeing that it is to end.
constexpr std::chrono::milliseconds waitSlice{50};

/// How long the taking waits for one task.
constexpr std::chrono::seconds longestWait{10};

/// Tasks handed out for each thread before what they give is taken: enough to do while the caller is busy.
constexpr std::size_t tasksAhead = 4;

} // namespace

/// Threads are kept from one task to the next: starting one takes longer than most tasks.
struct ScanTasks::Workers {
    std::mutex lock;
    std::condition_variable taskThere;
    std::deque<std::packaged_task<FolderFinds()>> tasks; // under lock, as all that follows
    std::size_t threads = 0;
    std::size_t idle = 0; ///< of the threads
    bool isOver = false;

    void run();
    void give(std::packaged_task<FolderFinds()> task, std::size_t atMost, const std::shared_ptr<Workers>& self);
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

void ScanTasks::Workers::give(std::packaged_task<FolderFinds()> task, std::size_t atMost,
                              const std::shared_ptr<Workers>& self) {
    const std::lock_guard held(lock);
    if (threads < atMost && idle <= tasks.size()) {
        gf_startDetached("LiveryScan", [self] { self->run(); });
        ++threads;
    }
    tasks.push_back(std::move(task));
    taskThere.notify_one();
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

bool ScanTasks::isFull() const {
    return waiting_.size() >= atMost_ * tasksAhead;
}

bool ScanTasks::start(Task task) {
    if (!whileWaiting_()) {
        return false;
    }
    std::packaged_task<FolderFinds()> packaged(std::move(task));
    auto result = packaged.get_future();
    workers_->give(std::move(packaged), atMost_, workers_);
    waiting_.push_back(std::move(result));
    return true;
}

std::optional<FolderFinds> ScanTasks::takeOldest() {
    std::future<FolderFinds>& oldest = waiting_.front();
    const platform::SteadyTime end = platform::steadyNow() + longestWait;
    while (oldest.wait_for(waitSlice) != std::future_status::ready) {
        if (!whileWaiting_()) {
            return std::nullopt;
        }
        if (platform::steadyNow() >= end) {
            throw std::runtime_error("Future wait timed out after 10 seconds");
        }
    }
    std::future<FolderFinds> result = std::move(oldest);
    waiting_.pop_front();
    return result.get();
}

std::list<Livery> ScanTasks::abandon() {
    std::list<Livery> liveries;
    for (std::future<FolderFinds>& result : waiting_) {
        if (result.wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
            try {
                liveries.splice(liveries.end(), result.get().liveries);
            } catch (const std::exception&) {
                // It had no memory to find anything.
            }
        }
    }
    if (!waiting_.empty()) {
        // Its threads may be stuck, and the next tasks are not to wait for them.
        workers_->end();
        workers_ = std::make_shared<Workers>();
        waiting_.clear();
    }
    return liveries;
}
