// platform/registry.h
// Reading the Windows registry. Natively a registry in memory stands in its place, which starts empty.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace winreg {

/// A failed registry call, with the system's error code.
class RegException : public std::system_error {
public:
    using std::system_error::system_error;
};

} // namespace winreg

namespace platform {

enum class RegistryHive { machine, user };

/// Whether the key can be opened for reading.
bool registryKeyExists(RegistryHive hive, std::string_view key);

/// The text of a string value. Throws winreg::RegException when the key or the value cannot be read, and
/// std::runtime_error when the text is not valid UTF-16.
std::string readRegistryString(RegistryHive hive, std::string_view key, std::string_view value);
/// The same, and the number of a DWORD value in decimal.
std::string readRegistryStringOrNumber(RegistryHive hive, std::string_view key, std::string_view value);

} // namespace platform
