// liveries/scan_tasks.h
// The files of a scan read at the same time, a fixed number at most, and what they give collected in the order of their start.
// One thread starts and collects; the tasks run on threads of their own, which nobody joins.
#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <future>
#include <list>
#include <memory>

#include "liveries/livery.h"

class ScanTasks {
public:
    using Task = std::function<std::list<Livery>()>;
    /// Called at least every 50 ms while waiting; false ends the waiting.
    using WhileWaiting = std::function<bool()>;

    ScanTasks(int atMost, WhileWaiting whileWaiting);
    /// Leaves tasks that still run to themselves.
    ~ScanTasks();
    ScanTasks(const ScanTasks&) = delete;
    ScanTasks& operator=(const ScanTasks&) = delete;

    /// Waits until fewer tasks run than may, starts this one, and takes what the oldest ones gave while more results are
    /// waited for than tasks may run. False when the waiting was ended. Throws std::runtime_error "Future wait timed out
    /// after 10 seconds" when a task takes too long, and std::system_error when there is no thread to be had.
    bool start(Task task, std::list<Livery>& into);
    /// What all tasks gave, the oldest first; fails as above.
    bool collectAll(std::list<Livery>& into);
    /// Forgets the tasks that still run, and what they will give.
    void abandon();

private:
    struct Workers;
    bool waitForFreePlace();
    bool collectOldest(std::list<Livery>& into);

    int atMost_;
    WhileWaiting whileWaiting_;
    std::shared_ptr<Workers> workers_; // shared with its threads, which may outlive this object
    std::deque<std::future<std::list<Livery>>> waiting_;
};
