// Takes the place of 7zz, and does what its name says: "tries" tries what a taken-over 7zz might, "x-hangs" hangs
// at the end of `7zz x` and is honest otherwise. It reads nothing: it knows one image of Apple's format, and the
// volume "Tavo" in it.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

void tell(const char* attempt, bool isDone) {
    std::printf("%s: %s\n", attempt, isDone ? "done" : std::strerror(errno));
    std::fflush(stdout);
}

int tryEverything(const std::string& own) {
    tell("read", ::open("/etc/passwd", O_RDONLY) >= 0);
    tell("list", ::opendir("/") != nullptr);
    tell("write", ::open((own + " wrote").c_str(), O_WRONLY | O_CREAT, 0600) >= 0);
    tell("connect", ::socket(AF_INET, SOCK_DGRAM, 0) >= 0);
    tell("start", std::system("true") == 0);
    tell("signal", ::kill(::getppid(), 0) == 0);
    bool isRunning = false;
    std::thread([&] { isRunning = true; }).join();
    tell("thread", isRunning);
    constexpr std::size_t much = std::size_t{4} << 30;
    tell("memory", ::mmap(nullptr, much, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED);
    tell("image", ::open("/proc/self/fd/3", O_RDONLY) >= 0);
    for (const long call : {SYS_ptrace, SYS_process_vm_readv, SYS_mount, SYS_unshare, SYS_setns, SYS_bpf,
                            SYS_io_uring_setup, SYS_keyctl, SYS_open_by_handle_at, SYS_execveat, SYS_clone})
        if (::syscall(call, CLONE_NEWUSER | CLONE_THREAD, 0, 0, 0, 0) != -1 || errno != EPERM)
            tell(std::to_string(call).c_str(), false);
    ::execl("/bin/echo", "/bin/echo", "execute: done", nullptr);
    tell("execute", false);
    return 0;
}

/// Writes what 7zz would, for the image or for the volume in it.
void beHonest(const std::string& command, bool isImage) {
    std::string text;
    if (command == "l" && isImage)
        text = "Type = Dmg\n----------\nPath = 0\nSize = 2048\nComment = disk image (Apple_HFS : 1)\n";
    else if (command == "l")
        text = "Type = HFS\n----------\nPath = Tavo\nFolder = +\n\nPath = Tavo/file\nFolder = -\nSize = 4\n"
               "\nPath = Tavo/way\nFolder = -\nSize = 5\nMode = lrwxrwxrwx\n";
    else if (command == "x" && isImage)
        text = std::string(1024, '\0') + std::string("H+\0\4", 4) + std::string(1020, '\0');
    else if (command == "x")
        text = "textfile" + std::string(1, '\0');
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    const std::string own = argv[0];
    const std::string name = own.substr(own.rfind('/') + 1);
    if (name == "tries")
        return tryEverything(own);
    const std::string command = argv[1];
    if (name == command + "-nothing")
        return 0;
    beHonest(command, argv[argc - 5] == std::string("-tDmg"));
    if (name == command + "-more")
        std::puts("more");
    if (name == command + "-dies")
        __builtin_trap();
    while (name == command + "-hangs")
        ::pause();
    return name == command + "-fails" ? 1 : 0;
}
