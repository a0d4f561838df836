// sim/record_reader.h
// Reading what the simulator has sent, never beyond its end. Without state: usable from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>

using RecordBytes = std::span<const std::byte>;

/// The fixed part of a record; nothing when the bytes are too few for it.
template <typename Record>
std::optional<Record> recordFrom(RecordBytes bytes) {
    if (bytes.size() < sizeof(Record)) {
        return std::nullopt;
    }
    Record record{};
    std::memcpy(&record, bytes.data(), sizeof record);
    return record;
}

/// The data behind the fixed part, value by value. What lies beyond the end reads as zero or empty, and is remembered.
class RecordReader {
public:
    explicit RecordReader(RecordBytes data) : rest_(data) {}

    double float64();
    std::int64_t int64();
    /// A text field of this size, up to its first zero.
    std::string text(std::size_t fieldBytes);

    /// Whether all that was read was there.
    bool isWhole() const { return whole_; }

private:
    RecordBytes take(std::size_t size);

    RecordBytes rest_;
    bool whole_ = true;
};

/// The characters of a field up to its first zero, or all of them.
std::string textOfField(RecordBytes field);
