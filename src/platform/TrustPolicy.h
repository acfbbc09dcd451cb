#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace join::platform {

/// Which web servers Join may talk to, as the administrator of the computer has decided.
class TrustPolicy {
public:
    virtual ~TrustPolicy() = default;

    /// Takes what is to be a server, a host with an optional port. Returns why it may not be asked, naming it,
    /// or nothing if it may. If the administrator has decided nothing, that is so for every text; otherwise a
    /// text that is not a host with an optional port may never be asked. Any thread.
    virtual std::optional<std::string> reasonToRefuse(std::string_view server) const = 0;
};

} // namespace join::platform
