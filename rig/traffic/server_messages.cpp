// rig/traffic/server_messages.cpp
#include "rig/traffic/server_messages.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>

#include <fmt/format.h>

#include "core/number_text.h"
#include "core/text_parts.h"

namespace rig {

namespace {

using Kind = ServerMessage::Kind;

constexpr std::string_view lineEnd = "\r\n";
constexpr std::string_view statePrefix = "Qs121=";
constexpr std::string_view timePrefix = "Qs123=";
/// Longer than any message.
constexpr std::size_t longestMessage = 512;
constexpr std::size_t stateFields = 7;

/// How a number is written.
enum class Form {
    oneDigit,    ///< the general form with a single digit, "4e+07"
    allDigits,   ///< as many digits as tell the number
    sixDecimals, ///< behind the point
};

struct StateField {
    const char* name;
    Form form;
    double most; ///< in magnitude
};

constexpr double aTurn = 6.2831855;
constexpr double halfTurn = 3.1415935;
constexpr double quarterTurn = 1.5707975;
constexpr double anyNumber = 1e12;

constexpr std::array<StateField, stateFields> stateFieldRules{{
    {"pitch", Form::oneDigit, halfTurn * 100000},
    {"bank", Form::oneDigit, aTurn * 100000},
    {"heading", Form::sixDecimals, aTurn},
    {"altitude", Form::oneDigit, anyNumber},
    {"speed", Form::allDigits, anyNumber},
    {"latitude", Form::sixDecimals, quarterTurn},
    {"longitude", Form::sixDecimals, aTurn},
}};

std::string written(double value, Form form) {
    switch (form) {
    case Form::oneDigit: return fmt::format("{:.0}", value);
    case Form::allDigits: return fmt::format("{}", value);
    case Form::sixDecimals: return fmt::format("{:.6f}", value);
    }
    return {};
}

const char* nameOf(Form form) {
    switch (form) {
    case Form::oneDigit: return "one digit";
    case Form::allDigits: return "all its digits";
    case Form::sixDecimals: return "six decimals";
    }
    return "";
}

/// What is wrong with a field; empty when nothing is.
std::string faultOf(const StateField& rule, std::string_view field) {
    const std::optional<double> value = parseDouble(field);
    if (!value) {
        return fmt::format("{} is no number", rule.name);
    }
    if (field != written(*value, rule.form)) {
        return fmt::format("{} has not {}", rule.name, nameOf(rule.form));
    }
    return std::abs(*value) > rule.most ? fmt::format("{} is out of range", rule.name) : "";
}

ServerMessage malformed(std::string_view text, std::string fault) {
    return {Kind::malformed, {}, 0, std::string(text), std::move(fault)};
}

ServerMessage readState(std::string_view text) {
    const std::vector<std::string_view> fields = partsOf(text.substr(statePrefix.size()), ';');
    if (fields.size() != stateFields) {
        return malformed(text, fmt::format("{} fields instead of {}", fields.size(), stateFields));
    }
    for (std::size_t i = 0; i < stateFields; ++i) {
        if (std::string fault = faultOf(stateFieldRules[i], fields[i]); !fault.empty()) {
            return malformed(text, std::move(fault));
        }
    }
    const LatLon position{*parseDouble(fields[5]) * degreesPerRadian, *parseDouble(fields[6]) * degreesPerRadian};
    return {Kind::userState, position, 0, std::string(text), {}};
}

ServerMessage readTime(std::string_view text) {
    const std::string_view digits = text.substr(timePrefix.size());
    std::int64_t milliseconds = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), milliseconds);
    if (error != std::errc{} || end != digits.data() + digits.size()) {
        return malformed(text, "the time is no whole number");
    }
    if (milliseconds < 1) {
        return malformed(text, "the time is not known");
    }
    return {Kind::time, {}, milliseconds, std::string(text), {}};
}

} // namespace

ServerMessage readServerMessage(std::string_view text) {
    if (text == "Qs999=version") {
        return {Kind::versionRequest, {}, 0, std::string(text), {}};
    }
    if (text == "exit") {
        return {Kind::goodbye, {}, 0, std::string(text), {}};
    }
    if (text.starts_with(statePrefix)) {
        return readState(text);
    }
    if (text.starts_with(timePrefix)) {
        return readTime(text);
    }
    return malformed(text, "unknown");
}

ServerMessage ServerMessages::counted(ServerMessage message) {
    switch (message.kind) {
    case Kind::versionRequest: ++counts_.versionRequests; break;
    case Kind::userState: ++counts_.userStates; break;
    case Kind::time: ++counts_.times; break;
    case Kind::goodbye: ++counts_.goodbyes; break;
    case Kind::malformed: ++counts_.malformed; break;
    }
    return message;
}

std::vector<ServerMessage> ServerMessages::take(std::string_view bytes) {
    rest_ += bytes;
    std::vector<ServerMessage> messages;
    std::string_view left = rest_;
    for (std::size_t end = left.find(lineEnd); end != std::string_view::npos; end = left.find(lineEnd)) {
        messages.push_back(counted(readServerMessage(left.substr(0, end))));
        left.remove_prefix(end + lineEnd.size());
    }
    if (left.size() > longestMessage) {
        messages.push_back(counted(malformed(left.substr(0, longestMessage), "without an end")));
        left = {};
    }
    rest_ = std::string(left);
    return messages;
}

} // namespace rig
