// A scene file: whatever it holds, it is a scene or a SceneError, and a world with that scene runs.
#include <cstdint>
#include <string_view>

#include "rig/world/scene_reader.h"
#include "rig/world/world.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr int frames = 20;
    constexpr double frameSeconds = 5;
    try {
        rig::World world(rig::sceneFrom(std::string_view(reinterpret_cast<const char*>(data), size), "scene"), {});
        for (int i = 0; i < frames; ++i) {
            world.step(frameSeconds);
        }
    } catch (const rig::SceneError&) {
        return 0;
    }
    return 0;
}
