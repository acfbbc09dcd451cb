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

constexpr auto method = "-[AppDelegate modifyJoinDetails]";

void createJoinDetails(const std::string& path, const JoinSessionDetails& details) {
    log("%s : tavojoindetails.conf file not available in TavoMeetingNative folder", method);
    if (files().create(path, freshJoinDetails(details)))
        log("%s : tavojoindetails.conf file has been created by join url parameters. ", method);
    else
        log("%s : Unable to create tavojoindetails.conf file", method);
}

/// Logs the values that the session adds to the file.
void logAddedValues(const JoinSessionDetails& details) {
    if (const Text value = details.roleChangeOnInit(); isFilled(value))
        log("%s : Condition roleChangeOnInit : %@", method, value);
    if (const Text value = details.viewerId(); isFilled(value))
        log("%s : Condition viewer_d : %@", method, value);
    if (const Text value = details.firstTimeInstall(); isFilled(value))
        log("%s : Condition firsttimeInstall : %@ ", method, value);
    if (const Text value = details.isConfirmationNeeded(); isFilled(value))
        log("condition isConfirmationNeeded : %@ ", value);
}

} // namespace

void modifyJoinDetails() {
    reportingExceptions(method, [&] {
        log("%s : Modify joindetails called!", method);
        JoinSessionDetails& details = session();
        const std::string path = joinDetailsFile();
        if (!files().exists(path)) {
            createJoinDetails(path, details);
            return;
        }
        // A file that cannot be read, or is shorter than its header, counts as empty.
        const std::string body = readJoinParameterFile(method, path).value_or(std::string());
        const OldJoinDetails old = readOldJoinDetails(body);
        for (const std::string_view piece : old.roleChangePieces)
            log("%s : Role Change Init : %@", method, piece);
        logAddedValues(details);

        details.nameGuest();
        log("%s : Key : %@ email : %@ ", method, details.key(), details.emailID());
        if (!details.key())
            return;
        const std::string text = updatedJoinDetails(old, details);
        log("%s : Join Details : %@", method, text);
        files().remove(path);
        if (!files().create(path, text))
            log("%s : Unable to create tavojoindetails.conf file", method);
        log("%s : Joindetails file has been modified by join url parameters. ", method);
    });
}

} // namespace join
