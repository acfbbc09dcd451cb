#include "server/ApiHandler.h"

#include "base/Logging.h"
#include "platform/HttpClient.h"
#include "platform/Json.h"
#include "platform/Services.h"
#include "platform/TrustPolicy.h"
#include "server/SessionAnswer.h"
#include "session/JoinSessionDetails.h"

#include <memory>
#include <mutex>

namespace join {

namespace {

std::mutex instanceLock;
std::unique_ptr<ApiHandler> apiObj;

constexpr int statusOk = 200;

std::string sessionCheckUrl(const JoinSessionDetails& details) {
    return formatted("https://%@/api/public/json/meetings/checkSessionID?key=%@&installed-version=%@&os=mac",
                     details.webServerName(), details.key(), details.localTavoAppVersion());
}

/// Processes the body of an answer with status 200.
void applyAnswer(std::string_view method, std::string_view body, JoinSessionDetails& details) {
    platform::Json& json = *platform::services().json;
    const auto document = json.parse(body);
    if (!document)
        log("%s : The answer is not a JSON document", method);
    const platform::Value* meeting = document ? meetingOf(*document) : nullptr;
    log("%s : Response : %@", method, meeting ? json.serialise(*meeting) : std::string(absentText));
    if (meeting)
        applyMeeting(*meeting, details);
    const Text refused =
        details.isCdnAvailable()
            ? platform::services().trustPolicy->reasonToRefuse(details.cdnUrl().value_or(std::string()))
            : std::nullopt;
    if (refused) {
        log("%s : The host of the images is refused : %@", method, refused);
        details.isCdnAvailable.set(false);
    }
}

} // namespace

ApiHandler* ApiHandler::getInstance() {
    constexpr auto method = "+[ApiHandler getInstance]";
    try {
        const std::scoped_lock lock(instanceLock);
        if (!apiObj) {
            apiObj = std::make_unique<ApiHandler>();
            log("%s : Update Info Object Allocated", method);
        }
        return apiObj.get();
    } catch (const std::exception& exception) {
        logExceptionBanner(method, exception);
        return nullptr;
    }
}

bool ApiHandler::checkSessionApi() {
    constexpr auto method = "-[ApiHandler checkSessionApi]";
    try {
        JoinSessionDetails& details = session();
        const std::string url = sessionCheckUrl(details);
        const platform::HttpReply reply = platform::services().httpClient->get({.url = url});

        const Text description = reply.error ? Text(reply.error->description) : std::nullopt;
        if (reply.error)
            log("%s : Check Update failed : %@", method, description);
        if (!reply.body)
            log("%s : Error in the HTTP Request(URL: %@) : %@", method, url, description);
        const int status = reply.status.value_or(0);
        log("%s : Request Url URL : %@\n", method, url);
        log("%s : Status code : %ld", method, status);
        if (status != statusOk) {
            log("%s : NSURLConnection failed for this request : %@ and status code : %ld", method, url,
                status);
            return false;
        }
        applyAnswer(method, reply.body.value_or(std::string()), details);
        return true;
    } catch (const std::exception& exception) {
        logExceptionBanner(method, exception);
        return false;
    }
}

} // namespace join
