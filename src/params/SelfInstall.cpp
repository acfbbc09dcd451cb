#include "params/SelfInstall.h"

#include "base/Locations.h"
#include "base/Logging.h"
#include "platform/FileManager.h"
#include "platform/Paths.h"
#include "platform/Services.h"
#include "platform/Workspace.h"
#include "session/ProcessSlots.h"

namespace join {

namespace {

constexpr auto method = "-[AppDelegate copyCurrentJoinAppFile]";
constexpr std::string_view deliveredFileName = "/.joinparameters";

/// Returns the delivered parameter file on the last mounted volume that can hold one, or nothing if there is
/// no such volume.
Text deliveredFileOnVolume() {
    Text found;
    platform::Workspace& workspace = *platform::services().workspace;
    for (const std::string& volume : workspace.mountedLocalVolumePaths()) {
        if (volume.find("TavoJoin") == std::string::npos)
            continue;
        const platform::FileSystemInfo info = workspace.fileSystemInfo(volume);
        log("%s : Result : %i Volume : %@, isRemovable :%i, isWritable : %i, isUnmountable : %i, "
            "Description : %@, type : %@",
            method, info.known, volume, info.removable, info.writable, info.unmountable, info.description,
            info.type);
        if (info.unmountable && info.removable) {
            found = appendingPathComponent(volume, deliveredFileName);
            log("%s : JoinParameter Directory : %@", method, found);
        }
    }
    return found;
}

void storeDeliveredParameterFile(const std::string& runningFolder, bool runsFromApplications) {
    std::string& delivered = slots().joinParametersTavoJoinFilePath;
    delivered = appendingPathComponent(runningFolder, deliveredFileName);
    if (!files().exists(delivered))
        delivered = deliveredFileOnVolume().value_or(delivered);

    if (!runsFromApplications && files().exists(parameterFile()))
        log("%s : joinparameters.conf file removed in TavoMeetingNative folder : %hhd", method,
            files().remove(parameterFile()));
    if (files().exists(delivered) && files().copy(delivered, parameterFile()))
        log("%s : joinparameters.conf file copied", method);
}

void installJoinCopies(const std::string& runningFolder, bool runsFromApplications) {
    const std::string source = appendingPathComponent(runningFolder, "/Join.app");
    const auto install = [&](const std::string& copy, bool mayReplace) {
        return mayReplace && files().exists(copy) ? files().replace(source, copy)
                                                  : files().copy(source, copy);
    };
    if (install(systemJoinCopy(), !runsFromApplications))
        log("%s : Join.app file copied", method);
    const bool runsFromHomeCopy = runningFolder == homeApplicationsFolder();
    if (files().exists(homeApplicationsFolder()) &&
        install(homeJoinCopy(), !runsFromApplications && !runsFromHomeCopy))
        log("%s : Join.app file copied to users applications folder", method);
}

} // namespace

void copyCurrentJoinAppFile() {
    reportingExceptions(method, [] {
        const std::string folder = runningFolder();
        const std::string applications = platform::services().paths->localApplications();
        log("%s : Join App Path : %@", method, folder);
        log("%s : Application folder : %@", method, applications);
        storeDeliveredParameterFile(folder, folder == applications);
        installJoinCopies(folder, folder == applications);
    });
}

void removeJoinCopies() {
    files().remove(systemJoinCopy());
    files().remove(homeJoinCopy());
}

} // namespace join
