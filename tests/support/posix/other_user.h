// tests/support/posix/other_user.h
// The rights of an ordinary user, for tests that the administrator runs: to him no file is out of reach.
#pragma once

#include <filesystem>
#include <unistd.h>

/// The process is another user while it lives, if it may become one.
class OtherUser {
public:
    OtherUser() : became_(geteuid() == 0 && seteuid(nobody) == 0) {}
    ~OtherUser() {
        if (became_ && seteuid(0) != 0) {
            _exit(1); // the tests that follow would run without their rights
        }
    }
    OtherUser(const OtherUser&) = delete;
    OtherUser& operator=(const OtherUser&) = delete;

    bool became() const { return became_; }

    /// Gives him a file. False when the system refuses.
    static bool own(const std::filesystem::path& file) { return chown(file.c_str(), nobody, nobody) == 0; }

private:
    static constexpr uid_t nobody = 65534;
    bool became_;
};
