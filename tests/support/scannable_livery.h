// tests/support/scannable_livery.h
// What a scan of the working directory's folder "aircraft" finds.
#pragma once

#include <filesystem>

#include "tests/support/temporary_folder.h"

/// One aircraft of one livery, "Scanned B738" of KLM, with all that a scan asks for.
inline void writeScannableLivery() {
    writeFile("aircraft/KLM B738/aircraft.cfg",
              "[fltsim.0]\ntitle=Scanned B738\nsim=ai\nmodel=\ntexture=KLM\natc_parking_codes=KLM\n"
              "[General]\natc_model=B738\n");
    writeFile("aircraft/KLM B738/ai.air", "");
    std::filesystem::create_directories("aircraft/KLM B738/model");
    std::filesystem::create_directories("aircraft/KLM B738/texture.KLM");
}
