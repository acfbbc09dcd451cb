#pragma once

#include "base/Text.h"

#include <string>
#include <string_view>
#include <vector>

namespace join {

class JoinSessionDetails;

/// What is kept from an older join details file (its format is that of JoinParameterFile.h). The pieces refer
/// to the text that was read.
struct OldJoinDetails {
    std::vector<std::string_view> keptPieces;       ///< the connection items, verbatim and in order
    std::vector<std::string_view> roleChangePieces; ///< dropped, but logged
    Text webServerName;
    Text gatewayName;
    Text defaultGatewayName;
};

/// Reads the body of an older join details file. Only the service's connection items are kept; of the rest,
/// the last host names are remembered.
OldJoinDetails readOldJoinDetails(std::string_view body);

/// Returns the text of a join details file for a session without an older one: key, e-mail, hosts and the
/// default ports.
std::string freshJoinDetails(const JoinSessionDetails& details);

/// Returns the text of a join details file that replaces an older one: its connection items, then the current
/// session's values. An absent value is written as "(null)".
std::string updatedJoinDetails(const OldJoinDetails& old, const JoinSessionDetails& details);

} // namespace join
