// tests/liveries/scan_test.h
// Aircraft folders in a temporary folder, and a small world of types and airlines to scan them by.
#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "core/detached_threads.h"
#include "core/exit_reason.h"
#include "core/parameters.h"
#include "core/run_flags.h"
#include "liveries/folder_walk.h"
#include "liveries/livery.h"
#include "liveries/livery_file.h"
#include "liveries/livery_scan.h"
#include "liveries/reference_tables.h"
#include "liveries/registration_codes.h"
#include "liveries/scan_reports.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"
#include "window/window_state.h"

class ScanTest : public testing::Test {
public:
    ScanTest(const ScanTest&) = delete;
    ScanTest& operator=(const ScanTest&) = delete;
    ~ScanTest() override {
        gf_waitForDetachedThreads(std::chrono::seconds(10)); // those of the scans
        reset();
    }

protected:
    ScanTest() {
        reset();
        gAllTypes = {"A320", "B738", "B744", "C172", "T154", "GLID"};
        gCategoryTypes.heavy = {"B744"};
        gCategoryTypes.large = {"A320", "B738", "T154"};
        gFixes = {{"A32", "A320"}};
        gIcaoAirlines = {"KLM", "DLH", "AFR", "ZZZ"};
        DbaseTable.insert("PH-BXA", {"KLM", "B738", {}, false});
        DbaseTable.insert("D-AIDA", {"AUA", "A320", "DLH", false});
        DbaseTable.insert("D-ECAR", {{}, "C172", {}, false});
        DbaseTable.insert("PH-BCA", {"KLM", "B744", {}, true});
        DbaseTable.insert("N12AB", {{}, "C172", {}, false});
    }

    static void reset() {
        resetReferenceTables();
        resetParameters();
        resetRegistrationCodes();
        resetWindowState();
        gf_resetExitReason();
        gProductionMode = false;
        gCloseButtonUsed = false;
        gHardwareThreads = 2;
        Liveries.clear();
        takeNewScan();
    }

    /// An aircraft.cfg with its stand-ins: a model, a texture and an air file.
    static std::filesystem::path makeAircraft(const std::filesystem::path& folder, std::string_view cfg,
                                              std::string_view name = "aircraft.cfg") {
        for (const char* inner : {"model.M", "texture.T"}) {
            std::filesystem::create_directories(folder / inner);
        }
        writeFile(folder / "S.air", "");
        writeFile(folder / name, cfg);
        return folder / name;
    }

    /// A section whose model, air file and texture makeAircraft has made.
    static std::string section(int number, std::string_view values) {
        return "[fltsim." + std::to_string(number) + "]\nmodel=M\nsim=S\ntexture=T\n" + std::string(values) + "\n";
    }
    static std::string general(std::string_view type) { return "[General]\natc_model=" + std::string(type) + "\n"; }

    static void setFolder(std::size_t index, std::string_view folder) { lfolder[index].setValue(folder); }

    LogCapture log_; // its folder is the working directory
};

/// The texts of all files that a scan of the folder reads; `entered` gets the folders that it looks into.
inline std::vector<std::string> filesToScan(const std::filesystem::path& folder,
                                            std::vector<std::string>* entered = nullptr) {
    std::vector<std::string> files;
    std::vector<FolderToScan> open{rootToScan(folder)};
    while (!open.empty()) {
        const FolderToScan next = std::move(open.back());
        open.pop_back();
        FolderContents contents = contentsOf(next);
        if (entered != nullptr) {
            entered->push_back(next.text);
        }
        for (const ScannedFile& file : contents.cfgFiles) {
            files.push_back(file.text);
        }
        std::move(contents.folders.begin(), contents.folders.end(), std::back_inserter(open));
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// What LiveriesScanned.xml holds.
inline std::list<Livery> readLiveries() {
    const ScannedLiveries scanned = lf_readLiveries();
    std::list<Livery> liveries;
    for (const LiveryView& view : scanned.liveries) {
        liveries.push_back({std::string(view.airl), std::string(view.type), std::string(view.title),
                            std::string(view.atcid), 0, view.cargo});
    }
    return liveries;
}

inline std::vector<std::string> titlesOf(const std::list<Livery>& liveries) {
    std::vector<std::string> titles;
    for (const Livery& livery : liveries) {
        titles.push_back(livery.title);
    }
    return titles;
}

inline bool operator==(const Livery& a, const Livery& b) {
    return a.airl == b.airl && a.type == b.type && a.title == b.title && a.atcid == b.atcid && a.scan == b.scan &&
           a.cargo == b.cargo;
}

inline void PrintTo(const Livery& livery, std::ostream* stream) {
    *stream << livery.airl << ' ' << livery.type << " '" << livery.title << "' " << livery.atcid << ' ' << livery.scan
            << (livery.cargo ? " cargo" : "");
}
