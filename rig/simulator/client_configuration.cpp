// rig/simulator/client_configuration.cpp
#include "rig/simulator/client_configuration.h"

#include <fmt/format.h>

namespace rig {

std::string clientConfiguration(const WaysIn& ways) {
    std::string text;
    int index = 0;
    const auto section = [&](const char* protocol, const std::string& address, const std::string& port) {
        text += index == 0 ? "[SimConnect]\n" : fmt::format("[SimConnect.{}]\n", index);
        text += fmt::format("Protocol={}\n", protocol);
        text += address.empty() ? "" : fmt::format("Address={}\n", address);
        text += fmt::format("Port={}\n", port);
        ++index;
    };
    if (ways.port) {
        section("IPv4", "127.0.0.1", std::to_string(*ways.port));
    }
    if (ways.port6) {
        section("IPv6", "::1", std::to_string(*ways.port6));
    }
    if (ways.pipe) {
        section("Pipe", "", *ways.pipe);
    }
    return text;
}

} // namespace rig
