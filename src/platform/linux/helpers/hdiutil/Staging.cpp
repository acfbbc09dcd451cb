#include "platform/linux/helpers/hdiutil/Staging.h"

#include "platform/Exception.h"
#include "platform/linux/files/Folders.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace join::platform::hdiutil {

namespace {

[[noreturn]] void raise(const char* what) {
    throw Exception(std::string(what) + ": " + std::strerror(errno));
}

} // namespace

std::string placeOfWork(const std::string& volumes) { return parentOf(volumes) + "/hdiutil"; }

Staging::Staging(const std::string& volumes) : place_(placeOfWork(volumes)) {
    if (::mkdir(path().c_str(), S_IRWXU) != 0)
        raise("no private folder can be made");
}

void Staging::show(const std::string& folder, const std::string& volume) const {
    if (!moveInPlace(folder, volume, path() + "/older"))
        raise("the volume cannot be shown");
}

} // namespace join::platform::hdiutil
