// rig/traffic/recording.h
// A recorded piece of sky: the datagrams that a RealTraffic client has sent, one a row, as they were received. A row
// that begins with a brace is a weather message, any other one a traffic line. Value types.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/geography.h"

namespace rig {

enum class DatagramKind { traffic, weather };

struct RecordedRow {
    std::string text;
    DatagramKind kind = DatagramKind::traffic;
    /// When it was received, seconds since 1970. Rows carry no such time; but none can come before a position that it
    /// or a row above it tells, so the latest of their time stamps it is.
    double due = 0;
};

struct Recording {
    std::vector<RecordedRow> rows;

    double begin() const { return rows.empty() ? 0 : rows.front().due; }
    double end() const { return rows.empty() ? 0 : rows.back().due; }
};

/// Rows without text are left out.
Recording recordingFrom(std::string_view text);

/// Throws std::runtime_error, with a text for the user, when the file cannot be read or holds no row.
Recording loadRecording(const std::filesystem::path& path);

// Of a traffic line; nothing where there is none.

std::optional<double> timestampOf(std::string_view line);
std::optional<LatLon> positionOf(std::string_view line);

/// The line with its time stamp moved, with as many decimals as it had; unchanged when it has none.
std::string movedInTime(std::string_view line, double seconds);

} // namespace rig
