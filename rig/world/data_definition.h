// rig/world/data_definition.h
// A client's own list of variables: what it gets in an answer, or puts into a write, and in which form.
// A definition belongs to its client's session.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "rig/world/requests.h"
#include "rig/world/sim_variables.h"

namespace rig {

/// Appends a number as its `byteCount` low bytes, the low one first.
void appendLittleEndian(std::string& to, std::uint64_t value, std::size_t byteCount);

class DataDefinition {
public:
    /// SIMCONNECT_EXCEPTION_NONE, or why the variable cannot be added: an unknown name or unit, a type that cannot hold
    /// it.
    SIMCONNECT_EXCEPTION add(const AddToDefinitionRequest& request);

    std::size_t count() const { return data_.size(); }

    /// Appends the aircraft's values in the order of the definition.
    void appendValues(const ObjectView& view, std::string& to) const;

    struct NamedValue {
        std::string_view name;
        double value;            ///< in the variable's stored unit
        bool ofPosition = false; ///< one of those that every frame of a trace holds
    };

    /// Puts the values of one element into the aircraft: all, or none. SIMCONNECT_EXCEPTION_NONE, or why none.
    /// `written` gets the variables with their values behind what it holds.
    SIMCONNECT_EXCEPTION write(std::string_view element, WorldObject& object, std::vector<NamedValue>& written) const;

private:
    struct Datum {
        const NumberVariable* number; ///< null for a text
        const TextVariable* text;     ///< null for a number
        double unitsPerStored;
        SIMCONNECT_DATATYPE type;
        bool ofPosition;
    };

    SIMCONNECT_EXCEPTION readWritable(std::string_view element, std::vector<NamedValue>& values) const;
    bool readElement(std::string_view element, std::vector<NamedValue>& values) const;

    std::vector<Datum> data_;
};

} // namespace rig
