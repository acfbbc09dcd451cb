#pragma once

#include <array>
#include <cerrno>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace join::test {

/// As long as this lives, modes and owners of files bind this thread, and those that it starts: root passes
/// every check of them, and would test nothing. The user stays the same, and owns the test's folders.
class OrdinaryUser {
public:
    OrdinaryUser() {
        const bool isKnown = ::syscall(SYS_capget, &header_, before_.data()) == 0;
        auto without = before_;
        for (const unsigned right : {CAP_CHOWN, CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER})
            without[0].effective &= ~(1U << right);
        if (!isKnown || ::syscall(SYS_capset, &header_, without.data()) != 0)
            throw std::system_error(errno, std::generic_category(), "capabilities");
    }
    ~OrdinaryUser() {
        if (::syscall(SYS_capset, &header_, before_.data()) != 0)
            ::_exit(1);
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> before_{};
};

} // namespace join::test
