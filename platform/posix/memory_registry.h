// platform/posix/memory_registry.h
// The registry in memory of the native half, for tests and native runs to fill.
#pragma once

#include <cstdint>
#include <string>

#include "platform/registry.h"

namespace platform {

void setRegistryString(RegistryHive hive, const std::string& key, const std::string& value, const std::string& text);
void setRegistryNumber(RegistryHive hive, const std::string& key, const std::string& value, std::uint32_t number);
void clearRegistry();

} // namespace platform
