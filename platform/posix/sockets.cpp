// platform/posix/sockets.cpp
#include "platform/sockets.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

#include "platform/posix/socket_codes.h"

namespace platform {

namespace {

/// The first of the addresses 127.0.0.x.
constexpr std::uint32_t thisMachinesAddresses = 0x7F000000;
constexpr int inProgress = 10036;

constexpr std::pair<int, int> windowsCodes[] = {
    {EINTR, 10004},
    {EBADF, 10009},
    {EACCES, 10013},
    {EFAULT, 10014},
    {EINVAL, 10022},
    {EMFILE, 10024},
    {EWOULDBLOCK, 10035},
    {EINPROGRESS, 10036},
    {EALREADY, 10037},
    {ENOTSOCK, 10038},
    {EDESTADDRREQ, 10039},
    {EMSGSIZE, 10040},
    {EPROTOTYPE, 10041},
    {ENOPROTOOPT, 10042},
    {EPROTONOSUPPORT, 10043},
    {ESOCKTNOSUPPORT, 10044},
    {EOPNOTSUPP, 10045},
    {EPFNOSUPPORT, 10046},
    {EAFNOSUPPORT, 10047},
    {EADDRINUSE, 10048},
    {EADDRNOTAVAIL, 10049},
    {ENETDOWN, 10050},
    {ENETUNREACH, 10051},
    {ENETRESET, 10052},
    {ECONNABORTED, 10053},
    {ECONNRESET, 10054},
    {ENOBUFS, 10055},
    {EISCONN, 10056},
    {ENOTCONN, 10057},
    {ESHUTDOWN, 10058},
    {ETOOMANYREFS, 10059},
    {ETIMEDOUT, 10060},
    {ECONNREFUSED, 10061},
    {ELOOP, 10062},
    {ENAMETOOLONG, 10063},
    {EHOSTDOWN, 10064},
    {EHOSTUNREACH, 10065},
    {ENOTEMPTY, 10066},
    {EUSERS, 10068},
    {EDQUOT, 10069},
    {ESTALE, 10070},
    {EREMOTE, 10071},
    // Without a number of their own there:
    {EPERM, 10013},
    {ENFILE, 10024},
    {EPIPE, 10053},
    {ENOMEM, 10055},
};

int answer(int result) {
    return result == 0 ? 0 : windowsCode(errno);
}

sockaddr_in address(std::uint32_t host, std::uint16_t port) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_addr.s_addr = htonl(host);
    result.sin_port = htons(port);
    return result;
}

/// What getaddrinfo answers, as the other system would.
int resolutionError(int code) {
    switch (code) {
    case 0: return 0;
    case EAI_AGAIN: return 11002;
    case EAI_FAIL: return 11003;
    case EAI_SERVICE: return 10109;
    case EAI_SYSTEM: return windowsCode(errno);
    default: return 11001;
    }
}

struct ResolvedAddress {
    sockaddr_in address{};
    int error = 0;
};

/// The first address of the host, or of this machine as a listener sees it when there is no host.
ResolvedAddress resolve(const char* host, const std::string& service, int type) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = type;
    hints.ai_flags = host == nullptr ? AI_PASSIVE : 0;
    addrinfo* found = nullptr;
    ResolvedAddress result;
    result.error = resolutionError(getaddrinfo(host, service.c_str(), &hints, &found));
    if (result.error == 0) {
        const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(found, freeaddrinfo);
        std::memcpy(&result.address, found->ai_addr, sizeof result.address);
    }
    return result;
}

int setOption(std::intptr_t handle, int level, int option, int value = 1) {
    return answer(setsockopt(static_cast<int>(handle), level, option, &value, sizeof value));
}

int setTimeout(std::intptr_t handle, int option, std::chrono::milliseconds timeout) {
    timeval value{};
    value.tv_sec = static_cast<time_t>(timeout.count() / 1000);
    value.tv_usec = static_cast<suseconds_t>(timeout.count() % 1000 * 1000);
    return answer(setsockopt(static_cast<int>(handle), SOL_SOCKET, option, &value, sizeof value));
}

std::uint16_t portOf(std::intptr_t handle) {
    sockaddr_in bound{};
    socklen_t size = sizeof bound;
    if (getsockname(static_cast<int>(handle), reinterpret_cast<sockaddr*>(&bound), &size) != 0) {
        return 0;
    }
    return ntohs(bound.sin_port);
}

/// Until the connection that was begun stands.
int finishConnecting(int handle, std::chrono::milliseconds limit) {
    pollfd waiting{handle, POLLOUT, 0};
    const int ready = poll(&waiting, 1, static_cast<int>(limit.count()));
    if (ready <= 0) {
        return ready == 0 ? socket_error::timedOut : windowsCode(errno);
    }
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(handle, SOL_SOCKET, SO_ERROR, &error, &size);
    return error == 0 ? 0 : windowsCode(error);
}

} // namespace

int windowsCode(int code) {
    for (const auto& [native, windows] : windowsCodes) {
        if (native == code) {
            return windows;
        }
    }
    return code;
}

int startSocketLibrary() {
    return 0;
}

void cleanUpSocketLibrary() {}

DatagramSocket::~DatagramSocket() {
    shutDownAndClose();
}

int DatagramSocket::create() {
    shutDownAndClose();
    handle_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP);
    return valid() ? 0 : windowsCode(errno);
}

int DatagramSocket::bind(BindTo where, std::uint16_t port) {
    const sockaddr_in to = address(where == BindTo::thisMachine ? INADDR_LOOPBACK : INADDR_ANY, port);
    return answer(::bind(static_cast<int>(handle_), reinterpret_cast<const sockaddr*>(&to), sizeof to));
}

int DatagramSocket::setReceiveTimeout(std::chrono::milliseconds timeout) {
    return setTimeout(handle_, SO_RCVTIMEO, timeout);
}

int DatagramSocket::setReceiveRoom(int bytes) {
    return setOption(handle_, SOL_SOCKET, SO_RCVBUF, bytes);
}

SocketResult DatagramSocket::receive(char* buffer, std::size_t size) {
    const ssize_t length = recv(static_cast<int>(handle_), buffer, size, MSG_TRUNC);
    if (length < 0) {
        // The socket blocks, so "would block" is how its time-out shows here.
        return {0, errno == EWOULDBLOCK ? socket_error::timedOut : windowsCode(errno)};
    }
    if (static_cast<std::size_t>(length) > size) {
        return {0, socket_error::messageTooLong};
    }
    return {static_cast<std::size_t>(length), 0};
}

SocketResult DatagramSocket::sendToThisMachine(std::uint16_t port, std::string_view bytes, std::uint8_t lastByte) {
    const sockaddr_in to = address(thisMachinesAddresses + lastByte, port);
    const ssize_t sent = sendto(static_cast<int>(handle_), bytes.data(), bytes.size(), MSG_NOSIGNAL,
                                reinterpret_cast<const sockaddr*>(&to), sizeof to);
    if (sent < 0) {
        return {0, windowsCode(errno)};
    }
    return {static_cast<std::size_t>(sent), 0};
}

int DatagramSocket::setDestination(std::string_view host, std::uint16_t port) {
    const ResolvedAddress to = resolve(std::string(host).c_str(), std::to_string(port), SOCK_DGRAM);
    if (to.error != 0) {
        return to.error;
    }
    if (const int error = setOption(handle_, SOL_SOCKET, SO_BROADCAST)) {
        return error;
    }
    return answer(
        ::connect(static_cast<int>(handle_), reinterpret_cast<const sockaddr*>(&to.address), sizeof to.address));
}

SocketResult DatagramSocket::send(std::string_view bytes) {
    const ssize_t sent = ::send(static_cast<int>(handle_), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0) {
        return {0, windowsCode(errno)};
    }
    return {static_cast<std::size_t>(sent), 0};
}

std::uint16_t DatagramSocket::boundPort() const {
    return portOf(handle_);
}

void DatagramSocket::shutDownAndClose() {
    if (valid()) {
        shutdown(static_cast<int>(handle_), SHUT_RDWR);
        close(static_cast<int>(handle_));
        handle_ = invalid;
    }
}

PortNumber resolvePort(std::string_view text) {
    const ResolvedAddress resolved = resolve(nullptr, std::string(text), SOCK_STREAM);
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
    handle_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, IPPROTO_TCP);
    return valid() ? 0 : windowsCode(errno);
}

int StreamSocket::setBlocking(bool blocking) {
    int nonBlocking = blocking ? 0 : 1;
    return answer(ioctl(static_cast<int>(handle_), FIONBIO, &nonBlocking));
}

int StreamSocket::setAddressReuse() {
    return setOption(handle_, SOL_SOCKET, SO_REUSEADDR);
}

int StreamSocket::bind(BindTo where, std::uint16_t port) {
    const sockaddr_in to = address(where == BindTo::thisMachine ? INADDR_LOOPBACK : INADDR_ANY, port);
    return answer(::bind(static_cast<int>(handle_), reinterpret_cast<const sockaddr*>(&to), sizeof to));
}

int StreamSocket::listen() {
    return answer(::listen(static_cast<int>(handle_), SOMAXCONN));
}

int StreamSocket::accept(StreamSocket& peer) {
    // The socket blocks, so it is asked first.
    pollfd waiting{static_cast<int>(handle_), POLLIN, 0};
    if (valid() && poll(&waiting, 1, 0) == 0) {
        return socket_error::wouldBlock;
    }
    peer.close();
    peer.handle_ = accept4(static_cast<int>(handle_), nullptr, nullptr, SOCK_CLOEXEC);
    return peer.valid() ? 0 : windowsCode(errno);
}

int StreamSocket::connect(std::string_view host, std::uint16_t port, std::chrono::milliseconds limit) {
    const ResolvedAddress to = resolve(std::string(host).c_str(), std::to_string(port), SOCK_STREAM);
    if (to.error != 0) {
        return to.error;
    }
    if (const int error = setBlocking(false)) {
        return error;
    }
    int error =
        answer(::connect(static_cast<int>(handle_), reinterpret_cast<const sockaddr*>(&to.address), sizeof to.address));
    if (error == inProgress) {
        error = finishConnecting(static_cast<int>(handle_), limit);
    }
    return error == 0 ? setBlocking(true) : error;
}

int StreamSocket::setNoDelay() {
    return setOption(handle_, IPPROTO_TCP, TCP_NODELAY);
}

int StreamSocket::setSendTimeout(std::chrono::milliseconds timeout) {
    return setTimeout(handle_, SO_SNDTIMEO, timeout);
}

SocketResult StreamSocket::receive(char* buffer, std::size_t size) {
    const ssize_t length = recv(static_cast<int>(handle_), buffer, size, MSG_DONTWAIT);
    if (length < 0) {
        return {0, windowsCode(errno)};
    }
    return {static_cast<std::size_t>(length), 0};
}

SocketResult StreamSocket::send(std::string_view bytes) {
    const ssize_t sent = ::send(static_cast<int>(handle_), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0) {
        return {0, errno == EWOULDBLOCK ? socket_error::timedOut : windowsCode(errno)};
    }
    const auto bytesSent = static_cast<std::size_t>(sent);
    return {bytesSent, bytesSent == bytes.size() ? 0 : socket_error::timedOut};
}

std::size_t StreamSocket::waitingBytes() const {
    int bytes = 0;
    return ioctl(static_cast<int>(handle_), FIONREAD, &bytes) == 0 ? static_cast<std::size_t>(bytes) : 0;
}

bool StreamSocket::peerHasGone() {
    char byte = 0;
    const ssize_t length = recv(static_cast<int>(handle_), &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT);
    return length == 0 || (length < 0 && errno != EWOULDBLOCK && errno != EINTR);
}

std::uint16_t StreamSocket::boundPort() const {
    return portOf(handle_);
}

void StreamSocket::close() {
    if (valid()) {
        ::close(static_cast<int>(handle_));
        handle_ = invalid;
    }
}

} // namespace platform
