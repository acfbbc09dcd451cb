// The administrator's policy, and what is to be a web server, which anybody can put into a link.

#include "platform/linux/desktop/Policy.h"
#include "Target.h"

#include <algorithm>
#include <string>

namespace join::fuzz {

void tryOut(std::string_view input) {
    std::string server(takeText(input));
    const platform::Policy policy(input, "p");
    if (const auto reason = policy.reasonToRefuse(server)) {
        require(reason->starts_with(server));
        return;
    }
    if (!policy.reasonToRefuse("")) // every server is allowed
        return;
    require(server.find_first_of("/?#@\\% \t\r\n;*") == std::string::npos);
    require(input.find("WebServers") != std::string_view::npos && input.find('\0') == std::string_view::npos);
    for (char& letter : server)
        if (letter >= 'a' && letter <= 'z')
            letter = static_cast<char>(letter - 'a' + 'A');
    require(!policy.reasonToRefuse(server));
    require(policy.reasonToRefuse(server + "/").has_value() &&
            policy.reasonToRefuse("x@" + server).has_value());
}

} // namespace join::fuzz
