#include "params/JoinParameters.h"

#include "base/Locations.h"
#include "base/Logging.h"
#include "params/JoinParameterFile.h"
#include "platform/FileManager.h"
#include "session/ProcessSlots.h"

namespace join {

void readJoinParameters() {
    constexpr auto method = "-[AppDelegate readJoinParameters]";
    reportingExceptions(method, [&] {
        log("%s : Read join parameters called.", method);
        const std::string path = parameterFile();
        log("%s : Join Parameters Path : %@", method, path);
        const Text body = readJoinParameterFile(method, path);
        if (const Text reason = body ? reasonToRefuseParameters(*body) : std::nullopt) {
            log("%s : Join parameters file refused : %@", method, reason);
            return;
        }
        log("%s : Join parameters file content : %@", method, body);
        if (!body)
            return;

        JoinSessionDetails& details = session();
        // The first item, known or not, makes the session type follow a key set elsewhere.
        bool keyIsNew = true;
        for (const std::string_view item : split(*body, "&")) {
            if (const JoinParameter* parameter = joinParameterOf(item)) {
                std::string value = joinParameterValue(item, parameter->name);
                if (parameter->property == &JoinSessionDetails::emailID && value.empty())
                    value = "Guest";
                (details.*parameter->property).set(std::move(value));
                keyIsNew = keyIsNew || parameter->property == &JoinSessionDetails::key;
            }
            if (const auto sessionType = sessionTypeForKey(details.key().value_or(""));
                keyIsNew && sessionType)
                details.sessionType.set(*sessionType);
            keyIsNew = false;
        }
    });
}

void createTavoJoinDetails() {
    constexpr auto method = "-[AppDelegate createTavoJoinDetails]";
    reportingExceptions(method, [&] {
        const Text body = readJoinParameterFile(method, slots().joinParametersTavoJoinFilePath);
        if (!body)
            return;
        log("%s : JoinParameters : \n%@", method, body);
        const std::string content = std::string(joinParameterHeader).append(*body);
        files().remove(joinDetailsFile());
        files().create(joinDetailsFile(), content);
        log("%s : tavojoindetails.conf created", method);
        log("%s : tavojoindetails : \n%@", method, content);
    });
}

void rewriteJoinParameters() {
    constexpr auto method = "-[AppDelegate applicationDidFinishLaunching:]";
    reportingExceptions(method, [&] {
        const JoinSessionDetails& details = session();
        const std::string content =
            std::string(joinParameterHeader) +
            formatted(
                "&key=%@&gatewayName=%@&defaultGatewayName=%@&email=%@&webServerName=%@&tavoAppVersion=%@"
                "&firstTime=false&joinAppVersion=%@&",
                details.key(), details.gatewayName(), details.defaultGatewayName(), details.emailID(),
                details.webServerName(), details.tavoAppVersion(), details.joinAppVersion());
        log("%s : Joinparameters String : %@", method, content);
        files().remove(parameterFile());
        files().create(parameterFile(), content);
        log("%s : FirstTime parameter value has been changed to false.", method);
    });
}

} // namespace join
