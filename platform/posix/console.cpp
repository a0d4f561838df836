// platform/posix/console.cpp
#include "platform/console.h"

#include <csignal>
#include <initializer_list>
#include <unistd.h>

namespace platform {

namespace {

volatile std::sig_atomic_t stop = 0;

void rememberStop(int) {
    stop = 1;
}

} // namespace

bool outputIsTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

void watchStopRequests() {
    struct sigaction action {};
    action.sa_handler = rememberStop;
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaction(signal, &action, nullptr);
    }
}

bool stopRequested() {
    return stop != 0;
}

void forgetStopRequests() {
    stop = 0;
}

} // namespace platform
