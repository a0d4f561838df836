// engine/sample_stream.h
// The samples that an aircraft is still to reach. Engine thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "feed/feed_record.h"

/// A ring of samples. While a leg is planned element 0 is the sample flown from and element 1 the next target; the
/// planning removes element 0, so that in flight element 0 is the target of the present leg. The blocks are made when
/// the ring first reaches them and used again afterwards: a stream that stays within its ring allocates nothing. A
/// reference stays good until its element is removed, also when the ring grows.
class SampleStream {
public:
    SampleStream() = default;
    /// The other one is empty afterwards.
    SampleStream(SampleStream&& other) noexcept;
    SampleStream& operator=(SampleStream&& other) noexcept;
    SampleStream(const SampleStream& other);
    SampleStream& operator=(const SampleStream& other);
    ~SampleStream() = default;

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    /// The index must be below size().
    Sample& operator[](std::size_t index) { return index == 0 ? *first_ : *ring_[place(index)]; }
    const Sample& operator[](std::size_t index) const { return index == 0 ? *first_ : *ring_[place(index)]; }

    /// Element 0, or nothing, with the log line "{} empty sz?", when there is none; `function` is the caller's name.
    Sample* firstOrLog(const char* function);

    void pushBack(const Sample& sample);
    void pushFront(const Sample& sample);
    /// Inserts before the element at `index`, which is at most size().
    void insert(std::size_t index, const Sample& sample);
    /// Does nothing on an empty stream.
    void popFront();
    void popBack();
    /// Removes the element at `index`, which is below size().
    void erase(std::size_t index);
    void clear();

private:
    std::size_t place(std::size_t index) const { return (head_ + index) & (ring_.size() - 1); }
    void makeRoom();
    Sample& blockAt(std::size_t index);
    /// After each change.
    void findFirst();

    std::vector<std::unique_ptr<Sample>> ring_; // its size is a power of two, or 0
    Sample* first_ = nullptr;                   // element 0, which each slot looks at; null when there is none
    std::uint32_t head_ = 0;
    std::uint32_t size_ = 0;
};
