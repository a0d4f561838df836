// sim/transport/record_stream.h
// Cuts the bytes that come from the simulator into records, and keeps the whole ones until they are dispatched.
// Without locks: a RecordStream belongs to the receiver, a RecordBatch to whoever has it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Whole records in their order, each aligned for 8 bytes. Emptied, it keeps its memory for the next ones, unless there
/// was a jam.
class RecordBatch {
public:
    /// A record as its size field says, of 12 bytes at least.
    void append(std::string_view record);
    /// Takes over all records of another batch, which is empty then.
    void take(RecordBatch& other);
    void clear();

    bool empty() const { return words_.empty(); }
    /// What the records take, with what aligns them.
    std::size_t bytes() const { return words_.size() * sizeof(std::uint64_t); }

    /// Runs visit(char* record, std::uint32_t recordBytes) for each of them. It may write into the record.
    template <typename Visit>
    void forEach(Visit visit) {
        for (std::size_t at = 0; at < words_.size();) {
            char* const record = reinterpret_cast<char*>(&words_[at]);
            const std::uint32_t size = sizeOf({record, sizeof(std::uint64_t)});
            at += wordsFor(size);
            visit(record, size);
        }
    }

    /// The size field at the head of a record.
    static std::uint32_t sizeOf(std::string_view record);

private:
    static constexpr std::size_t maxKeptBytes = std::size_t{1} << 20;

    static std::size_t wordsFor(std::size_t bytes);

    std::vector<std::uint64_t> words_;
};

class RecordStream {
public:
    explicit RecordStream(std::size_t maxRecordBytes) : maxRecordBytes_(maxRecordBytes) {}

    /// Takes the next bytes of the stream, and appends the records that have become whole. False from the first record
    /// on whose size cannot be: below its own head, or above the limit. What follows such a size means nothing any
    /// more.
    bool append(std::string_view bytes, RecordBatch& whole);

private:
    const std::size_t maxRecordBytes_;
    std::string begun_; // the record that is not whole yet
    bool sound_ = true;
};
