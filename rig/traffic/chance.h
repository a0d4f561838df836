// rig/traffic/chance.h
// Random numbers that are the same on every machine for the same seed. Belongs to one thread.
#pragma once

#include <cstdint>
#include <random>

namespace rig {

class Chance {
public:
    explicit Chance(std::uint32_t seed) : engine_(seed) {}

    /// Uniform, from 0 up to but not 1.
    double fraction() { return engine_() / range; }
    double between(double least, double most) { return least + (most - least) * fraction(); }
    /// A whole number from 0 up to but not `count`.
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(fraction() * static_cast<double>(count)); }
    bool happens(double rate) { return fraction() < rate; }
    /// Of the standard normal distribution, nearly: twelve uniform ones, which no machine rounds differently.
    double normal() {
        double sum = -6;
        for (int i = 0; i < 12; ++i) {
            sum += fraction();
        }
        return sum;
    }

private:
    static constexpr double range = 4294967296.0;
    std::mt19937 engine_;
};

} // namespace rig
