// liveries/registration_table.h
// The table of real aircraft by registration: half a million rows in two blocks of memory, so that a look-up is one
// step into each. Filled by the reading of the data files before any other thread looks; afterwards any thread may
// read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/text_hash.h"

/// What is known of one real aircraft. The texts are good until the table is cleared.
struct DbaseRecord {
    std::string_view airl; ///< airline code
    std::string_view type; ///< type code
    std::string_view opr;  ///< operator code
    bool cargo = false;
};

class RegistrationTable {
public:
    /// False, and nothing done, when the registration is there already.
    bool insert(std::string_view reg, const DbaseRecord& record);
    std::optional<DbaseRecord> find(std::string_view reg) const;
    /// The place of a registration in the order in which they were inserted.
    std::optional<std::size_t> placeOf(std::string_view reg) const;

    std::size_t size() const { return rows_.size(); }
    /// Gives the memory back too.
    void clear();

private:
    /// Codes are few and stand once, in codes_; a row holds their numbers.
    struct Row {
        std::string reg;
        std::uint32_t airl = 0;
        std::uint32_t type = 0;
        std::uint32_t opr = 0;
        bool cargo = false;
    };
    /// A place in the hash: a row's number, and above it a byte of the hash value, which tells nearly all other
    /// registrations without a look at their rows.
    using Slot = std::uint32_t;
    static constexpr int tagShift = 24;
    static constexpr Slot rowMask = (Slot{1} << tagShift) - 1;
    static constexpr Slot freeSlot = 0xffffffff;

    static Slot slotFor(std::uint64_t hash, std::size_t row);
    /// The slot of the registration, or the free one where it would go.
    std::size_t slotOf(std::string_view reg, std::uint64_t hash) const;
    void rebuildSlots(std::size_t count);
    std::uint32_t numberOfCode(std::string_view code);

    std::vector<Row> rows_;
    std::vector<Slot> slots_; // a power of two of them, or none
    std::vector<std::string_view> codes_;
    std::unordered_map<std::string, std::uint32_t, TextHash, std::equal_to<>> codeNumbers_; // owns the codes' texts
};
