// platform/posix/registry.cpp
#include "platform/registry.h"

#include <cerrno>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <variant>

#include "platform/posix/memory_registry.h"

namespace platform {

namespace {

using Value = std::variant<std::string, std::uint32_t>;
using Values = std::map<std::string, Value, std::less<>>;
using Keys = std::map<std::string, Values, std::less<>>;

std::mutex registryLock;
std::map<RegistryHive, Keys> hives; // under registryLock

winreg::RegException notFound(const char* text) {
    return {std::error_code(ENOENT, std::generic_category()), text};
}

Value registryValue(RegistryHive hive, std::string_view key, std::string_view value) {
    const std::lock_guard lock(registryLock);
    const Keys& keys = hives[hive];
    const auto values = keys.find(key);
    if (values == keys.end()) {
        throw notFound("RegOpenKeyExW failed.");
    }
    const auto found = values->second.find(value);
    if (found == values->second.end()) {
        throw notFound("Cannot get the size of the string value: RegGetValueW failed.");
    }
    return found->second;
}

} // namespace

void setRegistryString(RegistryHive hive, const std::string& key, const std::string& value, const std::string& text) {
    const std::lock_guard lock(registryLock);
    hives[hive][key][value] = text;
}

void setRegistryNumber(RegistryHive hive, const std::string& key, const std::string& value, std::uint32_t number) {
    const std::lock_guard lock(registryLock);
    hives[hive][key][value] = number;
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
    const Value found = registryValue(hive, key, value);
    if (!std::holds_alternative<std::string>(found)) {
        throw notFound("Cannot get the size of the string value: RegGetValueW failed.");
    }
    return std::get<std::string>(found);
}

std::string readRegistryStringOrNumber(RegistryHive hive, std::string_view key, std::string_view value) {
    const Value found = registryValue(hive, key, value);
    const auto* number = std::get_if<std::uint32_t>(&found);
    return number != nullptr ? std::to_string(*number) : std::get<std::string>(found);
}

} // namespace platform
