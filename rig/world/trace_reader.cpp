// rig/world/trace_reader.cpp
#include "rig/world/trace_reader.h"

#include <bit>
#include <limits>
#include <optional>

#include <fmt/format.h>

#include "rig/world/variable_length.h"

namespace rig {

namespace {

constexpr int mostVariableLengthBytes = 10;

/// Reads values one after the other; nothing when there is no such value.
class BodyReader {
public:
    explicit BodyReader(std::string_view bytes) : left_(bytes) {}

    std::optional<std::uint8_t> byte() {
        if (left_.empty()) {
            return std::nullopt;
        }
        const auto value = static_cast<std::uint8_t>(left_.front());
        left_.remove_prefix(1);
        return value;
    }
    std::optional<std::uint64_t> variableLength() {
        std::uint64_t value = 0;
        for (int i = 0; i < mostVariableLengthBytes; ++i) {
            const std::optional<std::uint8_t> part = byte();
            if (!part) {
                return std::nullopt;
            }
            value |= std::uint64_t{*part & 0x7FU} << (7 * i);
            if ((*part & 0x80) == 0) {
                return value;
            }
        }
        return std::nullopt;
    }
    std::optional<std::uint64_t> fixed(std::size_t bytes) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i) {
            const std::optional<std::uint8_t> part = byte();
            if (!part) {
                return std::nullopt;
            }
            value |= std::uint64_t{*part} << (8 * i);
        }
        return value;
    }
    std::optional<std::string_view> text() {
        const std::optional<std::uint64_t> size = variableLength();
        if (!size || *size > left_.size()) {
            return std::nullopt;
        }
        const std::string_view text = left_.substr(0, *size);
        left_.remove_prefix(*size);
        return text;
    }
    bool atEnd() const { return left_.empty(); }

private:
    std::string_view left_;
};

/// Differences of a damaged file may run over.
std::int64_t sum(std::int64_t value, std::uint64_t difference) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(value) +
                                     static_cast<std::uint64_t>(unfolded(difference)));
}

Position positionFrom(const std::array<std::int64_t, positionValues>& steps) {
    std::array<double, positionValues> values{};
    for (std::size_t i = 0; i < positionValues; ++i) {
        values[i] = steps[i] == noNumberSteps ? std::numeric_limits<double>::quiet_NaN()
                                              : static_cast<double>(steps[i]) * traceSteps[i];
    }
    return {values[0], values[1], values[2], values[3], values[4], values[5], values[6], values[7]};
}

} // namespace

TraceReader::TraceReader(std::istream& from) : from_(from) {
    std::array<char, traceHeadBytes> head{};
    from_.read(head.data(), head.size());
    read_ = static_cast<std::uint64_t>(from_.gcount());
    const std::string_view text(head.data(), read_);
    if (!text.starts_with(traceMagic)) {
        fail("no trace");
    }
    if (text.substr(traceMagic.size()) != std::string_view("\1\0\0\0", 4)) {
        fail("a trace of another version");
    }
}

void TraceReader::fail(std::string_view what) const {
    throw TraceError(fmt::format("byte {}: {}", at_, what));
}

/// False at the end of the file.
bool TraceReader::readRecord(std::uint8_t& tag) {
    at_ = read_;
    const auto byte = [this]() -> std::optional<std::uint8_t> {
        const int got = from_.get();
        if (got == std::istream::traits_type::eof()) {
            return std::nullopt;
        }
        ++read_;
        return static_cast<std::uint8_t>(got);
    };
    const std::optional<std::uint8_t> first = byte();
    if (!first) {
        return false;
    }
    tag = *first;
    std::uint64_t size = 0;
    for (int shift = 0;; shift += 7) {
        const std::optional<std::uint8_t> part = byte();
        if (!part) {
            endedEarly_ = true;
            return false;
        }
        size |= std::uint64_t{*part & 0x7FU} << shift;
        if (size > maxTraceRecordBytes || shift > 21) {
            fail("a record of a size that cannot be");
        }
        if ((*part & 0x80) == 0) {
            break;
        }
    }
    body_.resize(size);
    from_.read(body_.data(), static_cast<std::streamsize>(size));
    read_ += static_cast<std::uint64_t>(from_.gcount());
    endedEarly_ = static_cast<std::uint64_t>(from_.gcount()) != size;
    return !endedEarly_;
}

bool TraceReader::next(TraceItem& item) {
    std::uint8_t tag = 0;
    while (readRecord(tag)) {
        if (tag == static_cast<std::uint8_t>(TraceTag::frame)) {
            item = frameFrom(body_);
            return true;
        }
        if (tag == static_cast<std::uint8_t>(TraceTag::event)) {
            item = eventFrom(body_);
            return true;
        }
    }
    return false;
}

TraceFrame TraceReader::frameFrom(std::string_view bytes) {
    BodyReader body(bytes);
    const auto need = [this](auto value) {
        if (!value) {
            fail("a frame that is too short");
        }
        return *value;
    };
    simulated_ = sum(simulated_, need(body.variableLength()));
    elapsed_ = sum(elapsed_, need(body.variableLength()));
    for (std::uint64_t gone = need(body.variableLength()); gone > 0; --gone) {
        objects_.erase(static_cast<DWORD>(need(body.variableLength())));
    }
    for (std::uint64_t changed = need(body.variableLength()); changed > 0; --changed) {
        Values& values = objects_[static_cast<DWORD>(need(body.variableLength()))];
        if (objects_.size() > maxTraceObjects) {
            fail("more objects than a world holds");
        }
        const unsigned mask = need(body.byte());
        for (std::size_t i = 0; i < positionValues; ++i) {
            if (mask >> i & 1) {
                values[i] = sum(values[i], need(body.variableLength()));
            }
        }
    }
    if (!body.atEnd()) {
        fail("a frame that is too long");
    }
    TraceFrame frame{
        static_cast<double>(simulated_) * traceTimeStep, static_cast<double>(elapsed_) * traceTimeStep, {}};
    frame.objects.reserve(objects_.size());
    for (const auto& [id, values] : objects_) {
        frame.objects.push_back({id, positionFrom(values)});
    }
    return frame;
}

TraceEvent TraceReader::eventFrom(std::string_view bytes) const {
    BodyReader body(bytes);
    const auto need = [this](auto value) {
        if (!value) {
            fail("an event that is too short");
        }
        return *value;
    };
    TraceEvent event;
    event.kind = static_cast<TraceEventKind>(need(body.byte()));
    event.objectId = static_cast<DWORD>(need(body.variableLength()));
    event.value = std::bit_cast<double>(need(body.fixed(sizeof event.value)));
    event.name = need(body.text());
    event.detail = need(body.text());
    if (!body.atEnd()) {
        fail("an event that is too long");
    }
    return event;
}

} // namespace rig
