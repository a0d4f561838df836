// platform/posix/stream_connection.cpp
#include "platform/stream_connection.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "platform/files.h"
#include "platform/threads.h"

namespace platform {

namespace {

std::filesystem::path chosenPipeFolder; // set by tests, before they start threads

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() { reset(-1); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }
    int release() { return std::exchange(fd_, -1); }
    void reset(int fd) {
        if (valid()) {
            ::close(fd_);
        }
        fd_ = fd;
    }

private:
    int fd_ = -1;
};

int nativeFamily(AddressFamily family) {
    return family == AddressFamily::ipv4 ? AF_INET : AF_INET6;
}

class Addresses {
public:
    Addresses(AddressFamily family, const std::string& host, std::uint16_t port) {
        addrinfo hints{};
        hints.ai_family = nativeFamily(family);
        hints.ai_socktype = SOCK_STREAM;
        hints.ai_protocol = IPPROTO_TCP;
        hints.ai_flags = AI_NUMERICSERV;
        error_ = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &first_) == 0 ? 0 : EHOSTUNREACH;
    }
    ~Addresses() {
        if (first_ != nullptr) {
            freeaddrinfo(first_);
        }
    }
    Addresses(const Addresses&) = delete;
    Addresses& operator=(const Addresses&) = delete;

    int error() const { return error_; }
    const addrinfo* first() const { return first_; }

private:
    addrinfo* first_ = nullptr;
    int error_;
};

/// The time limit for sending holds for connecting too.
void limitConnecting(int fd, std::chrono::milliseconds limit) {
    timeval value{};
    value.tv_sec = static_cast<time_t>(limit.count() / 1000);
    value.tv_usec = static_cast<suseconds_t>(limit.count() % 1000 * 1000);
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &value, sizeof value);
}

int connectTo(const addrinfo& address, std::chrono::milliseconds limit, Descriptor& connected) {
    Descriptor fd(socket(address.ai_family, address.ai_socktype | SOCK_CLOEXEC, address.ai_protocol));
    if (!fd.valid()) {
        return errno;
    }
    limitConnecting(fd.get(), limit);
    if (connect(fd.get(), address.ai_addr, address.ai_addrlen) != 0) {
        return errno;
    }
    connected.reset(fd.release());
    return 0;
}

std::filesystem::path pipeFolder() {
    if (!chosenPipeFolder.empty()) {
        return chosenPipeFolder;
    }
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    return folder != nullptr && *folder != '\0' ? folder : std::filesystem::temp_directory_path();
}

/// The local socket that stands for a pipe; empty when its path is longer than the system takes.
sockaddr_un pipeAddress(std::string_view name) {
    std::string file(name);
    std::replace(file.begin(), file.end(), '\\', '_');
    std::replace(file.begin(), file.end(), '/', '_');
    const std::string path = (pipeFolder() / pathFromUtf8(file)).native();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() < sizeof address.sun_path) {
        std::memcpy(address.sun_path, path.data(), path.size());
    }
    return address;
}

/// Until the stream ends, the receiver has enough, or the connection closes.
void receiveAll(int fd, int closing, const StreamConnection::Receiver& receiver) {
    std::array<char, 65536> buffer{};
    for (;;) {
        std::array<pollfd, 2> waiting{{{fd, POLLIN, 0}, {closing, POLLIN, 0}}};
        if (poll(waiting.data(), waiting.size(), -1) < 0) {
            continue; // a signal
        }
        if (waiting[1].revents != 0) {
            return;
        }
        const ssize_t bytes = recv(fd, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (bytes < 0 && (errno == EAGAIN || errno == EINTR)) {
            continue;
        }
        const std::size_t arrived = bytes > 0 ? static_cast<std::size_t>(bytes) : 0;
        if (!receiver({buffer.data(), arrived}) || arrived == 0) {
            return;
        }
    }
}

int waitFor(int fd, short events, std::chrono::milliseconds limit) {
    pollfd waiting{fd, events, 0};
    for (;;) {
        const int ready = poll(&waiting, 1, static_cast<int>(limit.count()));
        if (ready > 0) {
            return 0;
        }
        if (ready == 0) {
            return ETIMEDOUT;
        }
        if (errno != EINTR) {
            return errno;
        }
    }
}

} // namespace

void setLocalPipeFolder(const std::filesystem::path& folder) {
    chosenPipeFolder = folder;
}

void signalEvent(void*) {}

struct StreamConnection::State {
    Descriptor stream;
    Descriptor closing; // readable from close() on
    std::thread receiver;
};

StreamConnection::StreamConnection() : state_(std::make_unique<State>()) {}

StreamConnection::~StreamConnection() {
    close();
}

int StreamConnection::createEvents() {
    state_->closing.reset(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    return state_->closing.valid() ? 0 : errno;
}

int StreamConnection::connectTcp(AddressFamily family, std::string_view host, std::uint16_t port,
                                 std::chrono::milliseconds limit) {
    const Addresses addresses(family, std::string(host), port);
    int error = addresses.error();
    for (const addrinfo* address = addresses.first(); address != nullptr; address = address->ai_next) {
        error = connectTo(*address, limit, state_->stream);
        if (error == 0) {
            break;
        }
    }
    return error;
}

int StreamConnection::openPipe(std::string_view name) {
    const sockaddr_un address = pipeAddress(name);
    if (address.sun_path[0] == '\0') {
        return ENAMETOOLONG;
    }
    Descriptor fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!fd.valid() || connect(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return errno;
    }
    state_->stream.reset(fd.release());
    return 0;
}

int StreamConnection::disableNagle() {
    const int on = 1;
    return setsockopt(state_->stream.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) == 0 ? 0 : errno;
}

bool StreamConnection::nagleDisabled() const {
    int on = 0;
    socklen_t size = sizeof on;
    return getsockopt(state_->stream.get(), IPPROTO_TCP, TCP_NODELAY, &on, &size) == 0 && on != 0;
}

int StreamConnection::startReceiving(Receiver receiver) {
    state_->receiver =
        std::thread([fd = state_->stream.get(), closing = state_->closing.get(), receiver = std::move(receiver)] {
            nameThisThread("Sim Receiver");
            receiveAll(fd, closing, receiver);
        });
    return 0;
}

int StreamConnection::send(std::string_view bytes, std::chrono::milliseconds limit) {
    const int fd = state_->stream.get();
    while (!bytes.empty()) {
        const ssize_t sent = ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
            continue;
        }
        if (errno != EAGAIN && errno != EINTR) {
            return errno;
        }
        if (const int error = waitFor(fd, POLLOUT, limit)) {
            return error;
        }
    }
    return 0;
}

void StreamConnection::close() {
    if (state_->receiver.joinable()) {
        eventfd_write(state_->closing.get(), 1);
        state_->receiver.join();
    }
    state_->stream.reset(-1);
    state_->closing.reset(-1);
}

struct StreamListener::State {
    Descriptor listening;
    std::filesystem::path pipe; // removed when the listener closes
};

StreamListener::StreamListener() : state_(std::make_unique<State>()) {}

StreamListener::~StreamListener() {
    close();
}

int StreamListener::listenTcp(AddressFamily family, std::uint16_t port) {
    const Addresses addresses(family, family == AddressFamily::ipv4 ? "127.0.0.1" : "::1", port);
    if (addresses.error() != 0) {
        return addresses.error();
    }
    const addrinfo& address = *addresses.first();
    state_->listening.reset(socket(address.ai_family, address.ai_socktype | SOCK_CLOEXEC, address.ai_protocol));
    const int fd = state_->listening.get();
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const bool done = fd >= 0 && bind(fd, address.ai_addr, address.ai_addrlen) == 0 && listen(fd, SOMAXCONN) == 0;
    return done ? 0 : errno;
}

int StreamListener::listenPipe(std::string_view name) {
    const sockaddr_un address = pipeAddress(name);
    if (address.sun_path[0] == '\0') {
        return ENAMETOOLONG;
    }
    // What a killed program has left would keep the name taken.
    unlink(address.sun_path);
    state_->listening.reset(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int fd = state_->listening.get();
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(fd, SOMAXCONN) != 0) {
        return errno;
    }
    state_->pipe = address.sun_path;
    return 0;
}

std::uint16_t StreamListener::port() const {
    sockaddr_in6 bound{};
    socklen_t size = sizeof bound;
    if (getsockname(state_->listening.get(), reinterpret_cast<sockaddr*>(&bound), &size) != 0) {
        return 0;
    }
    return ntohs(bound.sin6_port); // at the same place in both families
}

int StreamListener::accept(StreamConnection& connection, std::chrono::milliseconds limit) {
    const int fd = state_->listening.get();
    if (const int error = waitFor(fd, POLLIN, limit)) {
        return error;
    }
    connection.close();
    if (const int error = connection.createEvents()) {
        return error;
    }
    connection.state_->stream.reset(accept4(fd, nullptr, nullptr, SOCK_CLOEXEC));
    return connection.state_->stream.valid() ? 0 : errno;
}

void StreamListener::close() {
    state_->listening.reset(-1);
    if (!state_->pipe.empty()) {
        unlink(state_->pipe.c_str());
        state_->pipe.clear();
    }
}

} // namespace platform
