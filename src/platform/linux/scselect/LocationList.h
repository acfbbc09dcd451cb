#pragma once

#include <string>
#include <vector>

namespace join::platform::scselect {

/// A connection of NetworkManager that is active.
struct Connection {
    std::string name; ///< as the user calls it: any text
    std::string type;
    std::string device;

    bool operator==(const Connection&) const = default;
};

/// A network interface that is up.
struct Interface {
    std::string name;
    bool hasIpv4 = false;
    bool hasIpv6 = false;
};

struct Locations {
    std::vector<Connection> connections;
    std::vector<Interface> interfaces; ///< told only when there are no connections
};

/// The locations for people to read: a heading and a line for each, or one that says that there is none.
/// Names are shortened, their control characters visible, and the lines bounded: the whole fits into a pipe
/// that nobody reads before the program has ended.
std::string describe(const Locations& locations);

} // namespace join::platform::scselect
