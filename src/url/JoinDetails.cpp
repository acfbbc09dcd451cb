#include "url/JoinDetails.h"

#include "base/Format.h"
#include "params/JoinParameterFile.h"
#include "session/JoinSessionDetails.h"

#include <algorithm>
#include <array>
#include <utility>

namespace join {

namespace {

constexpr std::array<std::string_view, 7> keptNames = {
    "webServerPort",         "authToken",         "gatewayPort",    "_tracker",
    "writeSocketDataToFile", "webSiteDomainName", "joinDomainName",
};

void appendPair(std::string& text, std::string_view name, const Text& value) {
    text.append("&").append(name).append("=").append(value ? std::string_view(*value) : absentText);
}

void appendIfFilled(std::string& text, std::string_view name, const Text& value) {
    if (isFilled(value))
        appendPair(text, name, value);
}

Text filledOr(Text value, Text otherwise) {
    return isFilled(value) ? std::move(value) : std::move(otherwise);
}

} // namespace

OldJoinDetails readOldJoinDetails(std::string_view body) {
    OldJoinDetails old;
    for (const std::string_view piece : split(body, "&")) {
        const auto begins = [&](std::string_view name) { return piece.starts_with(name); };
        if (std::ranges::any_of(keptNames, begins)) {
            old.keptPieces.push_back(piece);
        } else if (begins("role_change_on_init")) {
            old.roleChangePieces.push_back(piece);
        }
        for (const auto& [name, value] : {std::pair{"webServerName", &old.webServerName},
                                          {"gatewayName", &old.gatewayName},
                                          {"defaultGatewayName", &old.defaultGatewayName}})
            if (begins(name))
                *value = joinParameterValue(piece, name);
    }
    return old;
}

std::string freshJoinDetails(const JoinSessionDetails& details) {
    return std::string(joinParameterHeader) +
           formatted("&key=%@&email=%@&gatewayName=%@&webServerName=%@&&gatewayPort=443&webServerPort=443&",
                     details.key(), details.emailID(), details.gatewayName(), details.webServerName());
}

std::string updatedJoinDetails(const OldJoinDetails& old, const JoinSessionDetails& details) {
    std::string text(joinParameterHeader);
    for (const std::string_view piece : old.keptPieces)
        text.append("&").append(piece);
    appendIfFilled(text, "role_change_on_init", details.roleChangeOnInit());
    appendIfFilled(text, "viewer_id", details.viewerId());
    appendIfFilled(text, "first_time_install", details.firstTimeInstall());
    appendIfFilled(text, "isConfirmationNeeded", details.isConfirmationNeeded());
    appendPair(text, "gatewayName", filledOr(details.gatewayName(), old.gatewayName));
    appendPair(text, "defaultGatewayName", filledOr(details.defaultGatewayName(), old.defaultGatewayName));
    appendIfFilled(text, "authkey", details.authkey());
    appendPair(text, "webServerName", filledOr(details.webServerName(), old.webServerName));
    appendPair(text, "isDemoMode", filledOr(details.isDemoMode(), "false"));
    appendPair(text, "isDemoTech", filledOr(details.isDemoTech(), "false"));
    appendPair(text, "group", filledOr(details.group(), "null"));
    appendPair(text, "email", details.emailID());
    appendPair(text, "key", details.key());
    return text += '&';
}

} // namespace join
