// The version list made of the distribution's name and version, here two lines.

#include "Target.h"
#include "platform/Utf8.h"
#include "platform/linux/documents/PlistPropertyLists.h"
#include "platform/linux/system/SystemVersionFile.h"

namespace join::fuzz {

void tryOut(std::string_view input) {
    using namespace platform;
    const std::string givenName(input.substr(0, input.find('\n')));
    const std::string givenVersion(input.substr(std::min(givenName.size() + 1, input.size())));
    const auto list = PlistPropertyLists().parse(systemVersionList(givenName, givenVersion));
    require(list && list->dictionary() && list->dictionary()->size() == 2);
    const std::string* name = list->member("ProductName")->text();
    const std::string* version = list->member("ProductVersion")->text();
    require(name && isUtf8(*name) && name->size() <= givenName.size());
    require(version && std::stoi(*version) >= 11);
    require(version->find_first_not_of("0123456789.") == std::string::npos);
}

} // namespace join::fuzz
