// sim/engine_inbox.cpp
#include "sim/engine_inbox.h"

std::mutex inboxLock;
std::vector<EngineMessage> engineInbox;

namespace {

constexpr std::size_t inboxRoom = 256;

} // namespace

void pushEngineMessage(const EngineMessage& message) {
    const std::lock_guard lock(inboxLock);
    engineInbox.push_back(message);
}

void resetEngineInbox() {
    const std::lock_guard lock(inboxLock);
    engineInbox.clear();
    engineInbox.reserve(inboxRoom);
}
