#include "platform/threads.h"

#include <pthread.h>
#include <string>
#include <thread>
#include <utility>

namespace platform {

void nameThisThread(std::string_view name) {
    pthread_setname_np(pthread_self(), std::string(name.substr(0, 15)).c_str());
}

void startDetached(std::function<void()> body) {
    std::thread(std::move(body)).detach();
}

} // namespace platform
