#include "params/JoinParameterFile.h"

#include "base/Logging.h"
#include "platform/FileManager.h"
#include "platform/Services.h"
#include "platform/TrustPolicy.h"
#include "platform/Utf8.h"
#include "session/ProcessSlots.h"

#include <algorithm>
#include <array>

namespace join {

namespace {

using Details = JoinSessionDetails;

// The first name that an item begins with takes it, so the order matters.
constexpr std::array<JoinParameter, 17> joinParameters = {{
    {"gatewayName", &Details::gatewayName},
    {"GatewayHost1", &Details::defaultGatewayName},
    {"email", &Details::emailID},
    {"key", &Details::key},
    {"webServerName", &Details::webServerName},
    {"tavoAppVersion", &Details::tavoAppVersion},
    {"firstTime", &Details::firstTime},
    {"joinAppVersion", &Details::joinAppVersion},
    {"role_change_on_init", &Details::roleChangeOnInit},
    {"first_time_install", &Details::firstTimeInstall},
    {"isConfirmationNeeded", &Details::isConfirmationNeeded},
    {"viewer_id", &Details::viewerId},
    {"isDemoMode", &Details::isDemoMode},
    {"isDemoTech", &Details::isDemoTech},
    {"group", &Details::group},
    {"crashDetectorAppVersion", &Details::crashDetectorAppVersion},
    {"authkey", &Details::authkey},
}};

} // namespace

std::optional<std::string_view> joinParameterBody(std::string_view file) {
    if (!platform::isUtf8(file))
        return std::nullopt;
    return dropCharacters(file, joinParameterHeader.size());
}

const JoinParameter* joinParameterOf(std::string_view item) {
    const auto found = std::ranges::find_if(
        joinParameters, [&](const JoinParameter& parameter) { return item.starts_with(parameter.name); });
    return found == joinParameters.end() ? nullptr : &*found;
}

std::string joinParameterValue(std::string_view item, std::string_view name) {
    return removingAll(item, std::string(name) + '=');
}

Text reasonToRefuseParameters(std::string_view body) {
    for (const std::string_view item : split(body, "&")) {
        const JoinParameter* parameter = joinParameterOf(item);
        if (!parameter || parameter->property != &Details::webServerName)
            continue;
        const std::string server = joinParameterValue(item, parameter->name);
        if (auto reason = platform::services().trustPolicy->reasonToRefuse(server))
            return reason;
    }
    return std::nullopt;
}

Text readJoinParameterFile(std::string_view method, const std::string& path) {
    const auto file = files().read(path);
    if (!file) {
        log("%s : There is no file to read at %@", method, path);
        return std::nullopt;
    }
    const auto body = joinParameterBody(*file);
    if (!body) {
        log("%s : The file at %@ is not UTF-8 or shorter than its header", method, path);
        return std::nullopt;
    }
    return std::string(*body);
}

} // namespace join
