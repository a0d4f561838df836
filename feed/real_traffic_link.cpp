// feed/real_traffic_link.cpp
#include "feed/real_traffic_link.h"

#include <array>
#include <chrono>
#include <exception>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>
#include <vector>

#include "core/exit_reason.h"
#include "core/log.h"
#include "core/run_flags.h"
#include "feed/log_text.h"
#include "feed/socket_error_text.h"
#include "platform/clock.h"
#include "window/window_state.h"

using namespace std::chrono_literals;

platform::StreamSocket listenSocket;
platform::StreamSocket clientSocket;
std::atomic<bool> clientConnected{false};

namespace {

using platform::socket_error::connectionReset;
using platform::socket_error::wouldBlock;

constexpr auto pollInterval = 100ms;
constexpr auto longestReplyWait = 10s;
constexpr auto longestSend = 1s;
constexpr std::size_t receiveBufferBytes = 16384;

constexpr const char* versionRequest = "Qs999=version\r\n";
constexpr const char* goodbye = "exit\r\n";

/// The level of a client that shows traffic of any moment; the lower ones are the standard editions.
constexpr int professionalLevel = 2;
constexpr int defaultLevel = 1;

bool libraryStarted = false;

void startLibrary() {
    if (const int error = platform::startSocketLibrary()) {
        throw std::runtime_error(fmt::format("WSAStartup failed with error {}", error));
    }
    libraryStarted = true;
}

void throwIfFailed(int error, std::string_view what) {
    if (error != 0) {
        throw std::runtime_error(fmt::format("{}{}", what, socketErrorText(error)));
    }
}

std::uint16_t portFrom(std::string_view text) {
    const platform::PortNumber resolved = platform::resolvePort(text);
    if (resolved.error != 0) {
        throw std::runtime_error(fmt::format("getaddrinfo failed with error {}", resolved.error));
    }
    return resolved.port;
}

void openListenSocket(std::string_view port) {
    startLibrary();
    const std::uint16_t number = portFrom(port);
    throwIfFailed(listenSocket.create(), "socket failed with error ");
    throwIfFailed(listenSocket.setBlocking(true), "ioctlsocket failed with error ");
    if (listenSocket.setAddressReuse() != 0) {
        throw std::runtime_error("setsockopt(SO_REUSEADDR) failed");
    }
    throwIfFailed(listenSocket.bind(platform::BindTo::allAddresses, number),
                  fmt::format("Bind failed at port {} with error ", port));
    throwIfFailed(listenSocket.listen(), "listen failed with error ");
}

void closeClient() {
    clientConnected = false;
    clientSocket.close();
}

int sendToClient(std::string_view text) {
    // A connection that the peer has closed takes one more packet without complaint.
    if (clientSocket.peerHasGone()) {
        return connectionReset;
    }
    return clientSocket.send(text).error;
}

/// Looks at the client every 100 ms until something has come.
platform::SocketResult receiveWithin(std::chrono::milliseconds limit, std::vector<char>& buffer) {
    const platform::SteadyTime end = platform::steadyNow() + limit;
    for (;;) {
        const platform::SocketResult result = clientSocket.receive(buffer.data(), buffer.size());
        if (result.error != wouldBlock) {
            return result;
        }
        if (gf_isStopping() || platform::steadyNow() >= end) {
            return {};
        }
        platform::sleepFor(pollInterval);
    }
}

bool isProfessional(const nlohmann::json& reply) {
    const nlohmann::json level = reply.value("level", nlohmann::json(defaultLevel));
    if (!level.is_number()) {
        throw std::runtime_error("level is no number");
    }
    return level == professionalLevel;
}

void takeVersion(const nlohmann::json& reply) {
    const bool professional = isProfessional(reply);
    const std::string version = reply.value("version", "");
    gRealTrafficHistoric = professional;
    showRealTrafficEdition(asLogText(fmt::format("RT {} edition: {}", professional ? "prof" : "stnd", version)));
}

void forgetVersion() {
    gRealTrafficHistoric = false;
    showRealTrafficEdition("");
}

} // namespace

void startListening(std::string_view port) {
    closeRealTrafficLink();
    try {
        openListenSocket(port);
    } catch (...) {
        closeRealTrafficLink();
        throw;
    }
}

bool waitForClient(const std::function<void()>& eachPoll) {
    if (clientConnected) {
        return false;
    }
    while (!gf_isStopping()) {
        platform::StreamSocket accepted;
        const int error = listenSocket.accept(accepted);
        if (error != wouldBlock) {
            return error == 0 && takeClient(std::move(accepted));
        }
        if (eachPoll) {
            eachPoll();
        }
        platform::sleepFor(pollInterval);
    }
    return false;
}

bool takeClient(platform::StreamSocket&& accepted) {
    clientSocket = std::move(accepted);
    int error = clientSocket.setNoDelay();
    if (error == 0) {
        error = clientSocket.setSendTimeout(longestSend);
    }
    if (error != 0) {
        const std::string reason =
            fmt::format("{} setsockopt failed with error {}", "TCP_NODELAY", socketErrorText(error));
        log(fmt::format("waitForClient interrupted: {}", reason));
        clientSocket.close();
        return false;
    }
    clientConnected = true;
    return true;
}

void dropWhatTheClientSaid() {
    // So few, that a client that talks without a pause holds up nobody.
    constexpr int mostReads = 16;
    std::array<char, 4096> dropped{};
    for (int reads = 0; reads < mostReads; ++reads) {
        if (clientSocket.receive(dropped.data(), dropped.size()).bytes == 0) {
            return;
        }
    }
}

bool sendDataPacket(std::string_view text) {
    const int error = sendToClient(text);
    if (error == 0) {
        return true;
    }
    logUnlessStopping(fmt::format("sendDataPacket to RealTraffic failed: {}", socketErrorText(error)));
    closeClient();
    logUnlessStopping("RealTraffic client socket closed");
    return false;
}

std::string receive() {
    std::vector<char> buffer(receiveBufferBytes);
    const platform::SocketResult result = receiveWithin(longestReplyWait, buffer);
    if (result.error != 0) {
        logUnlessStopping(fmt::format("receive: {}", socketErrorText(result.error)));
        return {};
    }
    if (result.bytes == receiveBufferBytes) {
        logUnlessStopping(fmt::format("receive: buffer overrun: {}", result.bytes));
        return {};
    }
    return {buffer.data(), result.bytes};
}

void exchangeVersions() {
    lf_processRTVersion(sendDataPacket(versionRequest) ? receive() : "");
}

void lf_processRTVersion(std::string_view reply) {
    if (reply.empty()) {
        gRealTrafficHistoric = false;
        showMessage("No RealTraffic version received?", LogCopy::yes);
        return;
    }
    try {
        const nlohmann::json version = nlohmann::json::parse(reply);
        if (version.is_object()) {
            takeVersion(version);
        } else {
            forgetVersion();
        }
    } catch (const std::exception& error) {
        log(asLogText(fmt::format("{}: JSON parse failed: {}", "lf_processRTVersion", error.what())));
        forgetVersion();
    }
}

void sayGoodbye() {
    if (clientConnected) {
        sendDataPacket(goodbye);
    }
}

void closeRealTrafficLink() {
    closeClient();
    listenSocket.close();
    if (std::exchange(libraryStarted, false)) {
        platform::cleanUpSocketLibrary();
    }
}
