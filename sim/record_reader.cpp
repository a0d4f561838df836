// sim/record_reader.cpp
#include "sim/record_reader.h"

#include <algorithm>
#include <iterator>

namespace {

template <typename Value>
Value valueOf(RecordBytes bytes) {
    return recordFrom<Value>(bytes).value_or(Value{});
}

} // namespace

double RecordReader::float64() {
    return valueOf<double>(take(sizeof(double)));
}

std::int64_t RecordReader::int64() {
    return valueOf<std::int64_t>(take(sizeof(std::int64_t)));
}

std::string RecordReader::text(std::size_t fieldBytes) {
    return textOfField(take(fieldBytes));
}

RecordBytes RecordReader::take(std::size_t size) {
    if (rest_.size() < size) {
        whole_ = false;
        rest_ = {};
        return {};
    }
    const RecordBytes taken = rest_.first(size);
    rest_ = rest_.subspan(size);
    return taken;
}

std::string textOfField(RecordBytes field) {
    const auto end = std::find(field.begin(), field.end(), std::byte{0});
    std::string text;
    std::transform(field.begin(), end, std::back_inserter(text), [](std::byte b) { return static_cast<char>(b); });
    return text;
}
