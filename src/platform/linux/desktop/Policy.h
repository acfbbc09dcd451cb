#pragma once

#include "platform/TrustPolicy.h"

#include <string>
#include <string_view>
#include <vector>

namespace join::platform {

/// The administrator's policy, a file in the format of the Desktop Entry Specification:
///
///   [Trust]
///   WebServers=join.example.com;*.example.org;
///
/// The key holds names of hosts, and patterns for all names below one, but not that name itself. Neither case
/// nor ports matter. Without the key every server is allowed; with an empty list, or if the file cannot be
/// read as what it is, none. Other groups and keys are ignored.
class Policy final : public TrustPolicy {
public:
    /// Reads "tavojoin/policy.conf" in the first folder of $XDG_CONFIG_DIRS, by default /etc/xdg, that has it.
    static Policy ofComputer();

    /// Allows every server.
    Policy() = default;

    /// Takes the contents of the file at a path.
    Policy(std::string_view text, std::string path);

    std::optional<std::string> reasonToRefuse(std::string_view server) const override;

private:
    /// Returns why the text is not a policy, or nothing.
    std::string parse(std::string_view text);

    std::string path_;
    bool allowsAll_ = true;
    std::string trouble_;            ///< why none is allowed
    std::vector<std::string> hosts_; ///< in lower case; a pattern without its star
};

} // namespace join::platform
