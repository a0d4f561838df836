// rig/server/server_run.cpp
#include "rig/server/server_run.h"

#include <chrono>
#include <cstddef>
#include <ostream>
#include <stdexcept>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "platform/clock.h"
#include "platform/console.h"
#include "platform/files.h"
#include "rig/server/download_server.h"

namespace rig {
namespace {

using Seconds = std::chrono::duration<double>;
constexpr std::chrono::milliseconds look{100};

void setFault(DownloadServer& server, const std::string& text) {
    const std::size_t colon = text.find(':');
    const auto fault = faultOfWord(text.substr(0, colon));
    if (!fault) {
        throw std::runtime_error(fmt::format(
            "'{}' is no fault: {}, and then perhaps ':' and the end of the paths that it is for", text, faultWords()));
    }
    server.setFault(*fault, colon == std::string::npos ? std::string() : text.substr(colon + 1));
}

/// Writes the requests that are new; how many there are.
std::size_t tellRequests(const DownloadServer& server, std::size_t told, std::ostream& out) {
    const std::vector<std::string> requests = server.requests();
    for (; told < requests.size(); ++told) {
        out << requests[told] << '\n' << std::flush;
    }
    return told;
}

} // namespace

void runServer(const ServerOptions& options, std::ostream& out) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(options.root, ignored)) {
        throw std::runtime_error("no such folder: " + platform::utf8FromPath(options.root));
    }
    DownloadServer server(options.root, options.port);
    setFault(server, options.fault);
    out << "serving " << platform::utf8FromPath(options.root) << " at " << server.root() << '\n' << std::flush;
    const auto begin = platform::steadyNow();
    std::size_t told = 0;
    while (!platform::stopRequested() &&
           !(options.seconds && platform::steadyNow() - begin >= Seconds(*options.seconds))) {
        std::this_thread::sleep_for(look);
        told = tellRequests(server, told, out);
    }
    tellRequests(server, told, out);
}

} // namespace rig
