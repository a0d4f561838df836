// cmake/precompiled.h
// What most sources include, parsed once for all libraries of a build: a third of their compile time. Each source still
// includes what it uses; the lint and the release build have no precompiled headers.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
