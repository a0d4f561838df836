// sim/transport/record_stream.cpp
#include "sim/transport/record_stream.h"

#include <algorithm>
#include <cstring>

#include "sim/transport/wire_format.h"

std::uint32_t RecordBatch::sizeOf(std::string_view record) {
    std::uint32_t size = 0;
    for (std::size_t i = 0; i < recordSizeBytes; ++i) {
        size |= std::uint32_t{static_cast<unsigned char>(record[i])} << (8 * i);
    }
    return size;
}

std::size_t RecordBatch::wordsFor(std::size_t bytes) {
    return (bytes + sizeof(std::uint64_t) - 1) / sizeof(std::uint64_t);
}

void RecordBatch::append(std::string_view record) {
    const std::size_t begin = words_.size();
    words_.resize(begin + wordsFor(record.size()));
    std::memcpy(&words_[begin], record.data(), record.size());
}

void RecordBatch::take(RecordBatch& other) {
    if (words_.empty()) {
        words_.swap(other.words_);
        return;
    }
    words_.insert(words_.end(), other.words_.begin(), other.words_.end());
    other.clear();
}

void RecordBatch::clear() {
    if (words_.capacity() * sizeof(std::uint64_t) > maxKeptBytes) {
        std::vector<std::uint64_t>().swap(words_);
    }
    words_.clear();
}

bool RecordStream::append(std::string_view bytes, RecordBatch& whole) {
    while (sound_ && !bytes.empty()) {
        const bool sizeKnown = begun_.size() >= recordSizeBytes;
        const std::size_t wanted = sizeKnown ? RecordBatch::sizeOf(begun_) : recordSizeBytes;
        const std::size_t taken = std::min(wanted - begun_.size(), bytes.size());
        begun_.append(bytes.substr(0, taken));
        bytes.remove_prefix(taken);
        if (begun_.size() < wanted) {
            continue;
        }
        if (sizeKnown) {
            whole.append(begun_);
            begun_.clear();
        } else {
            const std::size_t size = RecordBatch::sizeOf(begun_);
            sound_ = size >= recordHeadBytes && size <= maxRecordBytes_;
        }
    }
    return sound_;
}
