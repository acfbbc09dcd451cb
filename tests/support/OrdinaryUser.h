#pragma once

#include <array>
#include <cerrno>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace join::test {

/// As long as this lives, modes and owners of files bind this thread, and those that it starts, as they bind
/// an ordinary user. Root passes every check of permissions, and would see nothing of what they are about.
/// The user stays the same, so the test's folders may lie anywhere.
class OrdinaryUser {
public:
    OrdinaryUser() {
        call(SYS_capget, before_);
        Capabilities without = before_;
        without[0].effective &=
            ~(1U << CAP_CHOWN | 1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH | 1U << CAP_FOWNER);
        call(SYS_capset, without);
    }
    ~OrdinaryUser() {
        if (::syscall(SYS_capset, &header_, before_.data()) != 0)
            ::_exit(1);
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    using Capabilities = std::array<__user_cap_data_struct, 2>;

    void call(long number, Capabilities& capabilities) {
        if (::syscall(number, &header_, capabilities.data()) != 0)
            throw std::system_error(errno, std::generic_category(), "capabilities");
    }

    __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
    Capabilities before_{};
};

/// As long as this lives, the process acts for another user. For root.
class OtherUser {
public:
    static constexpr uid_t id = 65534;

    OtherUser() {
        if (::seteuid(id) != 0)
            throw std::system_error(errno, std::generic_category(), "seteuid");
    }
    ~OtherUser() {
        if (::seteuid(0) != 0)
            ::_exit(1);
    }
    OtherUser(const OtherUser&) = delete;
    OtherUser& operator=(const OtherUser&) = delete;
};

} // namespace join::test
