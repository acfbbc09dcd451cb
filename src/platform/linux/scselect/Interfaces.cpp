#include "platform/linux/scselect/Interfaces.h"

#include <algorithm>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <sys/socket.h>

namespace join::platform::scselect {

namespace {

using Addresses = std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)>;

Addresses addressesOfTheSystem() {
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) != 0)
        first = nullptr;
    return {first, &::freeifaddrs};
}

Interface& entryFor(const std::string& name, std::vector<Interface>& interfaces) {
    const auto found = std::find_if(interfaces.begin(), interfaces.end(),
                                    [&](const Interface& interface) { return interface.name == name; });
    return found != interfaces.end() ? *found : interfaces.emplace_back(Interface{.name = name});
}

} // namespace

std::vector<Interface> activeInterfaces() {
    std::vector<Interface> interfaces;
    const Addresses addresses = addressesOfTheSystem();
    for (const ifaddrs* address = addresses.get(); address; address = address->ifa_next) {
        if ((address->ifa_flags & IFF_UP) == 0 || (address->ifa_flags & IFF_LOOPBACK) != 0)
            continue;
        Interface& interface = entryFor(address->ifa_name, interfaces);
        const int family = address->ifa_addr ? address->ifa_addr->sa_family : AF_UNSPEC;
        interface.hasIpv4 |= family == AF_INET;
        interface.hasIpv6 |= family == AF_INET6;
    }
    return interfaces;
}

} // namespace join::platform::scselect
