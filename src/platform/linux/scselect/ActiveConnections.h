#pragma once

#include "platform/linux/scselect/LocationList.h"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace join::platform::scselect {

/// What `nmcli -t -f NAME,TYPE,DEVICE` prints: lines of three fields with a colon between them; a backslash
/// makes the colon or backslash after it a part of the field. Lines of another shape and the loopback are
/// left out.
std::vector<Connection> parseConnections(std::string_view text);

/// How NetworkManager is asked.
struct NetworkManager {
    std::string nmcli = "/usr/bin/nmcli";
    std::chrono::milliseconds patience = std::chrono::seconds(2);
};

/// The connections that are active; none when it cannot be asked, does not answer in time, fails or tells
/// endless stories. For a process with one thread.
std::vector<Connection> activeConnections(const NetworkManager& manager);

} // namespace join::platform::scselect
