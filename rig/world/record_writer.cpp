// rig/world/record_writer.cpp
#include "rig/world/record_writer.h"

#include <bit>
#include <utility>

#include "rig/world/data_definition.h"
#include "sim/transport/wire_format.h"

namespace rig {

namespace {

/// What the simulator puts into the version field of a record.
constexpr DWORD recordVersion = 5;

} // namespace

void RecordWriter::begin(SIMCONNECT_RECV_ID id) {
    begun_ = bytes_.size();
    dword(0); // the size, once it is known
    dword(recordVersion);
    dword(id);
}

void RecordWriter::dword(DWORD value) {
    appendLittleEndian(bytes_, value, sizeof value);
}

void RecordWriter::float32(float value) {
    dword(std::bit_cast<std::uint32_t>(value));
}

void RecordWriter::text(std::string_view value, std::size_t fieldBytes) {
    value = value.substr(0, fieldBytes - 1);
    bytes_ += value;
    bytes_.append(fieldBytes - value.size(), '\0');
}

void RecordWriter::end() {
    std::string size;
    appendLittleEndian(size, bytes_.size() - begun_, recordSizeBytes);
    bytes_.replace(begun_, recordSizeBytes, size);
}

std::string RecordWriter::take() {
    return std::exchange(bytes_, {});
}

} // namespace rig
