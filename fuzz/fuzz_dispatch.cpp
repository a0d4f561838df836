// fuzz/fuzz_dispatch.cpp
// Any bytes as records of a simulator: nothing is read beyond a record's end, only the known user errors come out, and
// what the session keeps stays readable and finite.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "core/exit_reason.h"
#include "core/run_flags.h"
#include "core/user_error.h"
#include "platform/text_encoding.h"
#include "sim/dispatch.h"
#include "sim/engine_inbox.h"
#include "sim/session.h"
#include "sim/sim_queues.h"
#include "sim/user_state.h"

namespace {

constexpr std::size_t lengthBytes = 2;

void check(bool holds) {
    if (!holds) {
        std::abort();
    }
}

bool isKnown(int userError) {
    return userError == 71 || userError == 78 || userError == 95;
}

void dispatchOne(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::uint8_t> exact(data, data + size); // so that a read beyond it is seen
    try {
        dispatchRecord(reinterpret_cast<const SIMCONNECT_RECV*>(exact.data()), static_cast<DWORD>(size));
    } catch (const kvd::UserErrorException& error) {
        check(isKnown(error.code()));
    }
}

void dispatchAll(const std::uint8_t* data, std::size_t size) {
    while (size >= lengthBytes) {
        std::uint16_t length = 0;
        std::memcpy(&length, data, lengthBytes);
        data += lengthBytes;
        size -= lengthBytes;
        const std::size_t record = std::min<std::size_t>(length, size);
        dispatchOne(data, record);
        data += record;
        size -= record;
    }
}

void checkWhatIsKept() {
    const UserState user = userStateNow();
    for (const double value :
         {user.lat, user.lon, user.pitch, user.bank, user.heading, user.alt, user.altAboveGround, user.groundSpeed}) {
        check(std::isfinite(value));
    }
    check(user.altAboveGround >= 0);
    check(platform::isValidUtf8(userTitle));
    for (const EngineMessage& message : engineInbox) {
        check(std::isfinite(message.a) && std::isfinite(message.b));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    resetSession();
    gf_resetExitReason();
    gRealTrafficHistoric = true;
    sentList.push_back({7, 20001, "KLM1"});
    sentList.push_back({8, 42, "EIN123"});
    dispatchAll(data, size);
    checkWhatIsKept();
    return 0;
}
