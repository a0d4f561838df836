// platform/windows/stream_connection.cpp
#include "platform/stream_connection.h"

// clang-format off
#include <winsock2.h>
#include <ws2tcpip.h>
#include <windows.h>
// clang-format on

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "platform/sockets.h"
#include "platform/windows/wide_text.h"

namespace platform {

namespace {

using Deadline = std::chrono::steady_clock::time_point;
using std::chrono::milliseconds;

constexpr DWORD pipeBufferBytes = 65536;

/// Rounded up, never below 0.
milliseconds timeUntil(Deadline deadline) {
    return std::max(std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now()), milliseconds(0));
}

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
    /// The answer of a call that makes a socket, straight from it: its error code is still there then.
    int takeSocket(SOCKET socket) {
        if (socket == INVALID_SOCKET) {
            return WSAGetLastError();
        }
        close();
        if (const int error = startSocketLibrary()) {
            closesocket(socket);
            return error;
        }
        socket_ = true;
        handle_ = reinterpret_cast<HANDLE>(socket);
        return 0;
    }
    /// The same for a call that makes a pipe.
    int takePipe(HANDLE pipe) {
        if (pipe == INVALID_HANDLE_VALUE) {
            return static_cast<int>(GetLastError());
        }
        close();
        handle_ = pipe;
        return 0;
    }
    HANDLE release() { return std::exchange(handle_, INVALID_HANDLE_VALUE); }
    bool isSocket() const { return socket_; }
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
    // Each begins an operation that ends as its record says; 0, or an error code when it has not begun. Sockets have
    // calls of their own: not every system takes the calls for files well.
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

timeval selectTime(milliseconds limit) {
    timeval time{};
    time.tv_sec = static_cast<long>(limit.count() / 1000);
    time.tv_usec = static_cast<long>(limit.count() % 1000 * 1000);
    return time;
}

/// Waits until a connect that goes on has an outcome.
int connectOutcome(SOCKET socket, milliseconds limit) {
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

int connectTo(const ADDRINFOW& address, Deadline deadline, Carrier& carrier) {
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
    if (const int error = connectOutcome(socket, timeUntil(deadline))) {
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

struct StreamConnection::State : std::enable_shared_from_this<State> {
    /// The one read that is always under way while the connection receives. It keeps the state: close() does not wait
    /// until the system's thread has left the functions here, only until it has left the receiver.
    struct Read : OVERLAPPED {
        std::shared_ptr<State> owner;
    };

    static void CALLBACK completed(DWORD error, DWORD bytes, OVERLAPPED* operation);
    bool takes(std::string_view bytes);
    bool readsOn();
    bool isClosing();
    void endReceiving();

    Carrier carrier;
    Event sent;
    Event sendingCancelled;
    Event receiverOut;
    Receiver receiver;
    std::mutex lock;
    bool closing = false; // under lock
    Read read{};
    std::array<char, 65536> buffer{};
};

/// Runs on a thread of the system's. One read follows the other, so that there is never more than one call at a time.
void CALLBACK StreamConnection::State::completed(DWORD error, DWORD bytes, OVERLAPPED* operation) {
    const std::shared_ptr<State> state = std::move(static_cast<Read*>(operation)->owner);
    if (!state->takes({state->buffer.data(), error == ERROR_SUCCESS ? bytes : 0})) {
        SetEvent(state->receiverOut.get());
    }
}

/// Whether there will be another completion.
bool StreamConnection::State::takes(std::string_view bytes) {
    if (isClosing() || !receiver(bytes) || bytes.empty()) {
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
    read.owner = shared_from_this();
    if (carrier.beginRead(buffer.data(), static_cast<DWORD>(buffer.size()), read) != 0) {
        read.owner = nullptr;
        return false;
    }
    return true;
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

StreamConnection::StreamConnection() : state_(std::make_shared<State>()) {}

StreamConnection::~StreamConnection() {
    close();
}

int StreamConnection::createEvents() {
    for (Event* event : {&state_->sent, &state_->sendingCancelled, &state_->receiverOut}) {
        if (const int error = event->create()) {
            return error;
        }
    }
    return 0;
}

int StreamConnection::connectTcp(AddressFamily family, std::string_view host, std::uint16_t port, milliseconds limit) {
    const SocketLibrary library;
    if (library.error() != 0) {
        return library.error();
    }
    const Addresses addresses(family, host, port);
    const Deadline deadline = std::chrono::steady_clock::now() + limit;
    int error = addresses.error();
    for (const ADDRINFOW* address = addresses.first(); address != nullptr; address = address->ai_next) {
        error = connectTo(*address, deadline, state_->carrier);
        if (error == 0) {
            break;
        }
    }
    return error;
}

int StreamConnection::openPipe(std::string_view name) {
    constexpr DWORD flags = FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
    const std::wstring path = wideFromUtf8(name);
    return state_->carrier.takePipe(
        CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, flags, nullptr));
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
        state_->receiver({});
        SetEvent(state_->receiverOut.get());
    }
    return 0;
}

bool StreamConnection::waitForEnd(milliseconds limit) const {
    return !state_->receiver ||
           WaitForSingleObject(state_->receiverOut.get(), static_cast<DWORD>(limit.count())) == WAIT_OBJECT_0;
}

int StreamConnection::send(std::string_view bytes, milliseconds limit) {
    const HANDLE carrier = state_->carrier.get();
    const HANDLE sent = state_->sent.get();
    ResetEvent(sent);
    OVERLAPPED write{};
    // With the low bit set the completion goes to the event alone, and not to the receiver as well.
    write.hEvent = reinterpret_cast<HANDLE>(reinterpret_cast<ULONG_PTR>(sent) | 1);
    if (const int error = state_->carrier.beginWrite(bytes, write)) {
        return error;
    }
    const std::array<HANDLE, 2> ends{state_->sendingCancelled.get(), sent};
    const DWORD end = WaitForMultipleObjects(ends.size(), ends.data(), FALSE, static_cast<DWORD>(limit.count()));
    if (end != WAIT_OBJECT_0 + 1) {
        CancelIoEx(carrier, &write);
    }
    DWORD written = 0;
    if (!GetOverlappedResult(carrier, &write, &written, TRUE)) {
        return static_cast<int>(GetLastError());
    }
    if (end == WAIT_OBJECT_0) {
        return ERROR_OPERATION_ABORTED;
    }
    return written == bytes.size() ? 0 : ERROR_WRITE_FAULT;
}

void StreamConnection::cancelSending() {
    SetEvent(state_->sendingCancelled.get());
}

int StreamConnection::shutDownSending() {
    if (!state_->carrier.isSocket()) {
        return ERROR_NOT_SUPPORTED;
    }
    return shutdown(state_->carrier.socket(), SD_SEND) == 0 ? 0 : WSAGetLastError();
}

void StreamConnection::close() {
    state_->endReceiving();
    state_->carrier.close();
    state_->receiver = nullptr;
    state_ = std::make_shared<State>();
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

namespace {

int createPipe(std::string_view name, Carrier& pipe) {
    const std::wstring path = wideFromUtf8(name);
    return pipe.takePipe(CreateNamedPipeW(path.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                          PIPE_TYPE_BYTE | PIPE_READMODE_BYTE, PIPE_UNLIMITED_INSTANCES,
                                          pipeBufferBytes, pipeBufferBytes, 0, nullptr));
}

} // namespace

int StreamListener::listenPipe(std::string_view name) {
    state_->pipe = name;
    return createPipe(name, state_->listening);
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

int waitForSocket(SOCKET listening, milliseconds limit) {
    fd_set waiting{1, {listening}};
    timeval time = selectTime(limit);
    const int ready = select(0, &waiting, nullptr, nullptr, &time);
    return ready > 0 ? 0 : ready == 0 ? WSAETIMEDOUT : WSAGetLastError();
}

int waitForPipe(HANDLE pipe, milliseconds limit) {
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

int StreamListener::accept(StreamConnection& connection, milliseconds limit) {
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
    // The instance that listened becomes the connection. Another one takes its place first: without it the peer stays
    // where it is, for the next call.
    Carrier next;
    if (const int error = createPipe(state_->pipe, next)) {
        return error;
    }
    accepted.takePipe(listening.release());
    return listening.takePipe(next.release());
}

void StreamListener::close() {
    state_ = std::make_unique<State>();
}

} // namespace platform
