// rig/flights/steady_sky.h
// A sky with so many aircraft at a time for as long as it is wanted: one that has gone is followed by another one, with
// an address and a name that were not there before. Belongs to one thread.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "rig/flights/receiver.h"
#include "rig/traffic/chance.h"

namespace rig {

class SteadySky {
public:
    /// From `begin` on, seconds since 1970. Skies whose aircraft are to differ begin at other numbers.
    SteadySky(int aircraft, double begin, Fidelity fidelity, std::uint32_t seed, std::uint32_t firstNumber = 0);

    /// The rows of a recording up to this time, in the order of their times; each comes once.
    std::vector<std::string> rowsUntil(double time);
    /// The same as a text.
    std::string textUntil(double time);

    /// No aircraft follows any more.
    void close() { open_ = false; }
    /// All lines have been told.
    bool isEmpty() const { return waiting_.empty() && !open_; }
    /// Aircraft so far.
    std::uint32_t aircraft() const { return next_ - first_; }

private:
    /// The lines that are still to come, the next one last; never empty.
    using Flight = std::vector<ReceivedLine>;

    void add(Flight flight);
    void addFlight(double begin, double notBefore);
    Aircraft nextAircraft();

    Fidelity fidelity_;
    Chance chance_;
    bool open_ = true;
    const std::uint32_t first_;
    std::uint32_t next_;
    double nextWeather_;
    std::map<std::pair<double, std::uint32_t>, Flight> waiting_; // by time of the next line, and hexid
};

/// The types that fly in it.
std::set<std::string> steadySkyTypes();

} // namespace rig
