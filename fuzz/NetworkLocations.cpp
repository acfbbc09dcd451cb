// What NetworkManager says about its connections; a wireless network is called as its owner likes.

#include "Target.h"
#include "platform/Utf8.h"
#include "platform/linux/scselect/ActiveConnections.h"
#include "platform/linux/scselect/LocationList.h"

#include <algorithm>

namespace join::fuzz {

void tryOut(std::string_view input) {
    using namespace platform::scselect;
    Locations locations{.connections = parseConnections(input), .interfaces = {}};
    const std::string name(input);
    locations.connections.push_back({.name = name, .type = name, .device = name});
    const std::string text = describe(locations);
    const std::size_t lines = std::min<std::size_t>(locations.connections.size() + 1, 100);
    require(static_cast<std::size_t>(std::ranges::count(text, '\n')) == lines);
    require(text.size() < 65536 && platform::isUtf8(text));
    const auto isControl = [](unsigned char byte) { return (byte < 0x20 && byte != '\n') || byte == 0x7F; };
    require(std::ranges::none_of(text, isControl));
}

} // namespace join::fuzz
