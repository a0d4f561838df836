// feed/udp_reader.cpp
#include "feed/udp_reader.h"

#include <chrono>
#include <exception>
#include <fmt/format.h>
#include <stdexcept>

#include "core/exit_reason.h"
#include "core/log.h"
#include "feed/socket_error_text.h"
#include "platform/text_encoding.h"

namespace {

using platform::socket_error::interrupted;
using platform::socket_error::messageTooLong;
using platform::socket_error::timedOut;
using platform::socket_error::wouldBlock;

/// How long the loop may take to see that it shall stop.
constexpr std::chrono::milliseconds receiveTimeout{1000};
constexpr int restartDelaySeconds = 15;
/// Over a busy airport four hundred lines come in one go, and the usual room holds less than half of them while this
/// thread waits for its turn on a busy machine. Systems may give less than is asked for.
constexpr int receiveRoomBytes = 1 << 20;

bool isPassing(int error) {
    return error == interrupted || error == wouldBlock || error == timedOut;
}

void throwIfFailed(int error, fmt::format_string<std::string> text) {
    if (error != 0) {
        throw std::runtime_error(fmt::format(text, socketErrorText(error)));
    }
}

void stopRunBecauseOf(std::string_view name, std::string_view cause) {
    // The socket errors that closing down brings about are no news.
    if (!gf_isStopping()) {
        showMessage(fmt::format("The {} has stopped with error: {}", name, cause), LogCopy::yes);
    }
    gf_stopRun(ExitReason::readerError, restartDelaySeconds);
}

void cleanUpSocketLibraryOnce() {
    static std::atomic<bool> cleanedUp{false};
    if (!cleanedUp.exchange(true)) {
        platform::cleanUpSocketLibrary();
    }
}

void setLamps(std::initializer_list<std::atomic<FeedLamp>*> lamps, FeedLamp state) {
    for (std::atomic<FeedLamp>* lamp : lamps) {
        *lamp = state;
    }
    repaintWindow();
}

} // namespace

void UdpReader::open(std::uint16_t port, bool local) {
    throwIfFailed(socket.create(), "failed to create the socket, error: {}");
    throwIfFailed(socket.bind(local ? platform::BindTo::thisMachine : platform::BindTo::allAddresses, port),
                  "bind to stream socket failed, error: {}");
    socket.setReceiveRoom(receiveRoomBytes); // with less a line may be lost, which is no reason not to listen
    boundPort = socket.boundPort();
}

void UdpReader::receive(bool local) {
    try {
        receiveUntilStopped(local);
    } catch (...) {
        close();
        onStopped();
        throw;
    }
    close();
    onStopped();
}

void UdpReader::receiveUntilStopped(bool local) {
    throwIfFailed(socket.setReceiveTimeout(receiveTimeout), "receive error: {}");
    while (!stopRequested) {
        const platform::SocketResult result = socket.receive(buffer.data(), bufferSize);
        if (stopRequested) {
            return;
        }
        if (isPassing(result.error)) {
            continue;
        }
        if (result.error == messageTooLong || result.bytes >= bufferSize) {
            logUnlessStopping(fmt::format("buffer overrun: {} bytes", bufferSize));
            continue;
        }
        throwIfFailed(result.error, "receive error: {}");
        buffer[result.bytes] = '\0';
        const std::string_view bytes(buffer.data(), result.bytes);
        if (!bytes.empty() && (local || !isRepetition(bytes))) {
            deliver(bytes);
        }
    }
}

bool UdpReader::isRepetition(std::string_view bytes) {
    if (previousIsVoid.exchange(false)) {
        previous.clear();
    }
    if (bytes == previous) {
        return true;
    }
    previous = bytes;
    return false;
}

void UdpReader::deliver(std::string_view bytes) {
    datagram = bytes;
    ++datagramCount;
    onDatagram();
}

void UdpReader::close() {
    boundPort = 0;
    socket.shutDownAndClose();
}

void UdpReader::resetReader() {
    stopRequested = false;
    datagramCount = 0;
    lastCount = 0;
    previousIsVoid = true;
}

void runReader(UdpReader& reader, std::string_view name, std::initializer_list<std::atomic<FeedLamp>*> lamps,
               std::uint16_t port, bool local) {
    bool libraryStarted = false;
    try {
        throwIfFailed(platform::startSocketLibrary(), "WSA startup error: {}");
        libraryStarted = true;
        reader.open(port, local);
        setLamps(lamps, FeedLamp::flowing);
        log(fmt::format("{} connected", name));
        reader.receive(local);
    } catch (const std::exception& error) {
        stopRunBecauseOf(name, platform::readableText(error.what()));
    } catch (...) {
        stopRunBecauseOf(name, "Unknown exception");
    }
    reader.close();
    if (libraryStarted) {
        cleanUpSocketLibraryOnce();
    }
    setLamps(lamps, FeedLamp::notRunning);
    log(fmt::format("{} disconnected", name));
}
