// platform/windows/sockets.cpp
#include "platform/sockets.h"

// clang-format off
#include <winsock2.h>
#include <ws2tcpip.h>
// clang-format on

#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "platform/windows/wide_text.h"

namespace platform {

namespace {

/// The first of the addresses 127.0.0.x.
constexpr std::uint32_t thisMachinesAddresses = 0x7F000000;

SOCKET native(std::intptr_t handle) {
    return static_cast<SOCKET>(handle);
}

int answer(int result) {
    return result == 0 ? 0 : WSAGetLastError();
}

SocketResult transferred(int result) {
    if (result == SOCKET_ERROR) {
        return {0, WSAGetLastError()};
    }
    return {static_cast<std::size_t>(result), 0};
}

sockaddr_in address(std::uint32_t host, std::uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = htonl(host);
    result.sin_port = htons(port);
    return result;
}

struct ResolvedAddress {
    sockaddr_in address{};
    int error = 0;
};

/// The first address of the host, or of this machine as a listener sees it when there is no host.
ResolvedAddress resolve(const wchar_t* host, const std::wstring& service, int type) {
    ADDRINFOW hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = type;
    hints.ai_protocol = type == SOCK_STREAM ? IPPROTO_TCP : IPPROTO_UDP;
    hints.ai_flags = host == nullptr ? AI_PASSIVE : 0;
    ADDRINFOW* found = nullptr;
    ResolvedAddress result;
    result.error = GetAddrInfoW(host, service.c_str(), &hints, &found);
    if (result.error == 0) {
        const std::unique_ptr<ADDRINFOW, void (*)(ADDRINFOW*)> owner(found,
                                                                     [](ADDRINFOW* list) { FreeAddrInfoW(list); });
        std::memcpy(&result.address, found->ai_addr, sizeof result.address);
    }
    return result;
}

int setOption(std::intptr_t handle, int level, int option, DWORD value) {
    return answer(setsockopt(native(handle), level, option, reinterpret_cast<const char*>(&value), sizeof value));
}

std::uint16_t portOf(std::intptr_t handle) {
    sockaddr_in bound{};
    int size = sizeof bound;
    if (getsockname(native(handle), reinterpret_cast<sockaddr*>(&bound), &size) != 0) {
        return 0;
    }
    return ntohs(bound.sin_port);
}

/// Whether the socket has something to receive, or a peer to accept; SOCKET_ERROR when it cannot be asked.
int isReadable(std::intptr_t handle) {
    fd_set waiting{1, {native(handle)}};
    timeval noTime{};
    return select(0, &waiting, nullptr, nullptr, &noTime);
}

/// Until the connection that was begun stands.
int finishConnecting(std::intptr_t handle, std::chrono::milliseconds limit) {
    fd_set connected{1, {native(handle)}};
    fd_set failed = connected;
    timeval time{static_cast<long>(limit.count() / 1000), static_cast<long>(limit.count() % 1000 * 1000)};
    const int ready = select(0, nullptr, &connected, &failed, &time);
    if (ready <= 0) {
        return ready == 0 ? socket_error::timedOut : WSAGetLastError();
    }
    int error = 0;
    int size = sizeof error;
    getsockopt(native(handle), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size);
    return error;
}

} // namespace

int startSocketLibrary() {
    WSADATA data{};
    return WSAStartup(MAKEWORD(2, 2), &data);
}

void cleanUpSocketLibrary() {
    WSACleanup();
}

DatagramSocket::~DatagramSocket() {
    shutDownAndClose();
}

int DatagramSocket::create() {
    shutDownAndClose();
    handle_ = static_cast<std::intptr_t>(socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP));
    return valid() ? 0 : WSAGetLastError();
}

int DatagramSocket::bind(BindTo where, std::uint16_t port) {
    const sockaddr_in to = address(where == BindTo::thisMachine ? INADDR_LOOPBACK : INADDR_ANY, port);
    return answer(::bind(native(handle_), reinterpret_cast<const sockaddr*>(&to), sizeof to));
}

int DatagramSocket::setReceiveTimeout(std::chrono::milliseconds timeout) {
    return setOption(handle_, SOL_SOCKET, SO_RCVTIMEO, static_cast<DWORD>(timeout.count()));
}

int DatagramSocket::setReceiveRoom(int bytes) {
    return setOption(handle_, SOL_SOCKET, SO_RCVBUF, static_cast<DWORD>(bytes));
}

SocketResult DatagramSocket::receive(char* buffer, std::size_t size) {
    return transferred(recv(native(handle_), buffer, static_cast<int>(size), 0));
}

SocketResult DatagramSocket::sendToThisMachine(std::uint16_t port, std::string_view bytes, std::uint8_t lastByte) {
    const sockaddr_in to = address(thisMachinesAddresses + lastByte, port);
    return transferred(sendto(native(handle_), bytes.data(), static_cast<int>(bytes.size()), 0,
                              reinterpret_cast<const sockaddr*>(&to), sizeof to));
}

int DatagramSocket::setDestination(std::string_view host, std::uint16_t port) {
    const ResolvedAddress to = resolve(wideFromUtf8(host).c_str(), std::to_wstring(port), SOCK_DGRAM);
    if (to.error != 0) {
        return to.error;
    }
    if (const int error = setOption(handle_, SOL_SOCKET, SO_BROADCAST, 1)) {
        return error;
    }
    return answer(::connect(native(handle_), reinterpret_cast<const sockaddr*>(&to.address), sizeof to.address));
}

SocketResult DatagramSocket::send(std::string_view bytes) {
    return transferred(::send(native(handle_), bytes.data(), static_cast<int>(bytes.size()), 0));
}

std::uint16_t DatagramSocket::boundPort() const {
    return portOf(handle_);
}

void DatagramSocket::shutDownAndClose() {
    if (valid()) {
        shutdown(native(handle_), SD_BOTH);
        closesocket(native(handle_));
        handle_ = invalid;
    }
}

PortNumber resolvePort(std::string_view text) {
    const ResolvedAddress resolved = resolve(nullptr, wideFromUtf8(text), SOCK_STREAM);
    return {ntohs(resolved.address.sin_port), resolved.error};
}

StreamSocket::~StreamSocket() {
    close();
}

StreamSocket::StreamSocket(StreamSocket&& other) noexcept : handle_(std::exchange(other.handle_, invalid)) {}

StreamSocket& StreamSocket::operator=(StreamSocket&& other) noexcept {
    if (this != &other) {
        close();
        handle_ = std::exchange(other.handle_, invalid);
    }
    return *this;
}

int StreamSocket::create() {
    close();
    handle_ = static_cast<std::intptr_t>(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
    return valid() ? 0 : WSAGetLastError();
}

int StreamSocket::setBlocking(bool blocking) {
    u_long nonBlocking = blocking ? 0 : 1;
    return answer(ioctlsocket(native(handle_), static_cast<long>(FIONBIO), &nonBlocking));
}

int StreamSocket::setAddressReuse() {
    // The port of a closed socket is free at once here; the option of that name would let two programs share one.
    return 0;
}

int StreamSocket::bind(BindTo where, std::uint16_t port) {
    const sockaddr_in to = address(where == BindTo::thisMachine ? INADDR_LOOPBACK : INADDR_ANY, port);
    return answer(::bind(native(handle_), reinterpret_cast<const sockaddr*>(&to), sizeof to));
}

int StreamSocket::listen() {
    return answer(::listen(native(handle_), SOMAXCONN));
}

int StreamSocket::accept(StreamSocket& peer) {
    // The socket blocks, so it is asked first.
    if (valid() && isReadable(handle_) == 0) {
        return socket_error::wouldBlock;
    }
    peer.close();
    peer.handle_ = static_cast<std::intptr_t>(::accept(native(handle_), nullptr, nullptr));
    return peer.valid() ? 0 : WSAGetLastError();
}

int StreamSocket::connect(std::string_view host, std::uint16_t port, std::chrono::milliseconds limit) {
    const ResolvedAddress to = resolve(wideFromUtf8(host).c_str(), std::to_wstring(port), SOCK_STREAM);
    if (to.error != 0) {
        return to.error;
    }
    if (const int error = setBlocking(false)) {
        return error;
    }
    int error = answer(::connect(native(handle_), reinterpret_cast<const sockaddr*>(&to.address), sizeof to.address));
    if (error == socket_error::wouldBlock) {
        error = finishConnecting(handle_, limit);
    }
    return error == 0 ? setBlocking(true) : error;
}

int StreamSocket::setNoDelay() {
    return setOption(handle_, IPPROTO_TCP, TCP_NODELAY, 1);
}

int StreamSocket::setSendTimeout(std::chrono::milliseconds timeout) {
    return setOption(handle_, SOL_SOCKET, SO_SNDTIMEO, static_cast<DWORD>(timeout.count()));
}

SocketResult StreamSocket::receive(char* buffer, std::size_t size) {
    // The socket blocks, so it is asked first.
    if (valid() && isReadable(handle_) == 0) {
        return {0, socket_error::wouldBlock};
    }
    return transferred(recv(native(handle_), buffer, static_cast<int>(size), 0));
}

SocketResult StreamSocket::send(std::string_view bytes) {
    SocketResult result = transferred(::send(native(handle_), bytes.data(), static_cast<int>(bytes.size()), 0));
    if (result.error == 0 && result.bytes != bytes.size()) {
        result.error = socket_error::timedOut;
    }
    return result;
}

std::size_t StreamSocket::waitingBytes() const {
    u_long bytes = 0;
    return ioctlsocket(native(handle_), FIONREAD, &bytes) == 0 ? bytes : 0;
}

bool StreamSocket::peerHasGone() {
    if (!valid() || isReadable(handle_) == SOCKET_ERROR) {
        return true;
    }
    char byte = 0;
    return isReadable(handle_) != 0 && recv(native(handle_), &byte, sizeof byte, MSG_PEEK) <= 0;
}

std::uint16_t StreamSocket::boundPort() const {
    return portOf(handle_);
}

void StreamSocket::close() {
    if (valid()) {
        closesocket(native(handle_));
        handle_ = invalid;
    }
}

} // namespace platform
