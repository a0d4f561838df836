// core/file_generations.h
// Older copies of a file under its own name with zeros before the last dot. Without state: usable from any thread.
#pragma once

#include <filesystem>

/// Copies the file, when it exists, over its one generation (name0.ext). Failures are error lines; false then.
bool gf_save1GenerationOf(const std::filesystem::path& path);

/// Copies each copy up (name00 to name000, name0 to name00) and the file to name0. Failures are error lines; the other
/// copies are still made, so that one locked old copy does not cost the newest.
void gf_saveUpto3GenerationsOf(const std::filesystem::path& path);
