#include "params/SelfInstall.h"

#include "base/Locations.h"
#include "base/Logging.h"
#include "params/JoinParameterFile.h"
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

/// Returns false if the file is refused.
bool storeDeliveredParameterFile(const std::string& runningFolder, bool runsFromApplications) {
    std::string& delivered = slots().joinParametersTavoJoinFilePath;
    delivered = appendingPathComponent(runningFolder, deliveredFileName);
    if (!files().exists(delivered))
        delivered = deliveredFileOnVolume().value_or(delivered);
    const Text file = files().read(delivered);
    const auto body = file ? joinParameterBody(*file) : std::nullopt;
    if (const Text reason = body ? reasonToRefuseParameters(*body) : std::nullopt) {
        log("%s : Join parameters file refused : %@", method, reason);
        delivered.clear();
        return false;
    }
    if (!runsFromApplications && files().exists(parameterFile()))
        log("%s : joinparameters.conf file removed in TavoMeetingNative folder : %hhd", method,
            files().remove(parameterFile()));
    if (files().exists(delivered) && files().copy(delivered, parameterFile()))
        log("%s : joinparameters.conf file copied", method);
    return true;
}

void installJoinCopies(const std::string& runningFolder, bool runsFromApplications) {
    const std::string source = appendingPathComponent(runningFolder, "/Join.app");
    const auto install = [&](const std::string& copy, bool mayReplace) {
        return mayReplace && files().exists(copy) ? files().replace(source, copy)
                                                  : files().install(source, copy);
    };
    if (install(systemJoinCopy(), !runsFromApplications))
        log("%s : Join.app file copied", method);
    const bool runsFromHomeCopy = runningFolder == homeApplicationsFolder();
    if (files().exists(homeApplicationsFolder()) &&
        install(homeJoinCopy(), !runsFromApplications && !runsFromHomeCopy))
        log("%s : Join.app file copied to users applications folder", method);
}

} // namespace

bool copyCurrentJoinAppFile() {
    bool isAllowed = true;
    reportingExceptions(method, [&] {
        const std::string folder = runningFolder();
        const std::string applications = platform::services().paths->localApplications();
        log("%s : Join App Path : %@", method, folder);
        log("%s : Application folder : %@", method, applications);
        isAllowed = storeDeliveredParameterFile(folder, folder == applications);
        installJoinCopies(folder, folder == applications);
    });
    return isAllowed;
}

void removeJoinCopies() {
    files().remove(systemJoinCopy());
    files().remove(homeJoinCopy());
}

} // namespace join
