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
    platform::Value::Dictionary& milestones = slots().milestones;
    const auto entry = std::ranges::find(milestones, key, &platform::Member::name);
    if (entry == milestones.end())
        milestones.push_back({key, {value}});
    else
        entry->value = {value};
    log("%s : Time stamp : %@", "+[MonitoringHandler addkey:value:]", getJsonString());
}

std::string MonitoringHandler::currentTime() {
    const platform::LocalTime now = platform::services().clock->localTime();
    const int hour = now.hour % 12 == 0 ? 12 : now.hour % 12;
    return formatted("%@:%@:%@", twoDigits(hour), twoDigits(now.minute), twoDigits(now.second));
}

std::string MonitoringHandler::getJsonString() {
    const platform::Value::Dictionary& milestones = slots().milestones;
    return milestones.empty() ? "" : platform::services().json->serialise({milestones});
}

} // namespace join
