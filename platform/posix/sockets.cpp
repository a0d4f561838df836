// platform/posix/sockets.cpp
#include "platform/sockets.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

#include "platform/posix/socket_codes.h"

namespace platform {

namespace {

/// The first of the addresses 127.0.0.x.
constexpr std::uint32_t thisMachinesAddresses = 0x7F000000;

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
    timeval value{};
    value.tv_sec = static_cast<time_t>(timeout.count() / 1000);
    value.tv_usec = static_cast<suseconds_t>(timeout.count() % 1000 * 1000);
    return answer(setsockopt(static_cast<int>(handle_), SOL_SOCKET, SO_RCVTIMEO, &value, sizeof value));
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

std::uint16_t DatagramSocket::boundPort() const {
    sockaddr_in bound{};
    socklen_t size = sizeof bound;
    if (getsockname(static_cast<int>(handle_), reinterpret_cast<sockaddr*>(&bound), &size) != 0) {
        return 0;
    }
    return ntohs(bound.sin_port);
}

void DatagramSocket::shutDownAndClose() {
    if (valid()) {
        shutdown(static_cast<int>(handle_), SHUT_RDWR);
        close(static_cast<int>(handle_));
        handle_ = invalid;
    }
}

} // namespace platform
