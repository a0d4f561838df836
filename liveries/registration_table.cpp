// liveries/registration_table.cpp
#include "liveries/registration_table.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace {

constexpr TextHash hashOf;

/// Two slots in three hold a row at most, so that the walk to a free one stays short.
std::size_t slotsFor(std::size_t rows) {
    constexpr std::size_t leastSlots = 16;
    return std::bit_ceil(std::max(leastSlots, rows + rows / 2));
}

} // namespace

RegistrationTable::Slot RegistrationTable::slotFor(std::uint64_t hash, std::size_t row) {
    // The lower bits of the hash value choose the place, so the tag is its highest byte.
    return static_cast<Slot>(hash >> 56) << tagShift | static_cast<Slot>(row);
}

bool RegistrationTable::insert(std::string_view reg, const DbaseRecord& record) {
    if (rows_.size() == rowMask) {
        throw std::length_error("RegistrationTable: too many registrations");
    }
    if (slotsFor(rows_.size() + 1) > slots_.size()) {
        rebuildSlots(slotsFor(rows_.size() + 1));
    }
    const std::uint64_t hash = hashOf(reg);
    Slot& slot = slots_[slotOf(reg, hash)];
    if (slot != freeSlot) {
        return false;
    }
    slot = slotFor(hash, rows_.size());
    const std::uint32_t airl = numberOfCode(record.airl);
    const std::uint32_t opr = record.opr == record.airl ? airl : numberOfCode(record.opr);
    rows_.push_back({std::string(reg), airl, numberOfCode(record.type), opr, record.cargo});
    return true;
}

std::optional<DbaseRecord> RegistrationTable::find(std::string_view reg) const {
    const auto place = placeOf(reg);
    if (!place) {
        return std::nullopt;
    }
    const Row& row = rows_[*place];
    return DbaseRecord{codes_[row.airl], codes_[row.type], codes_[row.opr], row.cargo};
}

std::optional<std::size_t> RegistrationTable::placeOf(std::string_view reg) const {
    if (slots_.empty()) {
        return std::nullopt;
    }
    const Slot slot = slots_[slotOf(reg, hashOf(reg))];
    return slot == freeSlot ? std::nullopt : std::optional<std::size_t>(slot & rowMask);
}

void RegistrationTable::clear() {
    *this = RegistrationTable();
}

std::size_t RegistrationTable::slotOf(std::string_view reg, std::uint64_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t place = hash & mask;; place = (place + 1) & mask) {
        const Slot slot = slots_[place];
        if (slot == freeSlot) {
            return place;
        }
        const std::size_t row = slot & rowMask;
        if (slot == slotFor(hash, row) && rows_[row].reg == reg) {
            return place;
        }
    }
}

void RegistrationTable::rebuildSlots(std::size_t count) {
    slots_.assign(count, freeSlot);
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        const std::uint64_t hash = hashOf(rows_[row].reg);
        slots_[slotOf(rows_[row].reg, hash)] = slotFor(hash, row);
    }
}

std::uint32_t RegistrationTable::numberOfCode(std::string_view code) {
    if (const auto known = codeNumbers_.find(code); known != codeNumbers_.end()) {
        return known->second;
    }
    const auto number = static_cast<std::uint32_t>(codes_.size());
    codes_.push_back(codeNumbers_.emplace(code, number).first->first);
    return number;
}
