// feed/qnh_reader.cpp
#include "feed/qnh_reader.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <fmt/format.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>

#include "core/log.h"
#include "core/number_text.h"
#include "feed/log_text.h"

std::atomic<int> gQnh{standardQnh};
QnhReader gQnhReader;

namespace {

constexpr int lowestQnh = 900;
constexpr int highestQnh = 1100;
/// Hectopascal per hundredth of an inch of mercury.
constexpr double hectopascalPerHundredthInch = 0.33865307;

int roundedToInt(double value) {
    const double rounded = std::round(value);
    if (!(rounded >= std::numeric_limits<int>::min() && rounded <= std::numeric_limits<int>::max())) {
        throw std::range_error("narrowing error");
    }
    return static_cast<int>(rounded);
}

template <typename Whole>
int wholeToInt(Whole value) {
    if (!std::in_range<int>(value)) {
        throw std::range_error("narrowing error");
    }
    return static_cast<int>(value);
}

int toHectopascal(int announced) {
    const int hectopascal = announced > highestQnh ? roundedToInt(announced * hectopascalPerHundredthInch) : announced;
    return std::clamp(hectopascal, lowestQnh, highestQnh);
}

} // namespace

void QnhReader::onDatagram() {
    try {
        if (const std::optional<int> announced = announcedQnh()) {
            takeQnh(toHectopascal(*announced));
        }
    } catch (const std::exception& error) {
        log(asLogText(fmt::format("Exception {}, in {}", error.what(), datagram)));
    }
}

void QnhReader::onStopped() {
    gWindowState.weatherLamp = FeedLamp::notRunning;
    log("QNH Reader has stopped");
}

/// The number as the datagram has it, or nothing when it has none, which is then in the log.
std::optional<int> QnhReader::announcedQnh() const {
    nlohmann::json weather = nlohmann::json::parse(datagram);
    const nlohmann::json& value = weather["QNH"];
    switch (value.type()) {
    case nlohmann::json::value_t::number_integer: return wholeToInt(value.get<std::int64_t>());
    case nlohmann::json::value_t::number_unsigned: return wholeToInt(value.get<std::uint64_t>());
    case nlohmann::json::value_t::number_float: return roundedToInt(value.get<double>());
    case nlohmann::json::value_t::string: {
        const auto& text = value.get_ref<const std::string&>();
        const std::optional<int> whole = parseInt(text);
        if (!whole) {
            logError(asLogText(fmt::format("QNH string parse error: {} in {}", text, datagram)));
        }
        return whole;
    }
    default: log(asLogText(fmt::format("no QNH {}", datagram))); return std::nullopt;
    }
}

void QnhReader::takeQnh(int hectopascal) {
    // The standard value is always taken: it also stands for "not known", and repeating it keeps the lamp alight.
    if (hectopascal == lastQnh && hectopascal != standardQnh) {
        return;
    }
    lastQnh = hectopascal;
    gTrafficReader.qnh = hectopascal;
    gQnh = hectopascal;
    gWindowState.qnh = hectopascal;
    FeedLamp waiting = FeedLamp::noData;
    gWindowState.weatherLamp.compare_exchange_strong(waiting, FeedLamp::flowing);
    repaintWindow();
}

void QnhReader::reset() {
    resetReader();
    // Or else the first datagram after the reset would pass for a repetition and leave the copies at the standard
    // value.
    lastQnh = standardQnh;
}

void runQnhReader(std::uint16_t port, bool local) {
    runReader(gQnhReader, "QNH Reader", {&gWindowState.weatherLamp}, port, local);
}
