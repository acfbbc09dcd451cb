#pragma once

#include <cerrno>
#include <system_error>
#include <unistd.h>

namespace join::test {

/// As long as this lives, the process has an ordinary user's rights to files. Root passes every check of
/// permissions, and would see nothing of what they are about.
class OrdinaryUser {
public:
    OrdinaryUser() {
        if (wasRoot_ && ::seteuid(nobody) != 0)
            throw std::system_error(errno, std::generic_category(), "seteuid");
    }
    ~OrdinaryUser() {
        if (wasRoot_ && ::seteuid(0) != 0)
            ::_exit(1);
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static constexpr uid_t nobody = 65534;
    const bool wasRoot_ = ::geteuid() == 0;
};

} // namespace join::test
