// rig/world/data_definition.cpp
#include "rig/world/data_definition.h"

#include <bit>
#include <cmath>

namespace rig {

namespace {

/// No variable of an aircraft means anything beyond this, in whatever unit.
constexpr double largestValue = 1e9;

struct DataType {
    SIMCONNECT_DATATYPE type;
    std::size_t bytes; ///< 0: as long as the text
    bool text;
};

constexpr DataType dataTypes[] = {
    {SIMCONNECT_DATATYPE_INT32, 4, false},      {SIMCONNECT_DATATYPE_INT64, 8, false},
    {SIMCONNECT_DATATYPE_FLOAT32, 4, false},    {SIMCONNECT_DATATYPE_FLOAT64, 8, false},
    {SIMCONNECT_DATATYPE_STRING8, 8, true},     {SIMCONNECT_DATATYPE_STRING32, 32, true},
    {SIMCONNECT_DATATYPE_STRING64, 64, true},   {SIMCONNECT_DATATYPE_STRING128, 128, true},
    {SIMCONNECT_DATATYPE_STRING256, 256, true}, {SIMCONNECT_DATATYPE_STRING260, 260, true},
    {SIMCONNECT_DATATYPE_STRINGV, 0, true},
};

const DataType* dataTypeOf(DWORD type) {
    for (const DataType& known : dataTypes) {
        if (known.type == type) {
            return &known;
        }
    }
    return nullptr;
}

bool isOfPosition(std::string_view variable) {
    constexpr std::string_view positionVariables[] = {
        "PLANE LATITUDE", "PLANE LONGITUDE", "PLANE PITCH DEGREES", "PLANE BANK DEGREES", "PLANE HEADING DEGREES TRUE",
        "PLANE ALTITUDE", "VERTICAL SPEED",  "AIRSPEED TRUE",
    };
    for (const std::string_view known : positionVariables) {
        if (known == variable) {
            return true;
        }
    }
    return false;
}

void appendNumber(double value, const DataType& type, std::string& to) {
    switch (type.type) {
    case SIMCONNECT_DATATYPE_FLOAT64: appendLittleEndian(to, std::bit_cast<std::uint64_t>(value), type.bytes); break;
    case SIMCONNECT_DATATYPE_FLOAT32:
        appendLittleEndian(to, std::bit_cast<std::uint32_t>(static_cast<float>(value)), type.bytes);
        break;
    default: appendLittleEndian(to, static_cast<std::uint64_t>(std::llround(value)), type.bytes); break;
    }
}

/// A text that fills its field has no zero behind it.
void appendText(std::string_view value, const DataType& type, std::string& to) {
    if (type.bytes == 0) {
        to += value;
        to += '\0';
        return;
    }
    value = value.substr(0, type.bytes);
    to += value;
    to.append(type.bytes - value.size(), '\0');
}

std::uint64_t littleEndian(std::string_view bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    }
    return value;
}

double numberFrom(std::string_view bytes, SIMCONNECT_DATATYPE type) {
    const std::uint64_t bits = littleEndian(bytes);
    switch (type) {
    case SIMCONNECT_DATATYPE_FLOAT64: return std::bit_cast<double>(bits);
    case SIMCONNECT_DATATYPE_FLOAT32: return std::bit_cast<float>(static_cast<std::uint32_t>(bits));
    case SIMCONNECT_DATATYPE_INT32: return static_cast<std::int32_t>(static_cast<std::uint32_t>(bits));
    default: return static_cast<double>(static_cast<std::int64_t>(bits));
    }
}

} // namespace

void appendLittleEndian(std::string& to, std::uint64_t value, std::size_t byteCount) {
    for (std::size_t i = 0; i < byteCount; ++i) {
        to += static_cast<char>(value >> (8 * i) & 0xFF);
    }
}

SIMCONNECT_EXCEPTION DataDefinition::add(const AddToDefinitionRequest& request) {
    const DataType* type = dataTypeOf(request.datumType);
    if (type == nullptr) {
        return SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE;
    }
    const NumberVariable* number = numberVariableNamed(request.datumName);
    const TextVariable* text = textVariableNamed(request.datumName);
    if (number == nullptr && text == nullptr) {
        return SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED;
    }
    if (type->text != (text != nullptr)) {
        return SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE;
    }
    const std::optional<double> factor = number == nullptr ? 1.0 : unitsPerStored(*number, request.unitsName);
    if (!factor) {
        return SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED;
    }
    data_.push_back({number, text, *factor, type->type, number != nullptr && isOfPosition(number->name)});
    return SIMCONNECT_EXCEPTION_NONE;
}

void DataDefinition::appendValues(const ObjectView& view, std::string& to) const {
    for (const Datum& datum : data_) {
        const DataType& type = *dataTypeOf(datum.type);
        if (datum.text != nullptr) {
            appendText(datum.text->read(view), type, to);
        } else {
            appendNumber(datum.number->read(view) * datum.unitsPerStored, type, to);
        }
    }
}

/// False when the element has not the size of the definition.
bool DataDefinition::readElement(std::string_view element, std::vector<NamedValue>& values) const {
    for (const Datum& datum : data_) {
        const std::size_t bytes = dataTypeOf(datum.type)->bytes;
        if (element.size() < bytes) {
            return false;
        }
        if (datum.number != nullptr) {
            const double value = numberFrom(element.substr(0, bytes), datum.type);
            values.push_back({datum.number->name, value / datum.unitsPerStored, datum.ofPosition});
        }
        element.remove_prefix(bytes);
    }
    return element.empty();
}

SIMCONNECT_EXCEPTION DataDefinition::write(std::string_view element, WorldObject& object,
                                           std::vector<NamedValue>& written) const {
    const std::size_t first = written.size();
    const SIMCONNECT_EXCEPTION fault = readWritable(element, written);
    if (fault != SIMCONNECT_EXCEPTION_NONE) {
        written.erase(written.begin() + static_cast<std::ptrdiff_t>(first), written.end());
        return fault;
    }
    for (std::size_t i = 0; i < data_.size(); ++i) {
        data_[i].number->write(object, written[first + i].value);
    }
    return SIMCONNECT_EXCEPTION_NONE;
}

/// Appends the values if they are fit to be written; why not, otherwise.
SIMCONNECT_EXCEPTION DataDefinition::readWritable(std::string_view element, std::vector<NamedValue>& values) const {
    for (const Datum& datum : data_) {
        if (datum.number == nullptr || datum.number->write == nullptr) {
            return SIMCONNECT_EXCEPTION_DATA_ERROR;
        }
    }
    const std::size_t first = values.size();
    if (!readElement(element, values)) {
        return SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE;
    }
    for (std::size_t i = first; i < values.size(); ++i) {
        if (!std::isfinite(values[i].value)) {
            return SIMCONNECT_EXCEPTION_DATA_ERROR;
        }
        if (std::abs(values[i].value) > largestValue) {
            return SIMCONNECT_EXCEPTION_OUT_OF_BOUNDS;
        }
    }
    return SIMCONNECT_EXCEPTION_NONE;
}

} // namespace rig
