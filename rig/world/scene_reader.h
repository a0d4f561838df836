// rig/world/scene_reader.h
// Scene files: JSON, as docs/rig.md describes them.
// Functions without state: usable from any thread.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

#include "rig/world/scene.h"

namespace rig {

/// Its text names the file, the place in it, and what is wrong there.
class SceneError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws SceneError; `text` is JSON, `name` what it calls the file.
Scene sceneFrom(std::string_view text, const std::string& name);
Scene readScene(const std::filesystem::path& file);

} // namespace rig
