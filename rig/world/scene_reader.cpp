// rig/world/scene_reader.cpp
#include "rig/world/scene_reader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "platform/files.h"

namespace rig {

namespace {

using nlohmann::json;

struct Range {
    double least;
    double most;
};

constexpr Range latitudes{-90, 90};
constexpr Range longitudes{-180, 180};
constexpr Range headings{-360, 360};
constexpr Range altitudes{-2000, 100000};
constexpr Range speeds{1, 2000};
constexpr Range standing{0, 2000};
constexpr Range lengths{1, 500};
constexpr Range distances{0, 20000};
constexpr Range glides{0.5, 10};
constexpr Range climbs{100, 10000};
constexpr Range times{0, 1e7};
constexpr Range counts{1, 100000};
constexpr Range numbersOfExceptions{0, 1000};
constexpr Range versionParts{0, 4294967295.0};
constexpr Range frameRates{leastFrameRate, mostFrameRate};

/// A value of the file with its place in it ("acts[2].points[0]").
class Node {
public:
    Node(const json& value, std::string place) : value_(value), place_(std::move(place)) {}

    [[noreturn]] void fail(std::string_view what) const {
        throw SceneError(place_.empty() ? std::string(what) : fmt::format("{}: {}", place_, what));
    }

    /// Only these keys may be there: a misspelt one would be silently without effect.
    void expectObject(std::initializer_list<std::string_view> keys) const {
        if (!value_.is_object()) {
            fail("must be an object");
        }
        for (const auto& [key, ignored] : value_.items()) {
            if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
                fail(fmt::format("unknown key '{}'", key));
            }
        }
    }

    bool has(const char* key) const { return value_.is_object() && value_.contains(key); }

    Node at(const char* key) const {
        if (!has(key)) {
            fail(fmt::format("'{}' is missing", key));
        }
        return {value_.at(key), place_.empty() ? std::string(key) : fmt::format("{}.{}", place_, key)};
    }

    std::vector<Node> list() const {
        if (!value_.is_array()) {
            fail("must be a list");
        }
        std::vector<Node> nodes;
        for (std::size_t i = 0; i < value_.size(); ++i) {
            nodes.emplace_back(value_.at(i), fmt::format("{}[{}]", place_, i));
        }
        return nodes;
    }

    double number(Range range) const {
        if (!value_.is_number()) {
            fail("must be a number");
        }
        const auto number = value_.get<double>();
        if (!(number >= range.least && number <= range.most)) {
            fail(fmt::format("must be from {} to {}", range.least, range.most));
        }
        return number;
    }

    double wholeNumber(Range range) const {
        const double value = number(range);
        if (value != std::floor(value)) {
            fail("must be a whole number");
        }
        return value;
    }

    std::string text() const {
        if (!value_.is_string()) {
            fail("must be a text");
        }
        return value_.get<std::string>();
    }

    // Those that may be missing.

    void take(const char* key, Range range, double& value) const {
        if (has(key)) {
            value = at(key).number(range);
        }
    }
    void take(const char* key, Range range, std::optional<double>& value) const {
        if (has(key)) {
            value = at(key).number(range);
        }
    }
    void take(const char* key, std::string& value) const {
        if (has(key)) {
            value = at(key).text();
        }
    }

private:
    const json& value_;
    std::string place_;
};

/// "[lat, lon]".
LatLon pointFrom(const Node& node) {
    const std::vector<Node> parts = node.list();
    if (parts.size() != 2) {
        node.fail("must be [latitude, longitude]");
    }
    return {parts[0].number(latitudes), parts[1].number(longitudes)};
}

/// "[lat, lon, feet]".
Waypoint waypointFrom(const Node& node) {
    const std::vector<Node> parts = node.list();
    if (parts.size() != 3) {
        node.fail("must be [latitude, longitude, feet]");
    }
    return {{parts[0].number(latitudes), parts[1].number(longitudes)}, parts[2].number(altitudes)};
}

// --- Acts ------------------------------------------------------------------------------------------------------------

template <typename Act>
ActKind plainAct(const Node& node) {
    node.expectObject({"at", "act"});
    return Act{};
}

ActKind taxiAct(const Node& node) {
    node.expectObject({"at", "act", "points", "knots"});
    TaxiAct act;
    for (const Node& point : node.at("points").list()) {
        act.points.push_back(pointFrom(point));
    }
    node.take("knots", speeds, act.knots);
    return act;
}

ActKind flyAct(const Node& node) {
    node.expectObject({"at", "act", "points", "knots"});
    FlyAct act;
    for (const Node& point : node.at("points").list()) {
        act.points.push_back(waypointFrom(point));
    }
    node.take("knots", speeds, act.knots);
    return act;
}

ActKind approachAct(const Node& node) {
    node.expectObject({"at", "act", "threshold", "heading", "from_nm", "knots", "glide_degrees"});
    ApproachAct act;
    act.threshold = pointFrom(node.at("threshold"));
    act.headingDegrees = node.at("heading").number(headings);
    node.take("from_nm", {0.1, 100}, act.fromNm);
    node.take("knots", speeds, act.knots);
    node.take("glide_degrees", glides, act.glideDegrees);
    return act;
}

ActKind takeOffAct(const Node& node) {
    node.expectObject({"at", "act", "heading", "rotate_knots", "climb_knots", "climb_fpm"});
    TakeOffAct act;
    act.headingDegrees = node.at("heading").number(headings);
    node.take("rotate_knots", speeds, act.rotateKnots);
    node.take("climb_knots", speeds, act.climbKnots);
    node.take("climb_fpm", climbs, act.climbFeetPerMinute);
    return act;
}

ActKind jumpAct(const Node& node) {
    node.expectObject({"at", "act", "nm", "heading"});
    JumpAct act;
    node.take("nm", distances, act.nm);
    node.take("heading", headings, act.headingDegrees);
    return act;
}

ActKind loadFlightAct(const Node& node) {
    node.expectObject({"at", "act", "file"});
    return LoadFlightAct{node.at("file").text()};
}

ActKind stallAct(const Node& node) {
    node.expectObject({"at", "act", "seconds"});
    StallAct act;
    node.take("seconds", times, act.seconds);
    return act;
}

ActKind frameRateAct(const Node& node) {
    node.expectObject({"at", "act", "value"});
    return FrameRateAct{node.at("value").number(frameRates)};
}

ActKind refuseTitleAct(const Node& node) {
    node.expectObject({"at", "act", "title"});
    return RefuseTitleAct{node.at("title").text()};
}

ActKind foreignObjectAct(const Node& node) {
    node.expectObject({"at", "act", "title", "tail_number", "position", "heading", "altitude_ft"});
    ForeignObjectAct act;
    act.title = node.at("title").text();
    act.at = pointFrom(node.at("position"));
    node.take("tail_number", act.tailNumber);
    node.take("heading", headings, act.headingDegrees);
    node.take("altitude_ft", altitudes, act.altFeet);
    return act;
}

ActKind exceptionsAct(const Node& node) {
    node.expectObject({"at", "act", "count", "exception"});
    ExceptionsAct act;
    if (node.has("count")) {
        act.count = static_cast<int>(node.at("count").wholeNumber(counts));
    }
    if (node.has("exception")) {
        act.exception = static_cast<DWORD>(node.at("exception").wholeNumber(numbersOfExceptions));
    }
    return act;
}

ActKind lyingRecordAct(const Node& node) {
    constexpr std::pair<std::string_view, Lie> lies[] = {
        {"bad_size", Lie::badSize}, {"half", Lie::half}, {"zero_size", Lie::zeroSize}, {"huge", Lie::huge}};
    node.expectObject({"at", "act", "lie"});
    const std::string text = node.at("lie").text();
    for (const auto& [name, lie] : lies) {
        if (name == text) {
            return LyingRecordAct{lie};
        }
    }
    node.at("lie").fail(fmt::format("unknown lie '{}'", text));
}

struct ActName {
    std::string_view name;
    ActKind (*read)(const Node& node);
};

constexpr ActName actNames[] = {
    {"taxi", taxiAct},
    {"fly", flyAct},
    {"approach", approachAct},
    {"take_off", takeOffAct},
    {"jump", jumpAct},
    {"load_flight", loadFlightAct},
    {"position_changed", plainAct<PositionChangedAct>},
    {"pause", plainAct<PauseAct>},
    {"resume", plainAct<ResumeAct>},
    {"quit", plainAct<QuitAct>},
    {"stall", stallAct},
    {"frame_rate", frameRateAct},
    {"refuse_title", refuseTitleAct},
    {"foreign_object", foreignObjectAct},
    {"drop_connection", plainAct<DropConnectionAct>},
    {"exceptions", exceptionsAct},
    {"lying_record", lyingRecordAct},
};

Act actFrom(const Node& node) {
    const std::string text = node.at("act").text();
    for (const ActName& known : actNames) {
        if (known.name == text) {
            return {node.at("at").number(times), known.read(node)};
        }
    }
    node.at("act").fail(fmt::format("unknown act '{}'", text));
}

// --- The rest --------------------------------------------------------------------------------------------------------

SimulatorIdentity simulatorFrom(const Node& node) {
    node.expectObject({"name", "version"});
    SimulatorIdentity simulator;
    node.take("name", simulator.name);
    if (!node.has("version")) {
        return simulator;
    }
    const std::vector<Node> parts = node.at("version").list();
    if (parts.size() != simulator.version.size()) {
        node.at("version").fail("must be four numbers");
    }
    std::transform(parts.begin(), parts.end(), simulator.version.begin(),
                   [](const Node& part) { return static_cast<DWORD>(part.wholeNumber(versionParts)); });
    return simulator;
}

/// "2026-06-01T12:00:00", universal time, or "now".
platform::WallTime zuluFrom(const Node& node) {
    const std::string text = node.text();
    if (text == "now") {
        return platform::wallNow();
    }
    constexpr std::string_view form = "dddd-dd-ddTdd:dd:dd";
    const bool formed = text.size() == form.size() &&
                        std::equal(form.begin(), form.end(), text.begin(),
                                   [](char f, char c) { return f == 'd' ? c >= '0' && c <= '9' : f == c; });
    if (!formed) {
        node.fail("must be \"now\" or like \"2026-06-01T12:00:00\"");
    }
    const auto part = [&](std::size_t begin, std::size_t length) {
        int number = 0;
        std::from_chars(text.data() + begin, text.data() + begin + length, number);
        return number;
    };
    using namespace std::chrono;
    const year_month_day date{year(part(0, 4)), month(static_cast<unsigned>(part(5, 2))),
                              day(static_cast<unsigned>(part(8, 2)))};
    if (!date.ok() || part(11, 2) > 23 || part(14, 2) > 59 || part(17, 2) > 59 || part(0, 4) < 1970 ||
        part(0, 4) > 2200) {
        node.fail("is no time of a year from 1970 to 2200");
    }
    return sys_days{date} + hours(part(11, 2)) + minutes(part(14, 2)) + seconds(part(17, 2));
}

Place placeFrom(const Node& node) {
    node.expectObject({"name", "position", "radius_nm", "elevation_ft"});
    Place place;
    node.take("name", place.name);
    place.at = pointFrom(node.at("position"));
    place.radiusNm = node.at("radius_nm").number(distances);
    place.elevationFeet = node.at("elevation_ft").number(altitudes);
    return place;
}

Ground groundFrom(const Node& node) {
    node.expectObject({"default_elevation_ft", "places"});
    Ground ground;
    node.take("default_elevation_ft", altitudes, ground.defaultElevationFeet);
    if (node.has("places")) {
        for (const Node& place : node.at("places").list()) {
            ground.places.push_back(placeFrom(place));
        }
    }
    return ground;
}

UserStart userFrom(const Node& node) {
    node.expectObject(
        {"title", "model", "position", "heading", "altitude_ft", "knots", "cg_height_ft", "wing_span_ft"});
    UserStart user;
    node.take("title", user.type.title);
    node.take("model", user.type.model);
    node.take("cg_height_ft", {0, 50}, user.type.cgHeightFeet);
    node.take("wing_span_ft", lengths, user.type.wingSpanFeet);
    user.at = pointFrom(node.at("position"));
    node.take("heading", headings, user.headingDegrees);
    node.take("altitude_ft", altitudes, user.altFeet);
    node.take("knots", standing, user.knots);
    return user;
}

Scene sceneFrom(const Node& node) {
    node.expectObject({"simulator", "frame_rate", "time", "ground", "user", "acts"});
    Scene scene;
    if (node.has("simulator")) {
        scene.simulator = simulatorFrom(node.at("simulator"));
    }
    node.take("frame_rate", frameRates, scene.framesPerSecond);
    if (node.has("time")) {
        scene.zuluStart = zuluFrom(node.at("time"));
    }
    if (node.has("ground")) {
        scene.ground = groundFrom(node.at("ground"));
    }
    scene.user = userFrom(node.at("user"));
    if (node.has("acts")) {
        for (const Node& act : node.at("acts").list()) {
            scene.acts.push_back(actFrom(act));
        }
    }
    return scene;
}

/// Where a byte stands, as editors count.
std::string placeOfByte(std::string_view text, std::size_t byte) {
    const std::string_view before = text.substr(0, std::min(byte > 0 ? byte - 1 : 0, text.size()));
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::size_t lineBegin = before.find_last_of('\n');
    const std::size_t column = before.size() - (lineBegin == std::string_view::npos ? 0 : lineBegin + 1) + 1;
    return fmt::format("line {}, column {}", line, column);
}

} // namespace

Scene sceneFrom(std::string_view text, const std::string& name) {
    try {
        const json document = json::parse(text, nullptr, true, true);
        return sceneFrom(Node(document, ""));
    } catch (const json::parse_error& error) {
        throw SceneError(fmt::format("{}: {}: is no JSON", name, placeOfByte(text, error.byte)));
    } catch (const json::out_of_range&) {
        throw SceneError(fmt::format("{}: holds a number that is too large", name));
    } catch (const SceneError& error) {
        throw SceneError(fmt::format("{}: {}", name, error.what()));
    }
}

Scene readScene(const std::filesystem::path& file) {
    const std::string name = platform::utf8FromPath(file);
    std::error_code ignored;
    std::ifstream stream(file, std::ios::binary);
    if (!std::filesystem::is_regular_file(file, ignored) || !stream) {
        throw SceneError(fmt::format("{}: cannot be read", name));
    }
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    return sceneFrom(text, name);
}

} // namespace rig
