// rig/traffic_commands.h
// The commands that make and play traffic: "traffic", "convert", "flights", "count".
#pragma once

#include <iosfwd>

#include <CLI/CLI.hpp>

#include "rig/flights/flights_run.h"
#include "rig/traffic/conversion.h"
#include "rig/traffic/expected_outcomes.h"
#include "rig/traffic/traffic_run.h"

class TrafficCommands {
public:
    explicit TrafficCommands(CLI::App& app);

    /// Runs the command that was parsed, if it is one of these.
    void run(std::ostream& out) const;

private:
    void addTraffic(CLI::App& app);
    void addConvert(CLI::App& app);
    void addFlights(CLI::App& app);
    void addCount(CLI::App& app);

    CLI::App* traffic_ = nullptr;
    CLI::App* convert_ = nullptr;
    CLI::App* flights_ = nullptr;
    CLI::App* count_ = nullptr;
    rig::TrafficOptions trafficOptions_;
    rig::ConvertOptions convertOptions_;
    rig::FlightsOptions flightsOptions_;
    rig::CountOptions countOptions_;
};
