// platform/windows/sockets.cpp
#include "platform/sockets.h"

// clang-format off
#include <winsock2.h>
#include <ws2tcpip.h>
// clang-format on

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
    const DWORD value = static_cast<DWORD>(timeout.count());
    return answer(
        setsockopt(native(handle_), SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&value), sizeof value));
}

SocketResult DatagramSocket::receive(char* buffer, std::size_t size) {
    return transferred(recv(native(handle_), buffer, static_cast<int>(size), 0));
}

SocketResult DatagramSocket::sendToThisMachine(std::uint16_t port, std::string_view bytes, std::uint8_t lastByte) {
    const sockaddr_in to = address(thisMachinesAddresses + lastByte, port);
    return transferred(sendto(native(handle_), bytes.data(), static_cast<int>(bytes.size()), 0,
                              reinterpret_cast<const sockaddr*>(&to), sizeof to));
}

std::uint16_t DatagramSocket::boundPort() const {
    sockaddr_in bound{};
    int size = sizeof bound;
    if (getsockname(native(handle_), reinterpret_cast<sockaddr*>(&bound), &size) != 0) {
        return 0;
    }
    return ntohs(bound.sin_port);
}

void DatagramSocket::shutDownAndClose() {
    if (valid()) {
        shutdown(native(handle_), SD_BOTH);
        closesocket(native(handle_));
        handle_ = invalid;
    }
}

} // namespace platform
