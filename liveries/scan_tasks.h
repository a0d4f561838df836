// liveries/scan_tasks.h
// The folders of a scan searched at the same time, by a fixed number of threads at most, and what they give taken in
// the order of their start. One thread starts and takes; the tasks run on threads of their own, which nobody joins.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <future>
#include <list>
#include <memory>
#include <optional>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "core/detached_threads.h"
#include "liveries/folder_walk.h"
#include "liveries/livery.h"

/// What a task finds.
struct FolderFinds {
    std::list<Livery> liveries;
    std::vector<FolderToScan> folders; ///< still to be searched
};

class ScanTasks {
public:
    using Task = std::function<FolderFinds()>;
    /// Called at each start and at least every 50 ms while waiting; false ends the start or the waiting.
    using WhileWaiting = std::function<bool()>;

    ScanTasks(int atMost, WhileWaiting whileWaiting);
    /// Leaves tasks that still run to themselves.
    ~ScanTasks();
    ScanTasks(const ScanTasks&) = delete;
    ScanTasks& operator=(const ScanTasks&) = delete;

    std::size_t threads() const { return atMost_; }
    /// Whether enough tasks are handed out to keep the threads busy until the oldest has been taken.
    bool isFull() const;
    /// Whether all that was started has been taken.
    bool isIdle() const { return waiting_.empty(); }

    /// Hands the task to the next thread that is free. False when it was told to end. Throws std::system_error when
    /// there is no thread to be had.
    bool start(Task task);
    /// What the oldest task gave; there must be one. Nothing when the waiting was ended. Throws std::runtime_error
    /// "Future wait timed out after 10 seconds" when it takes too long, and what the task throws.
    std::optional<FolderFinds> takeOldest();
    /// The liveries of what is finished; forgets the tasks that still run or wait for a thread, and what they would
    /// give.
    std::list<Livery> abandon();

    /// What a single question gives, asked on a thread of its own, for a drive may take its time to answer; here, where
    /// there is no thread to be had. Nothing when the waiting was ended. Throws as takeOldest() does.
    template <typename Question>
    std::optional<std::invoke_result_t<Question>> answerOf(Question question) {
        using Answer = std::invoke_result_t<Question>;
        const auto task = std::make_shared<std::packaged_task<Answer()>>(std::move(question));
        std::future<Answer> answer = task->get_future();
        try {
            gf_startDetached(threadName, [task] { (*task)(); });
        } catch (const std::system_error&) {
            (*task)();
        }
        const bool isThere = waitUntil(
            [&answer](std::chrono::milliseconds slice) { return answer.wait_for(slice) == std::future_status::ready; });
        return isThere ? std::optional(answer.get()) : std::nullopt;
    }

private:
    struct Workers;

    static constexpr const char* threadName = "LiveryScan";

    /// Whether it came to be ready before the waiting was ended.
    bool waitUntil(const std::function<bool(std::chrono::milliseconds)>& isReadyWithin) const;

    std::size_t atMost_;
    WhileWaiting whileWaiting_;
    std::shared_ptr<Workers> workers_; // shared with its threads, which may outlive this object
    std::deque<std::future<FolderFinds>> waiting_;
};
