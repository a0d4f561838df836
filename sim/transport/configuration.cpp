// sim/transport/configuration.cpp
#include "sim/transport/configuration.h"

#include <algorithm>
#include <exception>
#include <string_view>
#include <system_error>

#include <fmt/printf.h>

#include "core/run_flags.h"
#include "core/text_files.h"
#include "platform/files.h"
#include "platform/registry.h"
#include "sim/transport/ini_text.h"
#include "sim/transport/wire_format.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t maxTextCharacters = 1024;

struct ProtocolName {
    std::string_view name;
    Protocol protocol;
};

constexpr ProtocolName protocolNames[] = {
    {"Auto", Protocol::pipe},
    {"IPv4", Protocol::ipv4},
    {"IPv6", Protocol::ipv6},
    {"Pipe", Protocol::pipe},
};

Protocol protocolFrom(std::string_view text) {
    for (const ProtocolName& known : protocolNames) {
        if (equalsWithoutCase(text, known.name)) {
            return known.protocol;
        }
    }
    return Protocol::pipe;
}

std::string sectionName(std::uint32_t configIndex) {
    return configIndex == 0 ? "SimConnect" : fmt::sprintf("SimConnect.%u", configIndex);
}

bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

std::string firstCharacters(std::string_view text, std::size_t count) {
    std::size_t characters = 0;
    const auto end = std::find_if(text.begin(), text.end(),
                                  [&](char byte) { return beginsCharacter(byte) && ++characters > count; });
    return {text.begin(), end};
}

int wantedSimulatorVersion() {
    const int version = gSimulatorVersion;
    return version == 0 ? 5 : version;
}

std::string registryPort(Protocol protocol) {
    const std::string key = fmt::sprintf("SOFTWARE\\Lockheed Martin\\Prepar3D v%d", wantedSimulatorVersion());
    try {
        return platform::readRegistryStringOrNumber(platform::RegistryHive::user, key,
                                                    protocol == Protocol::ipv6 ? "SimConnect_Port_IPv6"
                                                                               : "SimConnect_Port_IPv4");
    } catch (const std::exception&) {
        return {}; // no simulator has run yet
    }
}

std::vector<std::string> linesOfFile(const fs::path& file) {
    std::vector<std::string> lines;
    const Charset charset = charsetOfFile(file);
    if (charset != Charset::none_found) {
        readLines(charset, file, lines);
    }
    return lines;
}

} // namespace

fs::path configurationFile() {
    for (const fs::path& folder : {platform::publicDocumentsFolder(), platform::documentsFolder(), fs::path(".")}) {
        std::error_code ignored;
        if (fs::path file = folder / "SimConnect.cfg"; !folder.empty() && fs::is_regular_file(file, ignored)) {
            return file;
        }
    }
    return {};
}

ConnectionSettings settingsFrom(const std::vector<std::string>& lines, std::uint32_t configIndex) {
    const auto value = [&, section = sectionName(configIndex)](std::string_view key) {
        return iniValue(lines, section, key);
    };
    const auto number = [&](std::string_view key) { return leadingNumber(value(key)); };
    ConnectionSettings settings;
    settings.protocol = protocolFrom(value("Protocol"));
    settings.address = firstCharacters(value("Address"), maxTextCharacters);
    settings.port = firstCharacters(value("Port"), maxTextCharacters);
    settings.maxRecordBytes =
        std::max(builtInReceiveLimit, static_cast<std::size_t>(std::max(number("MaxReceiveSize"), 0)));
    settings.disableNagle = number("DisableNagle") != 0;
    return settings;
}

ConnectionSettings readSettings(std::uint32_t configIndex) {
    return settingsFrom(linesOfFile(configurationFile()), configIndex);
}

std::string pipeName(const ConnectionSettings& settings) {
    const std::string host = settings.address.empty() ? "." : settings.address;
    if (settings.port.empty()) {
        return fmt::sprintf("\\\\%s\\pipe\\Lockheed Martin Prepar3D v%d\\SimConnect", host, wantedSimulatorVersion());
    }
    return fmt::sprintf("\\\\%s\\pipe\\%s", host, settings.port);
}

std::string hostName(const ConnectionSettings& settings) {
    if (!settings.address.empty()) {
        return settings.address;
    }
    return settings.protocol == Protocol::ipv6 ? "::1" : "127.0.0.1";
}

std::optional<std::uint16_t> portNumber(const ConnectionSettings& settings) {
    const int port = leadingNumber(settings.port.empty() ? registryPort(settings.protocol) : settings.port);
    if (port < 1 || port > 65535) {
        return std::nullopt;
    }
    return static_cast<std::uint16_t>(port);
}
