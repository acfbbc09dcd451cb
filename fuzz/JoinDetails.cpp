// A join details file that another program may have written, and the session's values that go into it.

#include "url/JoinDetails.h"
#include "Target.h"
#include "params/JoinParameterFile.h"
#include "session/JoinSessionDetails.h"
#include "url/LaunchUrl.h"

namespace join::fuzz {

namespace {

/// The next text as a launch URL could bring it, without separators of items. Nothing at the end.
Text takeValue(std::string_view& input) {
    if (input.empty())
        return std::nullopt;
    const std::string_view text = takeText(input);
    return launchUrlText(text.substr(0, text.find_first_of("&=")));
}

bool hasEquals(const Text& text) { return text && text->find('=') != std::string::npos; }

} // namespace

void tryOut(std::string_view input) {
    const std::string_view file = takeText(input);
    JoinSessionDetails details;
    using Details = JoinSessionDetails;
    for (const auto property :
         {&Details::key, &Details::emailID, &Details::gatewayName, &Details::defaultGatewayName,
          &Details::webServerName, &Details::viewerId, &Details::group, &Details::authkey})
        (details.*property).set(takeValue(input));

    const std::string_view body = joinParameterBody(file).value_or(std::string_view());
    const OldJoinDetails old = readOldJoinDetails(body);
    for (const std::string_view piece : old.keptPieces)
        require(liesIn(piece, body) && piece.find('&') == std::string_view::npos);

    // Whatever the old file holds, the new one is readable: it keeps the same items, and rewriting it changes
    // nothing.
    const std::string text = updatedJoinDetails(old, details);
    const auto again = joinParameterBody(text);
    require(text.starts_with(joinParameterHeader) && again.has_value());
    const OldJoinDetails reread = readOldJoinDetails(*again);
    require(reread.keptPieces == old.keptPieces);
    if (!hasEquals(old.webServerName) && !hasEquals(old.gatewayName) && !hasEquals(old.defaultGatewayName))
        require(updatedJoinDetails(reread, details) == text);
    require(readOldJoinDetails(freshJoinDetails(details)).keptPieces ==
            std::vector<std::string_view>{"gatewayPort=443", "webServerPort=443"});
}

} // namespace join::fuzz
