#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

namespace join::test {

/// From now on that system call fails with that error, in the calling thread and everything it starts: use a
/// thread of its own.
inline void refuseSystemCall(unsigned number, unsigned error) {
    std::array<sock_filter, 4> filter{{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                                       BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1),
                                       BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
                                       BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)}};
    const sock_fprog program{filter.size(), filter.data()};
    ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
    ASSERT_EQ(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0);
}

} // namespace join::test
