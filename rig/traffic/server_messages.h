// rig/traffic/server_messages.h
// What the program says over its link, taken apart and checked to the letter. Belongs to one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/geography.h"

namespace rig {

struct ServerMessage {
    enum class Kind { versionRequest, userState, time, goodbye, malformed };

    Kind kind = Kind::malformed;
    LatLon position;               ///< of a user state, degrees
    std::int64_t milliseconds = 0; ///< of a time
    std::string text;              ///< as it came, without its end
    std::string fault;             ///< of a malformed one
};

class ServerMessages {
public:
    struct Counts {
        std::size_t versionRequests = 0;
        std::size_t userStates = 0;
        std::size_t times = 0;
        std::size_t goodbyes = 0;
        std::size_t malformed = 0;
    };

    /// The messages that these bytes complete.
    std::vector<ServerMessage> take(std::string_view bytes);
    /// The connection has ended: what has come of a message counts no more.
    void forgetRest() { rest_.clear(); }

    const Counts& counts() const { return counts_; }

private:
    ServerMessage counted(ServerMessage message);

    std::string rest_;
    Counts counts_;
};

/// One message without its end.
ServerMessage readServerMessage(std::string_view text);

} // namespace rig
