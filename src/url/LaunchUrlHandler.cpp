#include "url/LaunchUrlHandler.h"

#include "base/Logging.h"
#include "platform/Services.h"
#include "platform/TrustPolicy.h"
#include "session/JoinSessionDetails.h"
#include "url/LaunchUrl.h"

#include <array>
#include <optional>

namespace join {

namespace {

constexpr auto method = "-[AppDelegate handleGetURLEvent:withReplyEvent:]";

using Details = JoinSessionDetails;

/// Returns the value of the first name or, if that is missing, of the second.
std::optional<std::string_view> valueOf(const LaunchUrlParameters& parameters, std::string_view name,
                                        std::string_view otherName = {}) {
    auto found = parameters.find(name);
    if (found == parameters.end() && !otherName.empty())
        found = parameters.find(otherName);
    if (found == parameters.end())
        return std::nullopt;
    return found->second;
}

bool isUsable(const std::optional<std::string_view>& value) {
    return value && !value->empty() && *value != "null";
}

std::string trimmed(std::string_view value) { return std::string(trimBlanks(value)); }

/// One row of the table of names: a usable value is stored, without blanks at its ends, in a property.
struct Row {
    std::string_view name;
    std::string_view otherName;
    Atomic<Text> Details::*property;
    std::string_view logged = {}; ///< how the value is named in the log; empty if it is not logged
};

constexpr std::array<Row, 11> rows = {{
    {"gwn", {}, &Details::gatewayName},
    {"gwn1", {}, &Details::defaultGatewayName},
    {"wsn", "web_server", &Details::webServerName},
    {"tav", {}, &Details::tavoAppVersion, "Tavo app Version (tav)"},
    {"jav", {}, &Details::joinAppVersion, "Join app Version (jav)"},
    {"cav", {}, &Details::crashDetectorAppVersion, "Crash Detector app Version (cav)"},
    {"vid", "viewerid", &Details::viewerId},
    {"rcoi", "rolechangeoninit", &Details::roleChangeOnInit},
    {"fti", {}, &Details::firstTimeInstall},
    {"authkey", {}, &Details::authkey},
    {"group", {}, &Details::group},
}};

/// Applies everything but the key.
void applyParameters(const LaunchUrlParameters& parameters) {
    const auto email = valueOf(parameters, "e", "email");
    session().emailID.set(isUsable(email) ? trimmed(*email) : "Guest");
    for (const Row& row : rows) {
        const auto value = valueOf(parameters, row.name, row.otherName);
        if (!isUsable(value))
            continue;
        (session().*row.property).set(trimmed(*value));
        if (!row.logged.empty())
            log("%s : ###Latest %@ : %@", method, row.logged, *value);
    }
    if (const auto number = valueOf(parameters, "gatewayhost"); isUsable(number))
        session().gatewayName.set(formatted("gw%@", trimmed(*number)));
    session().isDemoMode.set(valueOf(parameters, "demo") == "true" ? "true" : "false");
    session().isDemoTech.set(valueOf(parameters, "isDemoTech") == "true" ? "true" : "false");
}

/// Returns the parameters as one readable text.
std::string description(const LaunchUrlParameters& parameters) {
    std::string text = "{";
    for (const auto& [name, value] : parameters)
        text.append(text.size() == 1 ? "" : "; ").append(name).append(" = ").append(value);
    return text += '}';
}

/// Returns why the web server of a URL, or of the session if the URL names none, is not allowed, or nothing.
std::optional<std::string> reasonToRefuse(const LaunchUrlParameters& parameters) {
    const auto named = valueOf(parameters, "wsn", "web_server");
    return platform::services().trustPolicy->reasonToRefuse(
        isUsable(named) ? trimmed(*named) : session().webServerName().value_or(std::string()));
}

void logUrl(const std::string& url, const std::string& text, const LaunchUrl& launchUrl) {
    log("%s : Received Launch App Url : %@", method, text);
    if (text.size() != url.size())
        log("%s : Control characters or bytes that are not UTF-8 in the URL are percent-encoded", method);
    if (!launchUrl.hasParameters)
        log("%s : The URL holds no parameters, which follow on \"//\"", method);
    if (launchUrl.skippedPieces > 0)
        log("%s : Pieces of the URL without \"=\" skipped : %lu", method, launchUrl.skippedPieces);
    log("%s : Launch App Param Dict : %@", method, description(launchUrl.parameters));
}

} // namespace

LaunchUrlOutcome applyLaunchUrl(const std::string& url) {
    const std::string text = launchUrlText(url);
    const LaunchUrl launchUrl = parseLaunchUrl(text);
    if (const auto reason = reasonToRefuse(launchUrl.parameters)) {
        log("%s : Launch URL refused : %@", method, *reason);
        return LaunchUrlOutcome::refused;
    }
    logUrl(url, text, launchUrl);
    applyParameters(launchUrl.parameters);

    const auto key = valueOf(launchUrl.parameters, "k", "sessionId");
    if (!isUsable(key))
        return LaunchUrlOutcome::withoutKey;
    session().key.set(trimmed(*key));
    if (const auto sessionType = sessionTypeForKey(*key))
        session().sessionType.set(*sessionType);
    return LaunchUrlOutcome::withKey;
}

} // namespace join
