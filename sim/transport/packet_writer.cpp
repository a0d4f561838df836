// sim/transport/packet_writer.cpp
#include "sim/transport/packet_writer.h"

#include <algorithm>
#include <bit>

namespace {

void putLittleEndian(char* to, std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        to[i] = static_cast<char>(value >> (8 * i) & 0xFF);
    }
}

} // namespace

void PacketWriter::begin(Operation operation, std::uint32_t packetId) {
    size_ = 0;
    valid_ = true;
    dword(0); // the size, once it is known
    dword(protocolVersion);
    dword(operationMark | static_cast<std::uint32_t>(operation));
    dword(packetId);
}

void PacketWriter::dword(std::uint32_t value) {
    if (char* to = room(sizeof value)) {
        putLittleEndian(to, value, sizeof value);
    }
}

void PacketWriter::float32(float value) {
    dword(std::bit_cast<std::uint32_t>(value));
}

void PacketWriter::float64(double value) {
    if (char* to = room(sizeof value)) {
        putLittleEndian(to, std::bit_cast<std::uint64_t>(value), sizeof value);
    }
}

void PacketWriter::text(std::string_view value, std::size_t fieldBytes) {
    if (value.size() > fieldBytes) {
        refuse();
        return;
    }
    if (char* to = room(fieldBytes)) {
        std::fill(std::copy(value.begin(), value.end(), to), to + fieldBytes, '\0');
    }
}

void PacketWriter::terminatedText(std::string_view value, std::size_t fieldBytes) {
    if (value.size() == fieldBytes) {
        refuse();
        return;
    }
    text(value, fieldBytes);
}

void PacketWriter::bytes(std::span<const char> value) {
    if (char* to = room(value.size())) {
        std::copy(value.begin(), value.end(), to);
    }
}

std::string_view PacketWriter::packet() {
    putLittleEndian(buffer_.data(), size_, sizeof(std::uint32_t));
    return {buffer_.data(), size_};
}

/// Nothing when the packet is invalid, or would be with so much more.
char* PacketWriter::room(std::size_t size) {
    if (!valid_ || size > buffer_.size() - size_) {
        refuse();
        return nullptr;
    }
    char* const begin = buffer_.data() + size_;
    size_ += size;
    return begin;
}
