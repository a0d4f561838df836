// rig/world/trace_writer.cpp
#include "rig/world/trace_writer.h"

#include <bit>
#include <cmath>
#include <ostream>

#include "rig/world/data_definition.h"
#include "rig/world/variable_length.h"

namespace rig {

namespace {

constexpr std::size_t bufferBytes = std::size_t{64} << 10;

std::int64_t inSteps(double value, double step) {
    const double steps = value / step;
    return std::isfinite(steps) && std::abs(steps) < mostTraceSteps ? std::llround(steps) : noNumberSteps;
}

/// The world's own times are numbers.
std::int64_t timeInSteps(double seconds) {
    const std::int64_t steps = inSteps(seconds, traceTimeStep);
    return steps == noNumberSteps ? 0 : steps;
}

std::array<double, positionValues> valuesOf(const Position& position) {
    return {position.lat,
            position.lon,
            position.pitchRad,
            position.bankRad,
            position.headingRad,
            position.altFeet,
            position.verticalFeetPerSecond,
            position.trueKnots};
}

void appendText(std::string& to, std::string_view text) {
    appendVariableLength(to, text.size());
    to += text;
}

} // namespace

TraceWriter::TraceWriter(std::ostream& to) : to_(to) {
    buffer_.reserve(bufferBytes);
    buffer_ += traceMagic;
    appendLittleEndian(buffer_, traceVersion, sizeof traceVersion);
}

TraceWriter::~TraceWriter() {
    flush();
}

void TraceWriter::beginFrame(double simulatedSeconds, double elapsedSeconds) {
    ++frame_;
    changed_.clear();
    changedCount_ = 0;
    body_.clear();
    const std::int64_t simulated = timeInSteps(simulatedSeconds);
    const std::int64_t elapsed = timeInSteps(elapsedSeconds);
    appendVariableLength(body_, folded(simulated - simulated_));
    appendVariableLength(body_, folded(elapsed - elapsed_));
    simulated_ = simulated;
    elapsed_ = elapsed;
}

void TraceWriter::object(DWORD id, const Position& position) {
    const auto [known, isNew] = objects_.try_emplace(id);
    known->second.frame = frame_;
    const std::array<double, positionValues> values = valuesOf(position);
    std::array<std::int64_t, positionValues> difference{};
    unsigned mask = 0;
    for (std::size_t i = 0; i < positionValues; ++i) {
        const std::int64_t steps = inSteps(values[i], traceSteps[i]);
        difference[i] = steps - known->second.values[i];
        known->second.values[i] = steps;
        mask |= difference[i] != 0 ? 1U << i : 0;
    }
    if (mask == 0 && !isNew) {
        return;
    }
    ++changedCount_;
    appendVariableLength(changed_, id);
    changed_ += static_cast<char>(mask);
    for (std::size_t i = 0; i < positionValues; ++i) {
        if (mask >> i & 1) {
            appendVariableLength(changed_, folded(difference[i]));
        }
    }
}

void TraceWriter::forgetGone(std::string& gone, std::uint64_t& goneCount) {
    for (auto it = objects_.begin(); it != objects_.end();) {
        if (it->second.frame == frame_) {
            ++it;
            continue;
        }
        appendVariableLength(gone, it->first);
        ++goneCount;
        it = objects_.erase(it);
    }
}

void TraceWriter::endFrame() {
    std::string gone;
    std::uint64_t goneCount = 0;
    forgetGone(gone, goneCount);
    appendVariableLength(body_, goneCount);
    body_ += gone;
    appendVariableLength(body_, changedCount_);
    body_ += changed_;
    record(TraceTag::frame, body_);
}

void TraceWriter::event(TraceEventKind kind, DWORD objectId, double value, std::string_view name,
                        std::string_view detail) {
    std::string body;
    body += static_cast<char>(kind);
    appendVariableLength(body, objectId);
    appendLittleEndian(body, std::bit_cast<std::uint64_t>(value), sizeof value);
    appendText(body, name);
    appendText(body, detail);
    record(TraceTag::event, body);
}

void TraceWriter::record(TraceTag tag, std::string_view body) {
    buffer_ += static_cast<char>(tag);
    appendVariableLength(buffer_, body.size());
    buffer_ += body;
    if (buffer_.size() >= bufferBytes) {
        flush();
    }
}

void TraceWriter::flush() {
    to_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    to_.flush();
    buffer_.clear();
}

} // namespace rig
