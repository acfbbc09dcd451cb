#include "diag/MonitoringHandler.h"

#include "base/Logging.h"
#include "platform/Clock.h"
#include "platform/Json.h"
#include "platform/Services.h"
#include "session/ProcessSlots.h"

#include <algorithm>

namespace join {

namespace {

/// Returns a number below 100 in two digits.
std::string twoDigits(int number) {
    return {static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
}

} // namespace

void MonitoringHandler::addkey(const std::string& key, const std::string& value) {
    platform::Json& json = *platform::services().json;
    Text& jsonData = slots().jsonData;
    platform::Value::Dictionary postDict;
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

std::string MonitoringHandler::getJsonString() { return slots().jsonData.value_or(std::string()); }

} // namespace join
