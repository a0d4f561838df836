// engine/sample_stream.cpp
#include "engine/sample_stream.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "core/log.h"

static_assert(sizeof(Sample) == 96);

namespace {

constexpr std::size_t firstRingSize = 8;

} // namespace

SampleStream::SampleStream(const SampleStream& other) {
    *this = other;
}

SampleStream& SampleStream::operator=(const SampleStream& other) {
    if (this != &other) {
        clear();
        for (std::size_t i = 0; i < other.size_; ++i) {
            pushBack(other[i]);
        }
    }
    return *this;
}

SampleStream::SampleStream(SampleStream&& other) noexcept
    : ring_(std::move(other.ring_)), first_(std::exchange(other.first_, nullptr)), head_(std::exchange(other.head_, 0)),
      size_(std::exchange(other.size_, 0)) {}

SampleStream& SampleStream::operator=(SampleStream&& other) noexcept {
    // The blocks are swapped, not dropped: records move within their table all the time.
    std::swap(ring_, other.ring_);
    std::swap(first_, other.first_);
    std::swap(head_, other.head_);
    std::swap(size_, other.size_);
    if (this != &other) {
        other.clear();
    }
    return *this;
}

Sample* SampleStream::firstOrLog(const char* function) {
    if (empty()) {
        log(fmt::format("{} empty sz?", function));
        return nullptr;
    }
    return &(*this)[0];
}

void SampleStream::makeRoom() {
    if (size_ < ring_.size()) {
        return;
    }
    std::rotate(ring_.begin(), ring_.begin() + static_cast<std::ptrdiff_t>(head_), ring_.end());
    head_ = 0;
    ring_.resize(std::max(firstRingSize, 2 * ring_.size()));
}

Sample& SampleStream::blockAt(std::size_t index) {
    std::unique_ptr<Sample>& block = ring_[place(index)];
    if (!block) {
        block = std::make_unique<Sample>();
    }
    return *block;
}

void SampleStream::findFirst() {
    first_ = empty() ? nullptr : ring_[head_].get();
}

void SampleStream::pushBack(const Sample& sample) {
    makeRoom();
    blockAt(size_) = sample;
    ++size_;
    findFirst();
}

void SampleStream::pushFront(const Sample& sample) {
    makeRoom();
    // The place before the first is the last of the ring: the block is made before anything moves.
    blockAt(ring_.size() - 1) = sample;
    head_ = static_cast<std::uint32_t>(place(ring_.size() - 1));
    ++size_;
    findFirst();
}

void SampleStream::insert(std::size_t index, const Sample& sample) {
    pushBack(sample);
    for (std::size_t i = size_ - 1; i > index; --i) {
        std::swap(ring_[place(i)], ring_[place(i - 1)]);
    }
    findFirst();
}

void SampleStream::popFront() {
    if (!empty()) {
        head_ = static_cast<std::uint32_t>(place(1));
        --size_;
        findFirst();
    }
}

void SampleStream::popBack() {
    if (!empty()) {
        --size_;
        findFirst();
    }
}

void SampleStream::erase(std::size_t index) {
    for (std::size_t i = index; i + 1 < size_; ++i) {
        std::swap(ring_[place(i)], ring_[place(i + 1)]);
    }
    popBack();
}

void SampleStream::clear() {
    head_ = 0;
    size_ = 0;
    findFirst();
}
