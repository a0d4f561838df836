// tests/support/message_of.h
// The text that a routine fails with.
#pragma once

#include <exception>
#include <string>

/// The text of the exception that the work throws; "nothing thrown" when it throws none.
template <typename Work>
std::string messageOf(Work work) {
    try {
        work();
    } catch (const std::exception& exception) {
        return exception.what();
    }
    return "nothing thrown";
}
