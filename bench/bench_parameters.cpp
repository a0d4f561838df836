// The time that one saved setting and the reading of all settings take, disk included. Usage: bench_parameters [FILTER]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "core/parameter_file.h"
#include "core/parameters.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace fs = std::filesystem;

namespace {

constexpr int rounds = 101;

/// The settings of a bench: a fresh file in a folder that goes again, which is the working directory as well.
class Settings {
public:
    Settings() : path_(fs::temp_directory_path() / ("bench_parameters_" + std::to_string(std::random_device()()))) {
        platform::setRoamingAppDataFolder(path_);
        fs::create_directories(gf_parameterFolder());
        fs::current_path(path_);
        gf_writeDefaultParameters();
    }
    ~Settings() {
        std::error_code ignored;
        fs::current_path(fs::temp_directory_path(), ignored);
        fs::remove_all(path_, ignored);
    }
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

private:
    fs::path path_;
};

template <typename Work>
double medianMs(Work work) {
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        const platform::SteadyTime start = platform::steadyNow();
        work(round);
        times.push_back(std::chrono::duration<double, std::milli>(platform::steadyNow() - start).count());
    }
    std::nth_element(times.begin(), times.begin() + rounds / 2, times.end());
    return times[rounds / 2];
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
    const Settings settings;
    const auto print = [filter](std::string_view name, auto work) {
        if (name.find(filter) != std::string_view::npos) {
            std::printf("%s = %.3f ms\n", std::string(name).c_str(), medianMs(work));
        }
    };
    print("parameters.save_ms", saveOneSetting);
    print("parameters.read_ms", readAllSettings);
    return 0;
}
