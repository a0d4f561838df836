// platform/windows/stream_connection.cpp
#include "platform/stream_connection.h"

// clang-format off
#include <winsock2.h>
#include <ws2tcpip.h>
#include <windows.h>
// clang-format on

#include <array>
#include <mutex>
#include <string>
#include <utility>

#include "platform/sockets.h"
#include "platform/windows/wide_text.h"

namespace platform {

namespace {

constexpr DWORD pipeBufferBytes = 65536;

class Event {
public:
    Event() = default;
    ~Event() { close(); }
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    int create() {
        close();
        handle_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        return handle_ != nullptr ? 0 : static_cast<int>(GetLastError());
    }
    void close() {
        if (handle_ != nullptr) {
            CloseHandle(std::exchange(handle_, nullptr));
        }
    }
    HANDLE get() const { return handle_; }

private:
    HANDLE handle_ = nullptr;
};

/// What carries the stream: a socket, with a start of the socket library of its own, or a pipe.
class Carrier {
public:
    Carrier() = default;
    ~Carrier() { close(); }
    Carrier(const Carrier&) = delete;
    Carrier& operator=(const Carrier&) = delete;

    int openSocket(int family) {
        close();
        if (const int error = startSocketLibrary()) {
            return error;
        }
        socket_ = true;
        handle_ =
            reinterpret_cast<HANDLE>(WSASocketW(family, SOCK_STREAM, IPPROTO_TCP, nullptr, 0, WSA_FLAG_OVERLAPPED));
        return valid() ? 0 : WSAGetLastError();
    }
    int takeSocket(SOCKET socket) {
        close();
        socket_ = startSocketLibrary() == 0;
        handle_ = reinterpret_cast<HANDLE>(socket);
        return valid() ? 0 : WSAGetLastError();
    }
    int takePipe(HANDLE pipe) {
        close();
        handle_ = pipe;
        return valid() ? 0 : static_cast<int>(GetLastError());
    }
    HANDLE release() { return std::exchange(handle_, INVALID_HANDLE_VALUE); }
    void close() {
        if (valid() && socket_) {
            closesocket(socket());
        } else if (valid()) {
            CloseHandle(handle_);
        }
        handle_ = INVALID_HANDLE_VALUE;
        if (std::exchange(socket_, false)) {
            cleanUpSocketLibrary();
        }
    }
    // Each begins an operation that ends as its record says; 0, or an error code when it has not begun. Sockets have calls
    // of their own: not every system takes the calls for files well.
    int beginRead(char* buffer, DWORD size, OVERLAPPED& operation) const {
        if (socket_) {
            WSABUF part{size, buffer};
            DWORD flags = 0;
            return begun(WSARecv(socket(), &part, 1, nullptr, &flags, &operation, nullptr) == 0);
        }
        return begun(ReadFile(handle_, buffer, size, nullptr, &operation));
    }
    int beginWrite(std::string_view bytes, OVERLAPPED& operation) const {
        const auto size = static_cast<DWORD>(bytes.size());
        if (socket_) {
            WSABUF part{size, const_cast<char*>(bytes.data())};
            return begun(WSASend(socket(), &part, 1, nullptr, 0, &operation, nullptr) == 0);
        }
        return begun(WriteFile(handle_, bytes.data(), size, nullptr, &operation));
    }
    bool valid() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }
    SOCKET socket() const { return reinterpret_cast<SOCKET>(handle_); }

private:
    static int begun(bool done) {
        const DWORD error = done ? ERROR_SUCCESS : GetLastError();
        return error == ERROR_IO_PENDING ? 0 : static_cast<int>(error);
    }

    HANDLE handle_ = INVALID_HANDLE_VALUE;
    bool socket_ = false;
};

int nativeFamily(AddressFamily family) {
    return family == AddressFamily::ipv4 ? AF_INET : AF_INET6;
}

/// Its user has started the socket library.
class Addresses {
public:
    Addresses(AddressFamily family, std::string_view host, std::uint16_t port) {
        ADDRINFOW hints{};
        hints.ai_family = nativeFamily(family);
        hints.ai_socktype = SOCK_STREAM;
        hints.ai_protocol = IPPROTO_TCP;
        error_ = GetAddrInfoW(wideFromUtf8(host).c_str(), std::to_wstring(port).c_str(), &hints, &first_);
    }
    ~Addresses() {
        if (first_ != nullptr) {
            FreeAddrInfoW(first_);
        }
    }
    Addresses(const Addresses&) = delete;
    Addresses& operator=(const Addresses&) = delete;

    int error() const { return error_; }
    const ADDRINFOW* first() const { return first_; }

private:
    ADDRINFOW* first_ = nullptr;
    int error_;
};

class SocketLibrary {
public:
    SocketLibrary() : error_(startSocketLibrary()) {}
    ~SocketLibrary() {
        if (error_ == 0) {
            cleanUpSocketLibrary();
        }
    }
    SocketLibrary(const SocketLibrary&) = delete;
    SocketLibrary& operator=(const SocketLibrary&) = delete;

    int error() const { return error_; }

private:
    int error_;
};

int setBlocking(SOCKET socket, bool blocking) {
    u_long nonBlocking = blocking ? 0 : 1;
    return ioctlsocket(socket, FIONBIO, &nonBlocking) == 0 ? 0 : WSAGetLastError();
}

timeval selectTime(std::chrono::milliseconds limit) {
    timeval time{};
    time.tv_sec = static_cast<long>(limit.count() / 1000);
    time.tv_usec = static_cast<long>(limit.count() % 1000 * 1000);
    return time;
}

/// Waits until a connect that goes on has an outcome.
int connectOutcome(SOCKET socket, std::chrono::milliseconds limit) {
    fd_set connected{1, {socket}};
    fd_set refused{1, {socket}};
    timeval time = selectTime(limit);
    if (select(0, nullptr, &connected, &refused, &time) == 0) {
        return WSAETIMEDOUT;
    }
    int error = 0;
    int size = sizeof error;
    getsockopt(socket, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size);
    return error == 0 && refused.fd_count != 0 ? WSAECONNREFUSED : error;
}

int connectTo(const ADDRINFOW& address, std::chrono::milliseconds limit, Carrier& carrier) {
    if (const int error = carrier.openSocket(address.ai_family)) {
        return error;
    }
    const SOCKET socket = carrier.socket();
    if (const int error = setBlocking(socket, false)) {
        return error;
    }
    if (connect(socket, address.ai_addr, static_cast<int>(address.ai_addrlen)) != 0 &&
        WSAGetLastError() != WSAEWOULDBLOCK) {
        return WSAGetLastError();
    }
    if (const int error = connectOutcome(socket, limit)) {
        return error;
    }
    return setBlocking(socket, true);
}

} // namespace

void signalEvent(void* event) {
    if (event != nullptr) {
        SetEvent(event);
    }
}

void setLocalPipeFolder(const std::filesystem::path&) {}

struct StreamConnection::State {
    /// The one read that is always under way while the connection receives.
    struct Read : OVERLAPPED {
        State* owner;
    };

    static void CALLBACK completed(DWORD error, DWORD bytes, OVERLAPPED* operation);
    bool takes(DWORD error, DWORD bytes);
    bool readsOn();
    bool isClosing();
    void endReceiving();

    Carrier carrier;
    Event sent;
    Event receiverOut;
    Receiver receiver;
    std::mutex lock;
    bool closing = false; // under lock
    Read read{};
    std::array<char, 65536> buffer{};
};

/// Runs on a thread of the system's. One read follows the other, so that there is never more than one call at a time.
void CALLBACK StreamConnection::State::completed(DWORD error, DWORD bytes, OVERLAPPED* operation) {
    State& state = *static_cast<Read*>(operation)->owner;
    if (!state.takes(error, bytes)) {
        SetEvent(state.receiverOut.get()); // from here on the state may be gone
    }
}

/// Whether there will be another completion.
bool StreamConnection::State::takes(DWORD error, DWORD bytes) {
    if (isClosing()) {
        return false;
    }
    const std::size_t arrived = error == ERROR_SUCCESS ? bytes : 0;
    if (!receiver({buffer.data(), arrived}) || arrived == 0) {
        return false;
    }
    if (readsOn()) {
        return true;
    }
    if (!isClosing()) {
        receiver({});
    }
    return false;
}

bool StreamConnection::State::isClosing() {
    const std::lock_guard guard(lock);
    return closing;
}

/// The lock keeps close() from cancelling between the look at its flag and the begin of the read.
bool StreamConnection::State::readsOn() {
    const std::lock_guard guard(lock);
    if (closing) {
        return false;
    }
    read = Read{};
    read.owner = this;
    return carrier.beginRead(buffer.data(), static_cast<DWORD>(buffer.size()), read) == 0;
}

void StreamConnection::State::endReceiving() {
    if (!receiver) {
        return;
    }
    {
        const std::lock_guard guard(lock);
        closing = true;
        CancelIoEx(carrier.get(), &read);
    }
    WaitForSingleObject(receiverOut.get(), INFINITE);
}

StreamConnection::StreamConnection() : state_(std::make_unique<State>()) {}

StreamConnection::~StreamConnection() {
    state_->endReceiving();
}

int StreamConnection::createEvents() {
    if (const int error = state_->sent.create()) {
        return error;
    }
    return state_->receiverOut.create();
}

int StreamConnection::connectTcp(AddressFamily family, std::string_view host, std::uint16_t port,
                                 std::chrono::milliseconds limit) {
    const SocketLibrary library;
    if (library.error() != 0) {
        return library.error();
    }
    const Addresses addresses(family, host, port);
    int error = addresses.error();
    for (const ADDRINFOW* address = addresses.first(); address != nullptr; address = address->ai_next) {
        error = connectTo(*address, limit, state_->carrier);
        if (error == 0) {
            break;
        }
    }
    return error;
}

int StreamConnection::openPipe(std::string_view name) {
    return state_->carrier.takePipe(CreateFileW(wideFromUtf8(name).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                                OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
}

int StreamConnection::disableNagle() {
    const int on = 1;
    const int result =
        setsockopt(state_->carrier.socket(), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
    return result == 0 ? 0 : WSAGetLastError();
}

bool StreamConnection::nagleDisabled() const {
    int on = 0;
    int size = sizeof on;
    return getsockopt(state_->carrier.socket(), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<char*>(&on), &size) == 0 &&
           on != 0;
}

int StreamConnection::startReceiving(Receiver receiver) {
    if (!BindIoCompletionCallback(state_->carrier.get(), State::completed, 0)) {
        return static_cast<int>(GetLastError());
    }
    state_->receiver = std::move(receiver);
    if (!state_->readsOn()) {
        state_->receiver = nullptr;
        return ERROR_READ_FAULT;
    }
    return 0;
}

int StreamConnection::send(std::string_view bytes, std::chrono::milliseconds limit) {
    const HANDLE carrier = state_->carrier.get();
    const HANDLE sent = state_->sent.get();
    ResetEvent(sent);
    OVERLAPPED write{};
    // With the low bit set the completion goes to the event alone, and not to the receiver as well.
    write.hEvent = reinterpret_cast<HANDLE>(reinterpret_cast<ULONG_PTR>(sent) | 1);
    if (const int error = state_->carrier.beginWrite(bytes, write)) {
        return error;
    }
    if (WaitForSingleObject(sent, static_cast<DWORD>(limit.count())) != WAIT_OBJECT_0) {
        CancelIoEx(carrier, &write);
    }
    DWORD written = 0;
    if (!GetOverlappedResult(carrier, &write, &written, TRUE)) {
        return static_cast<int>(GetLastError());
    }
    return written == bytes.size() ? 0 : ERROR_WRITE_FAULT;
}

void StreamConnection::close() {
    state_->endReceiving();
    state_ = std::make_unique<State>();
}

struct StreamListener::State {
    Carrier listening;
    std::string pipe; // its name; for TCP none
};

StreamListener::StreamListener() : state_(std::make_unique<State>()) {}

StreamListener::~StreamListener() = default;

int StreamListener::listenTcp(AddressFamily family, std::uint16_t port) {
    if (const int error = state_->listening.openSocket(nativeFamily(family))) {
        return error;
    }
    const Addresses addresses(family, family == AddressFamily::ipv4 ? "127.0.0.1" : "::1", port);
    if (addresses.error() != 0) {
        return addresses.error();
    }
    const SOCKET socket = state_->listening.socket();
    const ADDRINFOW& address = *addresses.first();
    const bool done =
        bind(socket, address.ai_addr, static_cast<int>(address.ai_addrlen)) == 0 && listen(socket, SOMAXCONN) == 0;
    return done ? 0 : WSAGetLastError();
}

int StreamListener::listenPipe(std::string_view name) {
    state_->pipe = name;
    return state_->listening.takePipe(CreateNamedPipeW(
        wideFromUtf8(name).c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED, PIPE_TYPE_BYTE | PIPE_READMODE_BYTE,
        PIPE_UNLIMITED_INSTANCES, pipeBufferBytes, pipeBufferBytes, 0, nullptr));
}

std::uint16_t StreamListener::port() const {
    sockaddr_in6 bound{};
    int size = sizeof bound;
    if (getsockname(state_->listening.socket(), reinterpret_cast<sockaddr*>(&bound), &size) != 0) {
        return 0;
    }
    return ntohs(bound.sin6_port); // at the same place in both families
}

namespace {

int waitForSocket(SOCKET listening, std::chrono::milliseconds limit) {
    fd_set waiting{1, {listening}};
    timeval time = selectTime(limit);
    const int ready = select(0, &waiting, nullptr, nullptr, &time);
    return ready > 0 ? 0 : ready == 0 ? WSAETIMEDOUT : WSAGetLastError();
}

int waitForPipe(HANDLE pipe, std::chrono::milliseconds limit) {
    Event connected;
    if (const int error = connected.create()) {
        return error;
    }
    OVERLAPPED operation{};
    operation.hEvent = connected.get();
    if (!ConnectNamedPipe(pipe, &operation)) {
        const DWORD error = GetLastError();
        // The peer was quicker, and may even have gone again.
        if (error == ERROR_PIPE_CONNECTED || error == ERROR_NO_DATA) {
            return 0;
        }
        if (error != ERROR_IO_PENDING) {
            return static_cast<int>(error);
        }
    }
    if (WaitForSingleObject(connected.get(), static_cast<DWORD>(limit.count())) != WAIT_OBJECT_0) {
        CancelIoEx(pipe, &operation);
    }
    DWORD bytes = 0;
    return GetOverlappedResult(pipe, &operation, &bytes, TRUE) ? 0 : static_cast<int>(GetLastError());
}

} // namespace

int StreamListener::accept(StreamConnection& connection, std::chrono::milliseconds limit) {
    Carrier& listening = state_->listening;
    const bool tcp = state_->pipe.empty();
    if (const int error = tcp ? waitForSocket(listening.socket(), limit) : waitForPipe(listening.get(), limit)) {
        return error;
    }
    connection.close();
    if (const int error = connection.createEvents()) {
        return error;
    }
    Carrier& accepted = connection.state_->carrier;
    if (tcp) {
        return accepted.takeSocket(::accept(listening.socket(), nullptr, nullptr));
    }
    // The instance that listened has become the connection; another one takes its place.
    accepted.takePipe(listening.release());
    return listenPipe(std::string(state_->pipe));
}

void StreamListener::close() {
    state_ = std::make_unique<State>();
}

} // namespace platform
