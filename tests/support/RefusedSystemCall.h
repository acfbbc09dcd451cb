#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <functional>
#include <future>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

namespace join::test {

/// From now on that system call fails with that error, in the calling thread and everything it starts: use a
/// thread of its own. With flags it fails only when its third argument holds one of them.
inline void refuseSystemCall(unsigned number, unsigned error, unsigned flags = 0) {
    const unsigned comparison = flags != 0 ? BPF_JSET : BPF_JGE; // every number is at least 0
    std::array<sock_filter, 6> filter{{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                                       BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 3),
                                       BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
                                       BPF_JUMP(BPF_JMP | comparison | BPF_K, flags, 0, 1),
                                       BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
                                       BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)}};
    const sock_fprog program{filter.size(), filter.data()};
    ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
    ASSERT_EQ(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0);
}

/// Does work on a thread of its own, on which that system call fails with that error.
inline void withoutSystemCall(unsigned number, unsigned error, const std::function<void()>& work,
                              unsigned flags = 0) {
    std::async(std::launch::async, [&] {
        refuseSystemCall(number, error, flags);
        work();
    }).get();
}

} // namespace join::test
