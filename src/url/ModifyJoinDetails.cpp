#include "url/ModifyJoinDetails.h"

#include "base/Locations.h"
#include "base/Logging.h"
#include "params/JoinParameterFile.h"
#include "platform/FileManager.h"
#include "session/JoinSessionDetails.h"
#include "session/ProcessSlots.h"
#include "url/JoinDetails.h"

namespace join {

namespace {

constexpr auto modifyMethod = "-[AppDelegate modifyJoinDetails]";

void createJoinDetails(const std::string& path, const JoinSessionDetails& details) {
    log("%s : tavojoindetails.conf file not available in TavoMeetingNative folder", modifyMethod);
    if (files().create(path, freshJoinDetails(details)))
        log("%s : tavojoindetails.conf file has been created by join url parameters. ", modifyMethod);
    else
        log("%s : Unable to create tavojoindetails.conf file", modifyMethod);
}

/// Logs the values that the session adds to the file.
void logAddedValues(const JoinSessionDetails& details) {
    if (const Text value = details.roleChangeOnInit(); isFilled(value))
        log("%s : Condition roleChangeOnInit : %@", modifyMethod, value);
    if (const Text value = details.viewerId(); isFilled(value))
        log("%s : Condition viewer_d : %@", modifyMethod, value);
    if (const Text value = details.firstTimeInstall(); isFilled(value))
        log("%s : Condition firsttimeInstall : %@ ", modifyMethod, value);
    if (const Text value = details.isConfirmationNeeded(); isFilled(value))
        log("condition isConfirmationNeeded : %@ ", value);
}

} // namespace

void modifyJoinDetails() {
    reportingExceptions(modifyMethod, [&] {
        log("%s : Modify joindetails called!", modifyMethod);
        JoinSessionDetails& details = session();
        const std::string path = joinDetailsFile();
        if (!files().exists(path)) {
            createJoinDetails(path, details);
            return;
        }
        // A file that cannot be read, or is shorter than its header, counts as empty.
        const std::string body = readJoinParameterFile(modifyMethod, path).value_or(std::string());
        const OldJoinDetails old = readOldJoinDetails(body);
        for (const std::string_view piece : old.roleChangePieces)
            log("%s : Role Change Init : %@", modifyMethod, piece);
        logAddedValues(details);

        details.nameGuest();
        log("%s : Key : %@ email : %@ ", modifyMethod, details.key(), details.emailID());
        if (!details.key())
            return;
        const std::string text = updatedJoinDetails(old, details);
        log("%s : Join Details : %@", modifyMethod, text);
        files().remove(path);
        if (!files().create(path, text))
            log("%s : Unable to create tavojoindetails.conf file", modifyMethod);
        log("%s : Joindetails file has been modified by join url parameters. ", modifyMethod);
    });
}

} // namespace join
