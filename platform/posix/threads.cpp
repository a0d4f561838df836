// platform/posix/threads.cpp
#include "platform/threads.h"

#include <pthread.h>
#include <string>

namespace platform {

void nameThisThread(std::string_view name) {
    pthread_setname_np(pthread_self(), std::string(name.substr(0, 15)).c_str());
}

} // namespace platform
