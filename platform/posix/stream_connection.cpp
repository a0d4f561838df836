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
#include <optional>
#include <poll.h>
#include <span>
#include <string>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

#include "platform/files.h"
#include "platform/threads.h"

namespace platform {

namespace {

using Deadline = std::chrono::steady_clock::time_point;
using std::chrono::milliseconds;

Deadline deadlineIn(milliseconds limit) {
    return std::chrono::steady_clock::now() + limit;
}

/// Rounded up, so that nobody looks again and again during the last millisecond; never below 0.
milliseconds timeUntil(Deadline deadline) {
    return std::max(std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now()), milliseconds(0));
}

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

/// The time limit for sending holds for connecting too. 0 would be no limit.
void limitConnecting(int fd, milliseconds limit) {
    timeval value{};
    value.tv_sec = static_cast<time_t>(limit.count() / 1000);
    value.tv_usec = static_cast<suseconds_t>(limit.count() % 1000 * 1000);
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &value, sizeof value);
}

int connectTo(const addrinfo& address, Deadline deadline, Descriptor& connected) {
    const milliseconds limit = timeUntil(deadline);
    if (limit.count() == 0) {
        return ETIMEDOUT;
    }
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

/// Waits until one of them has what it waits for; 0, or an error code.
int waitForAny(std::span<pollfd> waiting, Deadline deadline) {
    for (;;) {
        const int ready = poll(waiting.data(), waiting.size(), static_cast<int>(timeUntil(deadline).count()));
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

int waitFor(int fd, short events, milliseconds limit) {
    pollfd waiting{fd, events, 0};
    return waitForAny({&waiting, 1}, deadlineIn(limit));
}

/// Waits for bytes, or the end, and takes them. Nothing when the connection closes; none of them at the end of the
/// stream, or when it cannot be read any more.
std::optional<std::string_view> nextBytes(int fd, int closing, std::span<char> buffer) {
    for (;;) {
        std::array<pollfd, 2> waiting{{{fd, POLLIN, 0}, {closing, POLLIN, 0}}};
        if (poll(waiting.data(), waiting.size(), -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            return std::string_view{};
        }
        if (waiting[1].revents != 0) {
            return std::nullopt;
        }
        const ssize_t bytes = recv(fd, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (bytes >= 0) {
            return std::string_view(buffer.data(), static_cast<std::size_t>(bytes));
        }
        if (errno != EAGAIN && errno != EINTR) {
            return std::string_view{};
        }
    }
}

/// Until the stream ends, the receiver has enough, or the connection closes.
void receiveAll(int fd, int closing, const StreamConnection::Receiver& receiver) {
    std::array<char, 65536> buffer{};
    for (;;) {
        const std::optional<std::string_view> bytes = nextBytes(fd, closing, buffer);
        if (!bytes || !receiver(*bytes) || bytes->empty()) {
            return;
        }
    }
}

/// The event is readable from then on.
void setEvent(const Descriptor& event) {
    eventfd_write(event.get(), 1);
}

int createEvent(Descriptor& event) {
    event.reset(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    return event.valid() ? 0 : errno;
}

} // namespace

void setLocalPipeFolder(const std::filesystem::path& folder) {
    chosenPipeFolder = folder;
}

void signalEvent(void*) {}

struct StreamConnection::State {
    Descriptor stream;
    Descriptor closing;          // raised by close()
    Descriptor sendingCancelled; // raised by cancelSending()
    Descriptor receiverOut;      // raised by the receiver's thread at its end
    std::thread receiver;
};

StreamConnection::StreamConnection() : state_(std::make_shared<State>()) {}

StreamConnection::~StreamConnection() {
    close();
}

int StreamConnection::createEvents() {
    for (Descriptor* event : {&state_->closing, &state_->sendingCancelled, &state_->receiverOut}) {
        if (const int error = createEvent(*event)) {
            return error;
        }
    }
    return 0;
}

int StreamConnection::connectTcp(AddressFamily family, std::string_view host, std::uint16_t port, milliseconds limit) {
    const Addresses addresses(family, std::string(host), port);
    const Deadline deadline = deadlineIn(limit);
    int error = addresses.error();
    for (const addrinfo* address = addresses.first(); address != nullptr; address = address->ai_next) {
        error = connectTo(*address, deadline, state_->stream);
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
    try {
        state_->receiver = std::thread([&state = *state_, receiver = std::move(receiver)] {
            nameThisThread("Sim Receiver");
            receiveAll(state.stream.get(), state.closing.get(), receiver);
            setEvent(state.receiverOut);
        });
    } catch (const std::system_error& error) {
        return error.code().value();
    }
    return 0;
}

bool StreamConnection::waitForEnd(milliseconds limit) const {
    return !state_->receiver.joinable() || waitFor(state_->receiverOut.get(), POLLIN, limit) == 0;
}

int StreamConnection::send(std::string_view bytes, milliseconds limit) {
    const Deadline deadline = deadlineIn(limit);
    std::array<pollfd, 2> waiting{{{state_->stream.get(), POLLOUT, 0}, {state_->sendingCancelled.get(), POLLIN, 0}}};
    while (!bytes.empty()) {
        if (const int error = waitForAny(waiting, deadline)) {
            return error;
        }
        if (waiting[1].revents != 0) {
            return ECANCELED;
        }
        const ssize_t sent = ::send(waiting[0].fd, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && errno != EAGAIN && errno != EINTR) {
            return errno;
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max(sent, ssize_t{0})));
    }
    return 0;
}

void StreamConnection::cancelSending() {
    setEvent(state_->sendingCancelled);
}

int StreamConnection::shutDownSending() {
    return shutdown(state_->stream.get(), SHUT_WR) == 0 ? 0 : errno;
}

void StreamConnection::close() {
    if (state_->receiver.joinable()) {
        setEvent(state_->closing);
        state_->receiver.join();
    }
    for (Descriptor* held : {&state_->stream, &state_->closing, &state_->sendingCancelled, &state_->receiverOut}) {
        held->reset(-1);
    }
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

int StreamListener::accept(StreamConnection& connection, milliseconds limit) {
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
