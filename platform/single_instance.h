// platform/single_instance.h
// The guard that lets one process of the program run at a time.
#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

/// Holds the name, which is known throughout the user's session, while it lives. `name` is in the form of a Windows
/// kernel object ("Local\\...").
class SingleInstance {
public:
    explicit SingleInstance(std::string_view name);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Whether another process (or another guard of this one) held the name first.
    bool alreadyRuns() const { return alreadyRuns_; }

private:
    std::intptr_t handle_ = 0;
    bool alreadyRuns_ = false;
};

} // namespace platform
