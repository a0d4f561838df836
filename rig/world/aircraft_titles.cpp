// rig/world/aircraft_titles.cpp
#include "rig/world/aircraft_titles.h"

#include <optional>
#include <utility>

#include "core/number_text.h"
#include "core/text_files.h"
#include "core/text_parts.h"
#include "platform/files.h"
#include "rig/world/names.h"

namespace fs = std::filesystem;

namespace rig {

namespace {

std::string_view withoutComment(std::string_view text) {
    return trimmed(text.substr(0, text.find("//")));
}

std::string_view unquoted(std::string_view text) {
    const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return quoted ? text.substr(1, text.size() - 2) : text;
}

void takeNumber(std::string_view text, double factor, double& value) {
    if (const std::optional<double> number = parseDouble(withoutComment(text))) {
        value = *number * factor;
    }
}

bool isFlightSection(std::string_view section) {
    constexpr std::string_view begin = "fltsim.";
    return section.size() > begin.size() && sameName(section.substr(0, begin.size()), begin);
}

/// What the sections that all titles of a file share say.
void takeShared(std::string_view section, std::string_view key, std::string_view value, AircraftType& shared) {
    if (sameName(section, "General") && sameName(key, "atc_model")) {
        shared.model = unquoted(withoutComment(value));
    } else if (sameName(key, "static_cg_height")) {
        takeNumber(value, 1, shared.cgHeightFeet);
    } else if (sameName(key, "static_pitch")) {
        takeNumber(value, radiansPerDegree, shared.staticPitchRad);
    } else if (sameName(key, "wing_span")) {
        takeNumber(value, 1, shared.wingSpanFeet);
    }
}

} // namespace

void AircraftTitles::add(AircraftType type) {
    std::string title = type.title;
    types_.insert_or_assign(std::move(title), std::move(type));
}

void AircraftTitles::addLines(const std::vector<std::string>& lines) {
    AircraftType shared;
    std::vector<std::string> titles;
    std::string section;
    for (const std::string& line : lines) {
        const std::string_view text = trimmed(line);
        if (text.starts_with('[')) {
            section = text.substr(1, text.find(']') - 1);
            continue;
        }
        const std::size_t equals = text.find('=');
        if (text.starts_with(';') || equals == std::string_view::npos) {
            continue;
        }
        const std::string_view key = trimmed(text.substr(0, equals));
        const std::string_view value = trimmed(text.substr(equals + 1));
        if (isFlightSection(section) && sameName(key, "title") && !value.empty()) {
            titles.emplace_back(unquoted(value));
        }
        takeShared(section, key, value, shared);
    }
    for (std::string& title : titles) {
        AircraftType type = shared;
        type.title = std::move(title);
        add(std::move(type));
    }
}

void AircraftTitles::addFolder(const fs::path& folder) {
    std::error_code ignored;
    for (fs::recursive_directory_iterator it(folder, fs::directory_options::skip_permission_denied, ignored), end;
         it != end; it.increment(ignored)) {
        const fs::path& file = it->path();
        if (!sameName(platform::utf8FromPath(file.filename()), "aircraft.cfg") || !it->is_regular_file(ignored)) {
            continue;
        }
        std::vector<std::string> lines;
        const Charset charset = charsetOfFile(file);
        if (charset != Charset::none_found && readLines(charset, file, lines).empty()) {
            addLines(lines);
        }
    }
}

const AircraftType* AircraftTitles::find(std::string_view title) const {
    const auto found = types_.find(title);
    return found == types_.end() ? nullptr : &found->second;
}

} // namespace rig
