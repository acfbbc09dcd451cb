// The web server's answer to the session check.

#include "server/SessionAnswer.h"
#include "Target.h"
#include "platform/Exception.h"
#include "platform/Utf8.h"
#include "platform/linux/documents/NlohmannJson.h"
#include "session/JoinSessionDetails.h"

namespace join::fuzz {

void tryOut(std::string_view input) {
    platform::NlohmannJson json;
    const auto answer = json.parse(input);
    if (!answer)
        return;
    const std::string written = json.serialise(*answer);
    const auto again = json.parse(written);
    require(platform::isUtf8(written) && again.has_value() && json.serialise(*again) == written);

    JoinSessionDetails details;
    try {
        if (const platform::Value* meeting = meetingOf(*answer))
            applyMeeting(*meeting, details);
    } catch (const platform::Exception& exception) {
        require(*exception.what() != '\0');
    }
    require(!details.isAwsAvailable() || isFilled(details.awsUrl()));
    require(!details.isCdnAvailable() || isFilled(details.cdnUrl()));
}

} // namespace join::fuzz
