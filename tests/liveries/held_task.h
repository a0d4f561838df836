// A task of a scan that takes as long as the test wants.
#pragma once

#include <chrono>
#include <future>

#include "core/detached_threads.h"
#include "liveries/scan_tasks.h"

/// A task that waits until it is let go, which its end does at the latest.
class HeldTask {
public:
    HeldTask() = default;
    ~HeldTask() {
        letGo();
        gf_waitForDetachedThreads(std::chrono::seconds(10));
    }
    HeldTask(const HeldTask&) = delete;
    HeldTask& operator=(const HeldTask&) = delete;

    ScanTasks::Task task() {
        return [this, hold = hold_.get_future().share()] {
            begun_.set_value();
            hold.wait();
            return FolderFinds{};
        };
    }
    void waitUntilBegun() { begun_.get_future().wait(); }
    void letGo() {
        if (!isLetGo_) {
            isLetGo_ = true;
            hold_.set_value();
        }
    }

private:
    std::promise<void> begun_;
    std::promise<void> hold_;
    bool isLetGo_ = false;
};
