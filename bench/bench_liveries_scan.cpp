// What a scan of a big collection of liveries costs, warm, against reading the same files to memory with the same
// number of threads, and against finding them first, as a scan must. Usage: bench_liveries_scan [FILTER]
#include <algorithm>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "bench/measuring.h"
#include "core/run_flags.h"
#include "liveries/livery_scan.h"
#include "liveries/reference_tables.h"

namespace fs = std::filesystem;

namespace {

constexpr int aircraft = 12'000;
constexpr int sectionsEach = 5;
constexpr int rounds = 5;
constexpr const char* root = "liveries";

std::atomic<std::size_t> sink = 0; // keeps the compiler from leaving work out

// --- The tree ---

/// What stands below the sections of an AI aircraft: weights, engines, contact points and lights.
std::string flightModel() {
    std::string text = "[General]\natc_type=SAMPLE\natc_model=A320\neditable=0\n";
    for (const char* name : {"WEIGHT_AND_BALANCE", "flight_tuning", "GeneralEngineData", "TurbineEngineData",
                             "jet_engine", "contact_points", "gear_warning_system", "fuel", "airplane_geometry",
                             "Reference Speeds", "flaps.0", "lights"}) {
        text += fmt::format("\n[{}]\n", name);
        for (int i = 0; i < 14; ++i) {
            text +=
                fmt::format("value_number_{} = 1, 12.50, -7.25, 0.00, 3200, 1, 1.25  // feet, pounds, degrees\n", i);
        }
    }
    return text;
}

std::string section(int number, int file, bool isShared) {
    return fmt::format("[fltsim.{0}]\ntitle=Sample A320 number {1} {0}\nsim=sample_a320\nmodel=std\npanel=\nsound=\n"
                       "texture={2}\nkb_checklists=\nkb_reference=\natc_id=\natc_airline=SAMPLE AIR\n"
                       "atc_flight_number={1}\natc_heavy=0\natc_parking_types=GATE\natc_parking_codes=KLM,DLH\n"
                       "ui_manufacturer=Airbus\nui_type=A320-200\nui_variation=Sample {1} {0}\n"
                       "ui_typerole=Commercial Airliner\nui_createdby=The makers of the sample\n"
                       "description=An invented livery for measuring, with a line of description as usual\n\n",
                       number, file, isShared ? 0 : number);
}

/// Returns the paths of the files.
std::vector<fs::path> makeTree(bool sharedTextures) {
    std::vector<fs::path> files;
    const std::string model = flightModel();
    for (int file = 0; file < aircraft; ++file) {
        const fs::path folder = fs::path(root) / fmt::format("package {}", file % 40) / fmt::format("sample_{}", file);
        std::string text;
        for (int i = 0; i < sectionsEach; ++i) {
            text += section(i, file, sharedTextures);
            if (i == 0 || !sharedTextures) {
                fs::create_directories(folder / fmt::format("texture.{}", i));
            }
        }
        fs::create_directory(folder / "model.std");
        std::ofstream(folder / "sample_a320.air", std::ios::binary) << "";
        files.push_back(folder / "aircraft.cfg");
        std::ofstream(files.back(), std::ios::binary) << text << model;
    }
    return files;
}

// --- What is measured ---

void readFile(const fs::path& file) {
    std::string bytes(fs::file_size(file), '\0');
    std::ifstream(file, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    sink += static_cast<std::size_t>(bytes.back());
}

/// As many threads as there may be do the work, each to its end.
void onThreads(int threads, const std::function<void()>& work) {
    std::vector<std::thread> all;
    all.reserve(static_cast<std::size_t>(threads));
    for (int i = 0; i < threads; ++i) {
        all.emplace_back(work);
    }
    for (std::thread& thread : all) {
        thread.join();
    }
}

void readAll(const std::vector<fs::path>& files, int threads) {
    std::atomic<std::size_t> next = 0;
    onThreads(threads, [&] {
        for (std::size_t at = next++; at < files.size(); at = next++) {
            readFile(files[at]);
        }
    });
}

/// The folders that are still to be looked into.
class OpenFolders {
public:
    void push(std::vector<fs::path> folders) {
        const std::lock_guard lock(lock_);
        folders_.insert(folders_.end(), folders.begin(), folders.end());
    }
    /// The last ones; waits while there are none but others are still looking. None at the end.
    std::vector<fs::path> pop() {
        constexpr std::size_t atOnce = 8;
        for (;; std::this_thread::yield()) {
            const std::lock_guard lock(lock_);
            if (!folders_.empty()) {
                const auto begin = folders_.end() - static_cast<std::ptrdiff_t>(std::min(atOnce, folders_.size()));
                std::vector<fs::path> last(begin, folders_.end());
                folders_.erase(begin, folders_.end());
                ++looking_;
                return last;
            }
            if (looking_ == 0) {
                return {};
            }
        }
    }
    void done() {
        const std::lock_guard lock(lock_);
        --looking_;
    }

private:
    std::mutex lock_;
    std::vector<fs::path> folders_;
    int looking_ = 0;
};

/// The least that a program must do which is told the folder alone.
void findAndReadAll(int threads) {
    OpenFolders open;
    open.push({root});
    onThreads(threads, [&open] {
        for (auto folders = open.pop(); !folders.empty(); folders = open.pop()) {
            std::vector<fs::path> inside;
            for (const fs::path& folder : folders) {
                for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
                    if (entry.is_directory()) {
                        inside.push_back(entry.path());
                    } else if (entry.path().extension() == ".cfg") {
                        readFile(entry.path());
                    }
                }
            }
            open.push(std::move(inside));
            open.done();
        }
    });
}

template <typename Work>
double medianOf(Work work) {
    work(); // warms the cache
    std::vector<double> times;
    times.reserve(static_cast<std::size_t>(rounds));
    for (int i = 0; i < rounds; ++i) {
        times.push_back(millisecondsOf(work));
    }
    return median(times);
}

void scanAll() {
    sink += lf_scanFolders({root}) ? 1 : 0;
}

void measure(std::string_view filter, std::string_view prefix, const std::vector<fs::path>& files) {
    const int threads = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    const auto name = [prefix](std::string_view figure) { return fmt::format("{}{}", prefix, figure); };
    const double reading = medianOf([&] { readAll(files, threads); });
    const double finding = medianOf([&] { findAndReadAll(threads); });
    gHardwareThreads = 1;
    const double alone = medianOf(scanAll);
    gHardwareThreads = threads;
    const double scanning = medianOf(scanAll);
    print(filter, name("threads"), threads, "threads");
    print(filter, name("read_ms"), reading, "ms");
    print(filter, name("find_and_read_ms"), finding, "ms");
    print(filter, name("scan_ms"), scanning, "ms");
    print(filter, name("scan_one_thread_ms"), alone, "ms");
    print(filter, name("speed_up"), alone / scanning, "x");
    print(filter, name("over_read"), scanning / reading, "x");
    print(filter, name("over_find_and_read"), scanning / finding, "x");
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view filter = argc > 1 ? argv[1] : "";
    if (!filter.empty() && !filter.starts_with("scan")) {
        return 0;
    }
    gAllTypes = {"A320"};
    gIcaoAirlines = {"KLM", "DLH"};
    {
        const WorkFolder folder;
        measure(filter, "scan.", makeTree(true));
    }
    {
        const WorkFolder folder;
        measure(filter, "scan.own_textures.", makeTree(false));
    }
    return sink == 0 ? 1 : 0;
}
