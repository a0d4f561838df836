// rig/traffic/recording.cpp
#include "rig/traffic/recording.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include <fmt/format.h>

#include "core/number_text.h"
#include "platform/files.h"
#include "rig/traffic/gzip_text.h"

namespace rig {

namespace {

// Alike in all forms of the feed.
constexpr std::size_t latField = 2;
constexpr std::size_t lonField = 3;
constexpr std::size_t timestampField = 14;

/// A time stamp that is further ahead than this is a fault of its row.
constexpr double longestSilence = 3600;

std::string_view fieldOf(std::string_view line, std::size_t index) {
    for (std::size_t i = 0; i < index; ++i) {
        const std::size_t comma = line.find(',');
        if (comma == std::string_view::npos) {
            return {};
        }
        line.remove_prefix(comma + 1);
    }
    return line.substr(0, line.find(','));
}

/// The first time stamp that any row has.
double firstTimestamp(const std::vector<RecordedRow>& rows) {
    for (const RecordedRow& row : rows) {
        if (row.kind == DatagramKind::traffic) {
            if (const std::optional<double> time = timestampOf(row.text)) {
                return *time;
            }
        }
    }
    return 0;
}

void setDueTimes(std::vector<RecordedRow>& rows) {
    double latest = firstTimestamp(rows);
    for (RecordedRow& row : rows) {
        const std::optional<double> own = row.kind == DatagramKind::traffic ? timestampOf(row.text) : std::nullopt;
        if (own && *own - latest < longestSilence) {
            latest = std::max(latest, *own);
        }
        row.due = latest;
    }
}

std::size_t decimalsOf(std::string_view number) {
    const std::size_t point = number.find('.');
    return point == std::string_view::npos ? 0 : number.size() - point - 1;
}

} // namespace

std::optional<double> timestampOf(std::string_view line) {
    return parseDouble(fieldOf(line, timestampField));
}

std::optional<LatLon> positionOf(std::string_view line) {
    const std::optional<double> lat = parseDouble(fieldOf(line, latField));
    const std::optional<double> lon = parseDouble(fieldOf(line, lonField));
    if (!lat || !lon) {
        return std::nullopt;
    }
    return LatLon{*lat, *lon};
}

std::string movedInTime(std::string_view line, double seconds) {
    const std::string_view field = fieldOf(line, timestampField);
    const std::optional<double> time = parseDouble(field);
    if (!time || seconds == 0) {
        return std::string(line);
    }
    const auto begin = static_cast<std::size_t>(field.data() - line.data());
    return fmt::format("{}{:.{}f}{}", line.substr(0, begin), *time + seconds, decimalsOf(field),
                       line.substr(begin + field.size()));
}

Recording recordingFrom(std::string_view text) {
    Recording recording;
    for (const std::string_view line : linesOf(text)) {
        if (!line.empty()) {
            const DatagramKind kind = line.front() == '{' ? DatagramKind::weather : DatagramKind::traffic;
            recording.rows.push_back({std::string(line), kind, 0});
        }
    }
    setDueTimes(recording.rows);
    return recording;
}

Recording loadRecording(const std::filesystem::path& path) {
    Recording recording = recordingFrom(readText(path));
    if (recording.rows.empty()) {
        throw std::runtime_error(fmt::format("{} holds no row", platform::utf8FromPath(path)));
    }
    return recording;
}

} // namespace rig
