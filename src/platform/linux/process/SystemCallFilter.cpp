#include "platform/linux/process/SystemCallFilter.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/sched.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

namespace join::platform {

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t processor = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t processor = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t processor = 0;
#endif

/// Its lower half, on these processors.
constexpr std::size_t firstArgument = offsetof(seccomp_data, args);

/// The youngest system call that there may be; its number is the same on every processor.
constexpr std::uint32_t youngest = SYS_set_mempolicy_home_node;

constexpr std::uint32_t newNamespaces =
    CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWUTS | CLONE_NEWIPC | CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET;

constexpr int refusedToAll[] = {
    // the network, and descriptors of other processes
    SYS_socket, SYS_socketpair, SYS_connect, SYS_bind, SYS_listen, SYS_accept, SYS_accept4, SYS_sendto,
    SYS_sendmsg, SYS_sendmmsg, SYS_recvmsg, SYS_recvmmsg, SYS_pidfd_getfd,
    // other processes
    SYS_ptrace, SYS_process_vm_readv, SYS_process_vm_writev, SYS_process_madvise, SYS_kcmp, SYS_shmget,
    SYS_msgget, SYS_semget, SYS_mq_open, SYS_execveat,
    // mounts and namespaces
    SYS_mount, SYS_umount2, SYS_pivot_root, SYS_chroot, SYS_mount_setattr, SYS_move_mount, SYS_open_tree,
    SYS_fsopen, SYS_fsconfig, SYS_fsmount, SYS_fspick, SYS_unshare, SYS_setns, SYS_open_by_handle_at,
    // the rest of the kernel
    SYS_io_uring_setup, SYS_io_uring_enter, SYS_io_uring_register, SYS_bpf, SYS_perf_event_open,
    SYS_userfaultfd, SYS_keyctl, SYS_add_key, SYS_request_key};

constexpr int refusedToPrograms[] = {
#ifdef SYS_fork // not on AArch64
    SYS_fork, SYS_vfork,
#endif
    SYS_kill, SYS_tkill, SYS_tgkill, SYS_rt_sigqueueinfo, SYS_rt_tgsigqueueinfo, SYS_pidfd_send_signal};

/// A program for the kernel, made without memory from the heap.
class Filter {
public:
    void add(sock_filter step) { steps_.at(size_++) = step; }

    void load(std::size_t place) {
        add(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(place)));
    }

    void end(std::uint32_t answer) { add(BPF_STMT(BPF_RET | BPF_K, answer)); }

    /// Fails with that error if comparing what is loaded with the number comes out as said. Two steps.
    void refuse(unsigned comparison, std::uint32_t number, bool outcome, std::uint32_t error = EPERM) {
        add(BPF_JUMP(BPF_JMP | comparison | BPF_K, number, !outcome, outcome));
        end(SECCOMP_RET_ERRNO | error);
    }

    /// Skips that many steps unless the number is loaded.
    void onlyFor(std::uint32_t number, std::uint8_t steps) {
        add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, steps));
    }

    /// Returns false if the kernel refuses, other than because it knows no such programs.
    bool start() {
        const sock_fprog program{size_, steps_.data()};
        return ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0 || errno == EINVAL;
    }

private:
    std::array<sock_filter, 192> steps_{};
    unsigned short size_ = 0;
};

} // namespace

bool refuseSystemCalls(const char* program) {
    if (processor == 0)
        return true;
    Filter filter;
    filter.load(offsetof(seccomp_data, arch));
    filter.refuse(BPF_JEQ, processor, false);
    filter.load(offsetof(seccomp_data, nr));
    filter.refuse(BPF_JGT, youngest, true, ENOSYS);
    filter.refuse(BPF_JEQ, SYS_clone3, true, ENOSYS); // its flags cannot be seen; clone takes its place
    for (const int number : refusedToAll)
        filter.refuse(BPF_JEQ, number, true);
    if (program != nullptr) {
        for (const int number : refusedToPrograms)
            filter.refuse(BPF_JEQ, number, true);
        const auto address = reinterpret_cast<std::uintptr_t>(program);
        filter.onlyFor(SYS_execve, 7);
        filter.load(firstArgument);
        filter.refuse(BPF_JEQ, static_cast<std::uint32_t>(address), false);
        filter.load(firstArgument + 4);
        filter.refuse(BPF_JEQ, static_cast<std::uint32_t>(address >> 32U), false);
        filter.end(SECCOMP_RET_ALLOW);
    }
    filter.onlyFor(SYS_clone, 5);
    filter.load(firstArgument);
    filter.refuse(BPF_JSET, newNamespaces, true);
    filter.refuse(BPF_JSET, program != nullptr ? CLONE_THREAD : ~0U, false);
    filter.end(SECCOMP_RET_ALLOW);
    return filter.start();
}

} // namespace join::platform
