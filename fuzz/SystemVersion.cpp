// The distribution's os-release file, and the version list made from it.

#include "Target.h"
#include "platform/Utf8.h"
#include "platform/linux/documents/PlistPropertyLists.h"
#include "platform/linux/system/SystemVersionFile.h"

namespace join::fuzz {

void tryOut(std::string_view input) {
    using namespace platform;
    const SystemRelease release = parseOsRelease(input);
    const auto list = PlistPropertyLists().parse(systemVersionList(release));
    require(list && list->dictionary() && list->dictionary()->size() == 2);
    const std::string* name = list->member("ProductName")->text();
    const std::string* version = list->member("ProductVersion")->text();
    require(name && isUtf8(*name) && name->size() <= release.name.size());
    require(version && std::stoi(*version) >= 11);
    require(version->find_first_not_of("0123456789.") == std::string::npos);
}

} // namespace join::fuzz
