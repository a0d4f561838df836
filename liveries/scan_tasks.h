// liveries/scan_tasks.h
// The files of a scan read at the same time, a fixed number at most, and what they give collected in the order of their
// start. One thread starts and collects; the tasks run on threads of their own, which nobody joins.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <future>
#include <list>
#include <memory>

#include "liveries/livery.h"

class ScanTasks {
public:
    using Task = std::function<std::list<Livery>()>;
    /// Called at each start and at least every 50 ms while waiting; false ends the start or the waiting.
    using WhileWaiting = std::function<bool()>;

    ScanTasks(int atMost, WhileWaiting whileWaiting);
    /// Leaves tasks that still run to themselves.
    ~ScanTasks();
    ScanTasks(const ScanTasks&) = delete;
    ScanTasks& operator=(const ScanTasks&) = delete;

    /// Hands the task to the next thread that is free. Where many tasks wait already, it first waits for what the
    /// oldest ones give, and takes it. False when the waiting was ended. Throws std::runtime_error "Future wait timed
    /// out after 10 seconds" when a task takes too long, and std::system_error when there is no thread to be had.
    bool start(Task task, std::list<Livery>& into);
    /// What all tasks gave, the oldest first; fails as above.
    bool collectAll(std::list<Livery>& into);
    /// Takes what is finished and forgets the tasks that still run or wait for a thread, and what they would give.
    void abandon(std::list<Livery>& into);

private:
    struct Workers;
    bool collectOldest(std::list<Livery>& into);

    std::size_t atMost_;
    WhileWaiting whileWaiting_;
    std::shared_ptr<Workers> workers_; // shared with its threads, which may outlive this object
    std::deque<std::future<std::list<Livery>>> waiting_;
};
