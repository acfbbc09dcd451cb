#include "platform/linux/process/Confinement.h"

#include "platform/linux/process/SystemCallFilter.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/auxv.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace join::platform {

namespace {

/// Returns the rights that a version of Landlock knows: the lowest bits. Version 1 refuses every move between
/// folders, and counts as none.
constexpr std::uint64_t rightsKnownTo(long version) {
    if (version < 2)
        return 0;
    return (std::uint64_t{1} << (version < 3 ? 14U : version < 5 ? 15U : 16U)) - 1;
}

constexpr std::uint64_t rightsOf(Confinement::Access access) {
    constexpr std::uint64_t truncate = rightsKnownTo(3) & ~rightsKnownTo(2); // not in older headers
    constexpr std::uint64_t read = LANDLOCK_ACCESS_FS_READ_FILE;
    switch (access) {
    case Confinement::Access::read:
        return read;
    case Confinement::Access::start:
        return read | LANDLOCK_ACCESS_FS_EXECUTE;
    case Confinement::Access::change:
        break;
    }
    return read | LANDLOCK_ACCESS_FS_WRITE_FILE | truncate | LANDLOCK_ACCESS_FS_READ_DIR |
           LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SYM |
           LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_REFER;
}

/// The rights that can be given for something else than a folder.
constexpr std::uint64_t rightsToFiles = rightsOf(Confinement::Access::start) | LANDLOCK_ACCESS_FS_WRITE_FILE |
                                        (rightsKnownTo(3) & ~rightsKnownTo(2));

/// Returns the path of the dynamic loader: the same for this program and for others.
std::string loader() {
    Dl_info found{};
    const auto* start =
        reinterpret_cast<const void*>(::getauxval(AT_BASE)); // NOLINT(performance-no-int-to-ptr)
    return ::dladdr(start, &found) != 0 ? found.dli_fname : "";
}

} // namespace

Confinement::Confinement()
    : known_(rightsKnownTo(
          ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION))) {
    constexpr int above = 10;        // the places of a child's streams
    landlock_ruleset_attr refused{}; // newer headers know more members
    refused.handled_access_fs = known_;
    const Descriptor made(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &refused, sizeof refused, 0)));
    ruleset_ = Descriptor(::fcntl(made.get(), F_DUPFD_CLOEXEC, above));
}

void Confinement::allow(int file, Access access) {
    struct stat found {};
    const bool isFolder = ::fstat(file, &found) == 0 && S_ISDIR(found.st_mode);
    const landlock_path_beneath_attr rule{
        .allowed_access = rightsOf(access) & known_ & (isFolder ? known_ : rightsToFiles), .parent_fd = file};
    ::syscall(SYS_landlock_add_rule, ruleset_.get(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
}

void Confinement::allow(const std::string& path, Access access) {
    allow(Descriptor(::open(path.c_str(), O_PATH | O_CLOEXEC)).get(), access);
}

void Confinement::allowProgram(const std::string& path) {
    for (const std::string& started : {path, loader()})
        allow(started, Access::start);
    for (const char* libraries : {"/lib", "/lib64", "/usr/lib"})
        allow(libraries, Access::read);
}

bool Confinement::enter(const char* program) const {
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           (known_ == 0 || ::syscall(SYS_landlock_restrict_self, ruleset_.get(), 0) == 0) &&
           refuseSystemCalls(program);
}

} // namespace join::platform
