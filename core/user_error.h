// core/user_error.h
// The failures that the user can repair.
#pragma once

#include <stdexcept>
#include <string>

namespace kvd {

/// Carries a number and the text that the user reads; it ends as the red error line, and the run with it.
class UserErrorException : public std::runtime_error {
public:
    UserErrorException(int code, const std::string& message) : std::runtime_error(message), code_(code) {}

    int code() const { return code_; }

private:
    int code_;
};

} // namespace kvd
