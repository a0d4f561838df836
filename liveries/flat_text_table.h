// liveries/flat_text_table.h
// Texts to values in two blocks of memory: for tables of ten thousands, where a node for each entry costs more than all
// else. Offers what an ordinary map does, but for removing; whatever is inserted may move the entries.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <stdexcept>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "core/text_hash.h"

/// The entries come in the order in which they were inserted.
template <typename Value, typename Hash = TextHash>
class FlatTextTable {
public:
    using value_type = std::pair<std::string_view, Value>;
    using iterator = typename std::pmr::vector<value_type>::iterator;
    using const_iterator = typename std::pmr::vector<value_type>::const_iterator;

    /// The texts of the keys are never given back one by one, so this should be memory that goes as a whole.
    explicit FlatTextTable(std::pmr::memory_resource* memory) : memory_(memory), entries_(memory), slots_(memory) {}
    FlatTextTable(const FlatTextTable&) = delete;
    FlatTextTable& operator=(const FlatTextTable&) = delete;
    FlatTextTable(FlatTextTable&&) noexcept = default;
    FlatTextTable& operator=(FlatTextTable&&) noexcept = default;
    ~FlatTextTable() = default;

    iterator begin() { return entries_.begin(); }
    iterator end() { return entries_.end(); }
    const_iterator begin() const { return entries_.begin(); }
    const_iterator end() const { return entries_.end(); }
    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    std::pmr::memory_resource* memory() const { return memory_; }

    /// Room for so many keys in all.
    void reserve(std::size_t keys) {
        if (2 * keys > slots_.size()) {
            makeSlots(keys);
        }
    }

    /// A new entry unless the key is there, and whether it is new. A new key is copied.
    template <typename... Args>
    std::pair<iterator, bool> try_emplace(std::string_view key, Args&&... args) {
        return insert(
            key, [this](std::string_view text) { return copyOf(text); }, std::forward<Args>(args)...);
    }

    /// The same for a key that stays where it is as long as the table.
    template <typename... Args>
    std::pair<iterator, bool> try_emplace_view(std::string_view key, Args&&... args) {
        return insert(
            key, [](std::string_view text) { return text; }, std::forward<Args>(args)...);
    }

    Value& operator[](std::string_view key) { return try_emplace(key).first->second; }

    const_iterator find(std::string_view key) const {
        if (slots_.empty()) {
            return end();
        }
        const Slot slot = slots_[placeOf(key, hashOf(key))];
        return slot.isFree() ? end() : begin() + slot.number - 1;
    }
    iterator find(std::string_view key) {
        return begin() + (std::as_const(*this).find(key) - std::as_const(*this).begin());
    }
    bool contains(std::string_view key) const { return find(key) != end(); }

    /// Throws std::out_of_range for a key that is not there.
    const Value& at(std::string_view key) const {
        const auto known = find(key);
        if (known == end()) {
            throw std::out_of_range("FlatTextTable: no such key");
        }
        return known->second;
    }

    /// Keeps the memory.
    void clear() {
        entries_.clear();
        std::fill(slots_.begin(), slots_.end(), Slot());
    }

private:
    struct Slot {
        std::uint32_t tag = 0;
        std::uint32_t number = 0; ///< of the entry, counted from 1

        bool isFree() const { return number == 0; }
    };

    static std::uint64_t hashOf(std::string_view key) { return Hash{}(key); }

    /// The lower bits of the hash value choose the place, the upper ones tell nearly all other keys without a look at
    /// them.
    static std::uint32_t tagOf(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32); }

    std::string_view keyOf(const Slot& slot) const { return entries_[slot.number - 1].first; }

    /// The slot of the key, or the free one where it would go; at least half of them are free.
    std::size_t placeOf(std::string_view key, std::uint64_t hash) const {
        const std::size_t mask = slots_.size() - 1;
        std::size_t place = hash & mask;
        while (!slots_[place].isFree() && (slots_[place].tag != tagOf(hash) || keyOf(slots_[place]) != key)) {
            place = (place + 1) & mask;
        }
        return place;
    }

    template <typename Keep, typename... Args>
    std::pair<iterator, bool> insert(std::string_view key, Keep keep, Args&&... args) {
        if (2 * (size() + 1) > slots_.size()) {
            makeSlots(2 * (size() + 1));
        }
        const std::uint64_t hash = hashOf(key);
        Slot& slot = slots_[placeOf(key, hash)];
        const bool isNew = slot.isFree();
        if (isNew) {
            entries_.emplace_back(std::piecewise_construct, std::forward_as_tuple(keep(key)),
                                  std::forward_as_tuple(std::forward<Args>(args)...));
            slot = {tagOf(hash), static_cast<std::uint32_t>(size())};
        }
        return {begin() + slot.number - 1, isNew};
    }

    void makeSlots(std::size_t keys) {
        constexpr std::size_t leastSlots = 8;
        const std::size_t slots = std::bit_ceil(std::max(leastSlots, 2 * keys));
        entries_.reserve(slots / 2); // first, for where memory is short the slots must still know the entries
        slots_.reserve(slots);
        slots_.assign(slots, {});
        std::uint32_t number = 0;
        for (const value_type& entry : entries_) {
            const std::uint64_t hash = hashOf(entry.first);
            slots_[placeOf(entry.first, hash)] = {tagOf(hash), ++number};
        }
    }

    std::string_view copyOf(std::string_view text) {
        char* const copy = static_cast<char*>(memory_->allocate(text.size() + 1, 1));
        std::copy(text.begin(), text.end(), copy);
        return {copy, text.size()};
    }

    std::pmr::memory_resource* memory_;
    std::pmr::vector<value_type> entries_;
    std::pmr::vector<Slot> slots_; // a power of two of them, or none
};
