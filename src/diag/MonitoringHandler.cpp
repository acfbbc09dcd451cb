#include "diag/MonitoringHandler.h"

#include "base/Logging.h"
#include "platform/Clock.h"
#include "platform/Json.h"
#include "platform/Services.h"

#include <algorithm>
#include <optional>

namespace join {

namespace {

platform::Value::Dictionary postDict; ///< the entries as last rebuilt
std::optional<std::string> jsonData;  ///< the entries as JSON; this copy counts

/// A number of at most two digits, in two digits.
std::string twoDigits(int number) {
    return {static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
}

} // namespace

void MonitoringHandler::addkey(const std::string& key, const std::string& value) {
    platform::Json& json = *platform::services().json;
    postDict.clear();
    if (jsonData)
        if (const auto document = json.parse(*jsonData); document && document->dictionary())
            postDict = *document->dictionary();

    const auto entry = std::ranges::find(postDict, key, &platform::Member::name);
    if (entry == postDict.end())
        postDict.push_back({key, {value}});
    else
        entry->value = {value};

    jsonData = json.serialise({postDict});
    log("%s : Time stamp : %@", "+[MonitoringHandler addkey:value:]", *jsonData);
}

std::string MonitoringHandler::currentTime() {
    const platform::LocalTime now = platform::services().clock->localTime();
    const int hour = now.hour % 12 == 0 ? 12 : now.hour % 12;
    return formatted("%@:%@:%@", twoDigits(hour), twoDigits(now.minute), twoDigits(now.second));
}

std::string MonitoringHandler::getJsonString() { return jsonData.value_or(std::string()); }

void MonitoringHandler::forgetEntries() {
    postDict.clear();
    jsonData.reset();
}

} // namespace join
