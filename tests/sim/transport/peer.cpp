#include "tests/sim/transport/peer.h"

#include <bit>
#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto patience = 60s;
constexpr std::size_t headBytes = 16;

std::uint32_t dwordAt(std::string_view bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value |= std::uint32_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
    }
    return value;
}

} // namespace

bool Peer::acceptsWithoutReading() {
    return listener_.accept(connection_, patience) == 0;
}

bool Peer::beginsToRead() {
    return connection_.startReceiving([this](std::string_view bytes) { return receive(bytes); }) == 0;
}

bool Peer::accepts() {
    return acceptsWithoutReading() && beginsToRead();
}

/// As a simulator does, it ends its own side when the client has.
bool Peer::receive(std::string_view bytes) {
    if (bytes.empty()) {
        connection_.shutDownSending();
    }
    const std::lock_guard lock(lock_);
    received_ += bytes;
    ended_ = bytes.empty();
    changed_.notify_all();
    return true;
}

std::string Peer::packet() {
    std::unique_lock lock(lock_);
    const auto whole = [this] {
        return received_.size() >= headBytes && received_.size() >= dwordAt(received_, 0) &&
               dwordAt(received_, 0) >= headBytes;
    };
    if (!changed_.wait_for(lock, patience, whole)) {
        return {};
    }
    std::string packet = received_.substr(0, dwordAt(received_, 0));
    received_.erase(0, packet.size());
    return packet;
}

bool Peer::seesTheClientClose() {
    std::unique_lock lock(lock_);
    return changed_.wait_for(lock, patience, [this] { return ended_; });
}

bool Peer::sends(std::string_view bytes) {
    return connection_.send(bytes, patience) == 0;
}

void Peer::closes() {
    connection_.close();
    listener_.close();
}

Bytes& Bytes::dword(std::uint32_t value) {
    for (int i = 0; i < 4; ++i) {
        bytes_ += static_cast<char>(value >> (8 * i) & 0xFF);
    }
    return *this;
}

Bytes& Bytes::float32(float value) {
    return dword(std::bit_cast<std::uint32_t>(value));
}

Bytes& Bytes::float64(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    return dword(static_cast<std::uint32_t>(bits)).dword(static_cast<std::uint32_t>(bits >> 32));
}

Bytes& Bytes::text(std::string_view value, std::size_t fieldBytes) {
    bytes_ += value;
    bytes_.append(fieldBytes - value.size(), '\0');
    return *this;
}

Bytes& Bytes::raw(std::string_view value) {
    bytes_ += value;
    return *this;
}

std::string packetBytes(std::uint32_t operation, std::uint32_t packetId, std::string_view parameters) {
    const auto size = static_cast<std::uint32_t>(headBytes + parameters.size());
    return Bytes().dword(size).dword(4).dword(0xF0000000 + operation).dword(packetId).raw(parameters).str();
}

std::string recordBytes(std::uint32_t id, std::string_view body) {
    return Bytes().dword(static_cast<std::uint32_t>(12 + body.size())).dword(5).dword(id).raw(body).str();
}
