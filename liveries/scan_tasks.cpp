// liveries/scan_tasks.cpp
#include "liveries/scan_tasks.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <system_error>

#include "platform/clock.h"

namespace {

/// How long a wait may keep the caller from seeing that it is to end.
constexpr std::chrono::milliseconds waitSlice{50};

/// How long the taking waits for one task.
constexpr std::chrono::seconds longestWait{10};

/// What a wait counts for at most between two looks: through a sleep of the machine the task could do nothing.
constexpr std::chrono::seconds longestLook{1};

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
    void addThread(const std::shared_ptr<Workers>& self);
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

/// Under lock. Where there is no further thread to be had, those that there are do it all.
void ScanTasks::Workers::addThread(const std::shared_ptr<Workers>& self) {
    try {
        gf_startDetached(threadName, [self] { self->run(); });
        ++threads;
    } catch (const std::system_error&) {
        if (threads == 0) {
            throw;
        }
    }
}

void ScanTasks::Workers::give(std::packaged_task<FolderFinds()> task, std::size_t atMost,
                              const std::shared_ptr<Workers>& self) {
    const std::lock_guard held(lock);
    if (threads < atMost && idle <= tasks.size()) {
        addThread(self);
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

bool ScanTasks::waitUntil(const std::function<bool(std::chrono::milliseconds)>& isReadyWithin) const {
    std::chrono::nanoseconds waited{0};
    platform::SteadyTime lookedAt = platform::steadyNow();
    while (!isReadyWithin(waitSlice)) {
        if (!whileWaiting_()) {
            return false;
        }
        const platform::SteadyTime now = platform::steadyNow();
        waited += std::min<std::chrono::nanoseconds>(now - lookedAt, longestLook);
        lookedAt = now;
        if (waited >= longestWait) {
            throw std::runtime_error("Future wait timed out after 10 seconds");
        }
    }
    return true;
}

std::optional<FolderFinds> ScanTasks::takeOldest() {
    std::future<FolderFinds>& oldest = waiting_.front();
    const bool isThere = waitUntil(
        [&oldest](std::chrono::milliseconds slice) { return oldest.wait_for(slice) == std::future_status::ready; });
    if (!isThere) {
        return std::nullopt;
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
