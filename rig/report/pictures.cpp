// rig/report/pictures.cpp
#include "rig/report/pictures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>

#include <fmt/format.h>

#include "core/geography.h"
#include "rig/report/canvas.h"
#include "rig/report/figures_json.h"

namespace rig {

namespace {

constexpr Colour ink{0.11, 0.13, 0.16};
constexpr Colour faint{0.45, 0.49, 0.54};
constexpr Colour border{0.80, 0.82, 0.85};
constexpr Colour recordedColour{0.62, 0.65, 0.70};
constexpr Colour airColour{0.11, 0.42, 0.78};
constexpr Colour groundColour{0.82, 0.49, 0.07};
constexpr Colour otherColour{0.45, 0.25, 0.70};
constexpr Colour alarm{0.83, 0.11, 0.14};
constexpr Colour userColour{0.08, 0.55, 0.27};

constexpr double titleSize = 19;
constexpr double textSize = 13;

constexpr std::size_t mapPoints = 400;
constexpr std::size_t mappedMoments = 20;
constexpr std::size_t picturedMoments = 6;
constexpr double recordedAroundSeconds = 12;
constexpr std::size_t recordedPoints = 60;
constexpr double narrowestViewMetres = 30;

/// A part of the earth in a box, north up and to scale.
class View {
public:
    View(const std::vector<LatLon>& places, const Box& box) : box_(box) {
        if (places.empty()) {
            return;
        }
        centre_ = places.front();
        eastPerDegree_ = metersPerDegreeLatitude * std::cos(centre_.lat * radiansPerDegree);
        double west = 0;
        double east = 0;
        double south = 0;
        double north = 0;
        for (const LatLon& place : places) {
            const Pixel metres = metresOf(place);
            west = std::min(west, metres.x);
            east = std::max(east, metres.x);
            south = std::min(south, metres.y);
            north = std::max(north, metres.y);
        }
        middle_ = {(west + east) / 2, (south + north) / 2};
        constexpr double air = 1.12;
        const double perPixel = std::max((east - west) / box.width, (north - south) / box.height) * air;
        metresPerPixel_ = std::max(perPixel, narrowestViewMetres / box.width);
    }

    Pixel operator()(const LatLon& place) const {
        const Pixel metres = metresOf(place);
        return {box_.left + box_.width / 2 + (metres.x - middle_.x) / metresPerPixel_,
                box_.top + box_.height / 2 - (metres.y - middle_.y) / metresPerPixel_};
    }

    /// A line of a round length, and what it is.
    void drawScale(Canvas& canvas) const {
        const double most = metresPerPixel_ * box_.width / 4;
        double length = std::pow(10.0, std::floor(std::log10(most)));
        length *= most >= 5 * length ? 5 : (most >= 2 * length ? 2 : 1);
        const Pixel at{box_.left + 12, box_.top + box_.height - 12};
        canvas.line({at, {at.x + length / metresPerPixel_, at.y}}, ink, 2);
        canvas.text({at.x, at.y - 6},
                    length >= 1000 ? fmt::format("{:g} km", length / 1000) : fmt::format("{:g} m", length), textSize,
                    ink);
    }

private:
    Pixel metresOf(const LatLon& place) const {
        return {std::remainder(place.lon - centre_.lon, 360.0) * eastPerDegree_,
                (place.lat - centre_.lat) * metersPerDegreeLatitude};
    }

    Box box_;
    LatLon centre_;
    double eastPerDegree_ = 1;
    Pixel middle_;
    double metresPerPixel_ = 1;
};

struct Sample {
    double x = 0;
    double y = 0;
};

/// Never -0, which would be printed with its sign.
double roundedToTenth(double value) {
    return std::round(value * 10) / 10 + 0.0;
}

/// Values over time in a box, with the least and the greatest written beside it.
void plot(Canvas& canvas, const Box& box, const std::string& title, const std::vector<Sample>& samples,
          double leastRange, const Colour& colour, double markedX) {
    canvas.frame(box, border);
    canvas.text({box.left + 6, box.top + 15}, title, textSize - 1, faint);
    if (samples.size() < 2) {
        return;
    }
    double least = samples.front().y;
    double most = least;
    for (const Sample& sample : samples) {
        least = std::min(least, sample.y);
        most = std::max(most, sample.y);
    }
    const double missing = std::max(0.0, leastRange - (most - least)) / 2;
    const double low = least - missing;
    const double high = most + missing;
    const double from = samples.front().x;
    const double to = std::max(samples.back().x, from + 1e-9);
    constexpr double edge = 20; // for the title
    const auto pixelOf = [&](const Sample& sample) {
        return Pixel{box.left + (sample.x - from) / (to - from) * box.width,
                     box.top + edge + (high - sample.y) / std::max(high - low, 1e-9) * (box.height - edge - 4)};
    };
    canvas.clip(box);
    if (std::isfinite(markedX)) {
        const double x = pixelOf({markedX, low}).x;
        canvas.line({{x, box.top}, {x, box.top + box.height}}, alarm, 1);
    }
    std::vector<Pixel> pixels;
    pixels.reserve(samples.size());
    for (const Sample& sample : samples) {
        pixels.push_back(pixelOf(sample));
    }
    canvas.line(pixels, colour, 1.6);
    canvas.unclip();
    canvas.textEndingAt({box.left + box.width - 6, box.top + 15},
                        fmt::format("{:.1f} to {:.1f}", roundedToTenth(least), roundedToTenth(most)), textSize - 2,
                        ink);
}

std::vector<LatLon> placesOf(const std::vector<FeedPoint>& points) {
    std::vector<LatLon> places;
    places.reserve(points.size());
    for (const FeedPoint& point : points) {
        places.push_back(point.at);
    }
    return places;
}

void drawPath(Canvas& canvas, const View& view, const std::vector<LatLon>& places, const Colour& colour, double width) {
    std::vector<Pixel> pixels;
    pixels.reserve(places.size());
    for (const LatLon& place : places) {
        pixels.push_back(view(place));
    }
    canvas.line(pixels, colour, width);
}

/// In the air in one colour, on the ground in another.
void drawFlown(Canvas& canvas, const View& view, const std::vector<SeriesPoint>& points) {
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        canvas.line({view(points[i].at), view(points[i + 1].at)}, points[i].onGround ? groundColour : airColour, 1.4);
    }
}

void drawNumbers(Canvas& canvas, const View& view, const Analysis& analysis) {
    // The weightiest ones last, on top.
    for (std::size_t i = std::min(analysis.worst.size(), mappedMoments); i-- > 0;) {
        const Pixel at = view(analysis.worst[i].moment.at);
        canvas.dot(at, 11, alarm);
        const std::string number = std::to_string(i + 1);
        canvas.text({at.x - 3.8 * static_cast<double>(number.size()), at.y + 4.5}, number, textSize, {1, 1, 1}, true);
    }
}

/// Two columns of boxes below the title.
Box boxOf(std::size_t index) {
    const std::size_t row = index / 2;
    return {20 + 790.0 * static_cast<double>(index % 2), 60 + 477.0 * static_cast<double>(row), 770, 462};
}

std::string titleOf(const Analysis& analysis, std::size_t index) {
    const Moment& moment = analysis.worst[index].moment;
    const std::string other = moment.otherId == 0 ? "" : " (" + nameOf(analysis, moment.otherId) + ")";
    return fmt::format("{}. {}  {}{}: {}", index + 1, nameOf(analysis, moment.objectId), factsOf(moment.kind).title,
                       other, valueText(moment));
}

void drawMap(const Analysis& analysis, const std::filesystem::path& file) {
    constexpr Box box{20, 60, 1120, 1020};
    Canvas canvas(1600, 1100);
    canvas.text(
        {20, 38},
        fmt::format("What flew: {} aircraft in {}", analysis.aircraft.size(), timeText(analysis.survey.seconds)),
        titleSize + 3, ink, true);
    std::vector<LatLon> places;
    for (const MeasuredAircraft& aircraft : analysis.aircraft) {
        for (const SeriesPoint& point : aircraft.series.points(mapPoints)) {
            places.push_back(point.at);
        }
    }
    const View view(places, box);
    canvas.clip(box);
    for (const MeasuredAircraft& aircraft : analysis.aircraft) {
        if (const FeedAircraft* feed = aircraft.facts.feed) {
            drawPath(canvas, view,
                     placesOf(recordedPart(*feed, analysis.survey.clock, aircraft.figures.firstSeen,
                                           aircraft.figures.lastSeen, mapPoints)),
                     recordedColour, 3);
        }
    }
    for (const MeasuredAircraft& aircraft : analysis.aircraft) {
        drawFlown(canvas, view, aircraft.series.points(mapPoints));
    }
    if (!analysis.survey.user.empty()) {
        canvas.ring(view(analysis.survey.user.back().at), 8, userColour, 3);
    }
    drawNumbers(canvas, view, analysis);
    view.drawScale(canvas);
    canvas.unclip();
    canvas.frame(box, border);
    double y = 80;
    const auto say = [&canvas, &y](const std::string& text, const Colour& colour, bool isBold = false) {
        canvas.text({1160, y}, text, textSize, colour, isBold);
        y += 22;
    };
    say("flown in the air", airColour, true);
    say("flown on the ground", groundColour, true);
    say("recorded", recordedColour, true);
    say("the user, at the end", userColour, true);
    y += 14;
    say(analysis.worst.empty() ? "No moment stands out" : "The worst moments, the worst first", ink, true);
    for (std::size_t i = 0; i < std::min(analysis.worst.size(), mappedMoments); ++i) {
        say(titleOf(analysis, i), i == 0 ? alarm : ink, i == 0);
        y -= 5;
        say("      at " + timeText(analysis.worst[i].moment.seconds), faint);
    }
    canvas.write(file);
}

std::vector<Sample> samplesOf(const std::vector<DetailPoint>& course,
                              const std::function<double(const Position&)>& value) {
    std::vector<Sample> samples;
    samples.reserve(course.size());
    for (const DetailPoint& point : course) {
        samples.push_back({point.seconds, value(point.position)});
    }
    return samples;
}

/// Without the leap at north.
std::vector<Sample> unwound(std::vector<Sample> degrees) {
    for (std::size_t i = 1; i < degrees.size(); ++i) {
        degrees[i].y = degrees[i - 1].y + std::remainder(degrees[i].y - degrees[i - 1].y, 360.0);
    }
    return degrees;
}

void drawMoment(Canvas& canvas, const Box& box, const Analysis& analysis, std::size_t index) {
    const DetailedMoment& detailed = analysis.worst[index];
    const Moment& moment = detailed.moment;
    canvas.frame(box, border);
    canvas.text({box.left + 10, box.top + 24}, titleOf(analysis, index), titleSize - 4, alarm, true);
    canvas.text({box.left + 10, box.top + 43},
                fmt::format("at {}, {:.0f} ft", timeText(moment.seconds), moment.altFeet), textSize, faint);
    const Box plan{box.left + 10, box.top + 52, box.width * 0.58, box.height - 62};
    std::vector<LatLon> flown;
    std::vector<LatLon> other;
    for (const DetailPoint& point : detailed.course) {
        flown.push_back(point.position.place());
    }
    for (const DetailPoint& point : detailed.other) {
        other.push_back(point.position.place());
    }
    std::vector<LatLon> shown = flown;
    shown.push_back(moment.at);
    shown.insert(shown.end(), other.begin(), other.end());
    const View view(shown, plan);
    canvas.clip(plan);
    const MeasuredAircraft* aircraft = findAircraft(analysis, moment.objectId);
    if (aircraft != nullptr && aircraft->facts.feed != nullptr) {
        const std::vector<LatLon> recorded =
            placesOf(recordedPart(*aircraft->facts.feed, analysis.survey.clock, moment.seconds - recordedAroundSeconds,
                                  moment.seconds + recordedAroundSeconds, recordedPoints));
        drawPath(canvas, view, recorded, recordedColour, 4);
        for (const LatLon& place : recorded) {
            canvas.dot(view(place), 5, recordedColour);
        }
    }
    drawPath(canvas, view, other, otherColour, 1.5);
    drawPath(canvas, view, flown, airColour, 1);
    for (const LatLon& place : flown) {
        canvas.dot(view(place), 1.8, airColour);
    }
    canvas.ring(view(moment.at), 12, alarm, 2.5);
    view.drawScale(canvas);
    canvas.unclip();
    canvas.frame(plan, border);

    struct Strip {
        const char* title;
        double leastRange;
        std::function<double(const Position&)> value;
    };
    const std::array<Strip, 5> strips{{
        {"height, ft", 20, [](const Position& at) { return at.altFeet; }},
        {"speed, kt", 5, [](const Position& at) { return at.trueKnots; }},
        {"heading, deg", 5, [](const Position& at) { return at.headingRad * degreesPerRadian; }},
        {"nose up, deg", 2, [](const Position& at) { return -at.pitchRad * degreesPerRadian; }},
        {"bank to the right, deg", 2, [](const Position& at) { return -at.bankRad * degreesPerRadian; }},
    }};
    const double height = plan.height / static_cast<double>(strips.size());
    for (std::size_t i = 0; i < strips.size(); ++i) {
        const Box strip{plan.left + plan.width + 10, plan.top + height * static_cast<double>(i),
                        box.width - plan.width - 30, height - 4};
        plot(canvas, strip, strips[i].title, unwound(samplesOf(detailed.course, strips[i].value)), strips[i].leastRange,
             airColour, moment.seconds);
    }
}

void drawWorst(const Analysis& analysis, const std::filesystem::path& file) {
    Canvas canvas(1600, 1500);
    canvas.text({20, 38}, "The worst moments, eight seconds before and after", titleSize + 3, ink, true);
    canvas.text({820, 38}, "flown frame by frame", textSize + 1, airColour, true);
    canvas.text({1010, 38}, "recorded", textSize + 1, recordedColour, true);
    canvas.text({1110, 38}, "the other aircraft", textSize + 1, otherColour, true);
    if (analysis.worst.empty()) {
        canvas.text({20, 90}, "No moment stands out", titleSize, ink);
    }
    for (std::size_t i = 0; i < std::min(analysis.worst.size(), picturedMoments); ++i) {
        drawMoment(canvas, boxOf(i), analysis, i);
    }
    canvas.write(file);
}

/// Those with the worst moments, then the others.
std::vector<const MeasuredAircraft*> worstAircraft(const Analysis& analysis, std::size_t most) {
    std::vector<const MeasuredAircraft*> chosen;
    const auto choose = [&](const MeasuredAircraft* aircraft) {
        if (aircraft != nullptr && chosen.size() < most &&
            std::find(chosen.begin(), chosen.end(), aircraft) == chosen.end()) {
            chosen.push_back(aircraft);
        }
    };
    for (const DetailedMoment& detailed : analysis.worst) {
        choose(findAircraft(analysis, detailed.moment.objectId));
    }
    for (const MeasuredAircraft& aircraft : analysis.aircraft) {
        choose(&aircraft);
    }
    return chosen;
}

void drawProfile(Canvas& canvas, const Box& box, const Analysis& analysis, const MeasuredAircraft& aircraft) {
    canvas.text(
        {box.left, box.top + 16},
        fmt::format("{}  {}", nameOf(aircraft), aircraft.facts.feed == nullptr ? "" : aircraft.facts.feed->type),
        titleSize - 4, ink, true);
    double marked = std::numeric_limits<double>::quiet_NaN();
    for (const DetailedMoment& detailed : analysis.worst) {
        if (detailed.moment.objectId == aircraft.facts.id) {
            marked = detailed.moment.seconds;
            break;
        }
    }
    std::vector<Sample> heights;
    std::vector<Sample> speeds;
    std::vector<Sample> headings;
    for (const SeriesPoint& point : aircraft.series.points(Series::mostPoints)) {
        heights.push_back({point.seconds, point.altFeet});
        speeds.push_back({point.seconds, point.knots});
        headings.push_back({point.seconds, point.headingDegrees});
    }
    const double height = (box.height - 26) / 3;
    const auto strip = [&](int row) { return Box{box.left, box.top + 26 + height * row, box.width, height - 5}; };
    plot(canvas, strip(0), "height, ft", heights, 100, airColour, marked);
    plot(canvas, strip(1), "speed, kt", speeds, 10, airColour, marked);
    plot(canvas, strip(2), "heading, deg", unwound(headings), 10, airColour, marked);
}

void drawProfiles(const Analysis& analysis, const std::filesystem::path& file) {
    Canvas canvas(1600, 1500);
    canvas.text({20, 38}, "Height, speed and heading of the aircraft with the worst moments (red: the worst)",
                titleSize + 3, ink, true);
    const std::vector<const MeasuredAircraft*> chosen = worstAircraft(analysis, picturedMoments);
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        drawProfile(canvas, boxOf(i), analysis, *chosen[i]);
    }
    canvas.write(file);
}

} // namespace

std::vector<std::filesystem::path> drawPictures(const Analysis& analysis, const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files{folder / "map.png", folder / "worst.png", folder / "profiles.png"};
    drawMap(analysis, files[0]);
    drawWorst(analysis, files[1]);
    drawProfiles(analysis, files[2]);
    return files;
}

} // namespace rig
