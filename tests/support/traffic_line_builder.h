// tests/support/traffic_line_builder.h
// Traffic lines made to measure.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "feed/traffic_line.h"

/// A line that the reader accepts with the user near Amsterdam, but for the fields that a test gives it.
class TrafficLineBuilder {
public:
    TrafficLineBuilder& with(std::size_t field, std::string text) {
        fields_[field] = std::move(text);
        return *this;
    }

    std::string line() const { return firstFields(fields_.size()); }

    std::string firstFields(std::size_t count) const {
        std::string result;
        for (std::size_t i = 0; i < count; ++i) {
            result += (i == 0 ? "" : ",") + fields_[i];
        }
        return result;
    }

private:
    std::vector<std::string> fields_{"RTTFC",
                                     "4739591",
                                     "52.25382",
                                     "4.92249",
                                     "24525",
                                     "2368",
                                     "1",
                                     "92.45",
                                     "281.30",
                                     "KLM1627",
                                     "E190",
                                     "PH-EXF",
                                     "AMS",
                                     "LHR",
                                     "1666985865.8",
                                     "X2",
                                     "KL1627",
                                     "adsb_icao",
                                     "4950",
                                     "242",
                                     "258",
                                     "0.396",
                                     "0.1",
                                     "0.4",
                                     "95.98",
                                     "98.16",
                                     "2336",
                                     "none",
                                     "A3",
                                     "1013.6",
                                     "13024",
                                     "13008",
                                     "-1.00",
                                     "autopilot|vnav|tcas",
                                     "0.0",
                                     "-4.7",
                                     "226",
                                     "36",
                                     "6",
                                     "15",
                                     "1",
                                     "81228",
                                     ""};
};
