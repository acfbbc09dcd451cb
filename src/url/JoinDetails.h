#pragma once

#include "base/Text.h"

#include <string>
#include <string_view>
#include <vector>

namespace join {

class JoinSessionDetails;

/// What is taken over from an older join details file (its format is that of JoinParameterFile.h). The pieces
/// refer to the text that was read.
struct OldJoinDetails {
    std::vector<std::string_view> keptPieces;       ///< the connection items, verbatim and in their order
    std::vector<std::string_view> roleChangePieces; ///< dropped, but logged
    Text webServerName;
    Text gatewayName;
    Text defaultGatewayName;
};

/// Walks the body of an older join details file. Only the connection items of the service survive; of the
/// rest the last host names are remembered.
OldJoinDetails readOldJoinDetails(std::string_view body);

/// The text of a join details file for a session where there was none: key, e-mail, hosts and the default
/// ports.
std::string freshJoinDetails(const JoinSessionDetails& details);

/// The text of a join details file that follows on an older one: its connection items, then the values of the
/// session in hand. An absent value is written as "(null)".
std::string updatedJoinDetails(const OldJoinDetails& old, const JoinSessionDetails& details);

} // namespace join
