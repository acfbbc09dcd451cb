#include "platform/linux/scselect/LocationList.h"

#include "platform/linux/LogText.h"

#include <algorithm>
#include <string_view>

namespace join::platform::scselect {

namespace {

constexpr std::size_t maximumLocations = 98; ///< with the heading and the rest's line, 100 lines
constexpr std::size_t maximumName = 64;      ///< in bytes, before control characters are made visible
constexpr std::size_t maximumWord = 32;

std::string shortened(std::string_view text, std::size_t maximum) {
    if (text.size() <= maximum)
        return std::string(text);
    const auto isInsideCharacter = [&] {
        return (static_cast<unsigned char>(text[maximum]) & 0xC0U) == 0x80;
    };
    while (maximum > 0 && isInsideCharacter())
        --maximum;
    return std::string(text.substr(0, maximum)) + "…";
}

std::string visible(std::string_view text, std::size_t maximum) {
    std::string result;
    for (const char c : escapedForLog(shortened(text, maximum))) {
        if (c == '\n')
            result += "\\x0A";
        else if (c == '\t')
            result += "\\x09";
        else
            result += c;
    }
    return result;
}

std::string describe(const Connection& connection) {
    std::string details = visible(connection.type, maximumWord);
    if (!connection.device.empty())
        details += ", " + visible(connection.device, maximumWord);
    return visible(connection.name, maximumName) + " (" + details + ")";
}

std::string describe(const Interface& interface) {
    std::string families = interface.hasIpv4 ? "IPv4" : "";
    if (interface.hasIpv6)
        families += families.empty() ? "IPv6" : ", IPv6";
    return visible(interface.name, maximumWord) + " (" + (families.empty() ? "no address" : families) + ")";
}

template <typename Location>
std::string list(const std::vector<Location>& locations) {
    std::string lines;
    const std::size_t count = std::min(locations.size(), maximumLocations);
    for (std::size_t i = 0; i < count; ++i)
        lines += " * " + describe(locations[i]) + '\n';
    if (count < locations.size())
        lines += "   and " + std::to_string(locations.size() - count) + " more\n";
    return lines;
}

} // namespace

std::string describe(const Locations& locations) {
    const std::string heading = "Network locations of this computer (* is in use):\n";
    if (!locations.connections.empty())
        return heading + list(locations.connections);
    if (!locations.interfaces.empty())
        return heading + list(locations.interfaces);
    return heading + "   no network\n";
}

} // namespace join::platform::scselect
