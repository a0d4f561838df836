// The map in a real browser, without a screen; skipped where there is none.
#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "rig/map/map_server.h"
#include "rig/map/world_json.h"
#include "tests/support/temporary_folder.h"

using namespace rig;
using ::testing::AllOf;
using ::testing::HasSubstr;

namespace {

std::string outputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string output;
    std::array<char, 4096> part{};
    while (pipe != nullptr) {
        const std::size_t got = std::fread(part.data(), 1, part.size(), pipe.get());
        if (got == 0) {
            break;
        }
        output.append(part.data(), got);
    }
    return output;
}

} // namespace

TEST(MapInBrowserThreads, showsTheAircraftWithCallSignPhaseAndTheValuesOfTheSelectedOne) {
    if (outputOf("command -v chromium").empty()) {
        GTEST_SKIP() << "no chromium here";
    }
    const TemporaryFolder folder;
    Scene scene;
    ForeignObjectAct act;
    act.title = "Airliner";
    act.tailNumber = "N1<b>";
    act.at = {52.31, 4.77};
    scene.acts.push_back({0, act});
    AircraftTitles titles;
    titles.addLines({"[fltsim.0]", "title=Airliner", "[General]", "atc_model=B738"});
    World world(scene, titles);
    for (int i = 0; i < framesUntilSeen; ++i) {
        world.step();
    }
    MapServer server(0);
    server.publish(worldJson(world));

    const std::string page = outputOf(
        fmt::format("chromium --headless --no-sandbox --disable-gpu --user-data-dir='{}' --virtual-time-budget=3000 "
                    "--dump-dom 'http://127.0.0.1:{}/#{}' 2>/dev/null",
                    (folder.path() / "browser").native(), server.port(), firstAircraftId));

    EXPECT_THAT(page,
                AllOf(HasSubstr("Lockheed Martin Prepar3D v5"), HasSubstr("running, 30 fps, 0 clients, 1 aircraft")));
    EXPECT_THAT(page, HasSubstr("<td>N1&lt;b&gt;</td><td>B738</td><td>standing</td>"));
    EXPECT_THAT(page, HasSubstr("<td>position</td><td>52.310000 4.770000</td>"));
}
