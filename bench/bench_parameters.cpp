// The time that one saved setting and the reading of all settings take, disk included. Usage: bench_parameters [FILTER]
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "bench/measuring.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace fs = std::filesystem;

namespace {

constexpr int rounds = 101;

/// Of the work, which is told the number of its round.
double medianMs(auto work) {
    std::vector<double> times;
    times.reserve(rounds);
    for (int round = 0; round < rounds; ++round) {
        times.push_back(millisecondsOf([&work, round] { work(round); }));
    }
    return median(times);
}

void saveOneSetting(int round) {
    MAX_HOLDING_MINUTES.value = 1 + round % 60;
    saveParameter(MAX_HOLDING_MINUTES);
}

void readAllSettings(int /*round*/) {
    gf_readParameters();
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view filter = argc > 1 ? argv[1] : "";
    const WorkFolder folder;
    platform::setRoamingAppDataFolder(folder.path());
    fs::create_directories(gf_parameterFolder());
    gf_writeDefaultParameters();
    print(filter, "parameters.save_ms", medianMs(saveOneSetting), "ms");
    print(filter, "parameters.read_ms", medianMs(readAllSettings), "ms");
    return 0;
}
