// platform/posix/registry.cpp
#include "platform/registry.h"

#include <cerrno>
#include <map>
#include <mutex>

#include "platform/posix/memory_registry.h"

namespace platform {

namespace {

using Values = std::map<std::string, std::string, std::less<>>;
using Keys = std::map<std::string, Values, std::less<>>;

std::mutex registryLock;
std::map<RegistryHive, Keys> hives; // under registryLock

winreg::RegException notFound(const char* text) {
    return {std::error_code(ENOENT, std::generic_category()), text};
}

} // namespace

void setRegistryString(RegistryHive hive, const std::string& key, const std::string& value, const std::string& text) {
    const std::lock_guard lock(registryLock);
    hives[hive][key][value] = text;
}

void clearRegistry() {
    const std::lock_guard lock(registryLock);
    hives.clear();
}

bool registryKeyExists(RegistryHive hive, std::string_view key) {
    const std::lock_guard lock(registryLock);
    const Keys& keys = hives[hive];
    return keys.find(key) != keys.end();
}

std::string readRegistryString(RegistryHive hive, std::string_view key, std::string_view value) {
    const std::lock_guard lock(registryLock);
    const Keys& keys = hives[hive];
    const auto found = keys.find(key);
    if (found == keys.end()) {
        throw notFound("RegOpenKeyExW failed.");
    }
    const auto text = found->second.find(value);
    if (text == found->second.end()) {
        throw notFound("Cannot get the size of the string value: RegGetValueW failed.");
    }
    return text->second;
}

} // namespace platform
