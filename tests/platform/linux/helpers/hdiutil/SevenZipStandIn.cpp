// Takes the place of 7zz, and does what its name says: "tries" tries what a taken-over 7zz might, "x-hangs" hangs
// at the end of `7zz x` and is honest otherwise. It reads nothing: it knows one image of Apple's format, and the
// volume "Tavo" in it.

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

void tell(const char* attempt, bool isDone) {
    std::printf("%s: %s\n", attempt, isDone ? "done" : std::strerror(errno));
    std::fflush(stdout);
}

bool connectSomewhere() {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(9);
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int made = ::socket(AF_INET, SOCK_DGRAM, 0);
    return made >= 0 && ::connect(made, reinterpret_cast<sockaddr*>(&place), sizeof place) == 0;
}

bool startProcess() {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(0);
    return child > 0 && ::waitpid(child, nullptr, 0) == child;
}

int tryEverything(const std::string& own) {
    tell("read", ::open("/etc/passwd", O_RDONLY) >= 0);
    tell("list", ::opendir("/") != nullptr);
    tell("write", ::open((own + " wrote").c_str(), O_WRONLY | O_CREAT, 0600) >= 0);
    tell("connect", connectSomewhere());
    tell("start", startProcess());
    tell("signal", ::kill(::getppid(), 0) == 0);
    bool isRunning = false;
    std::thread([&] { isRunning = true; }).join();
    tell("thread", isRunning);
    tell("image", ::open("/proc/self/fd/3", O_RDONLY) >= 0);
    for (const long call : {SYS_ptrace, SYS_process_vm_readv, SYS_mount, SYS_unshare, SYS_setns, SYS_bpf,
                            SYS_io_uring_setup, SYS_keyctl, SYS_open_by_handle_at, SYS_execveat, SYS_clone})
        if (::syscall(call, CLONE_NEWUSER | CLONE_THREAD, 0, 0, 0, 0) != -1 || errno != EPERM)
            tell(std::to_string(call).c_str(), false);
    std::array<char*, 3> command{const_cast<char*>("/bin/echo"), const_cast<char*>("execute: done"), nullptr};
    ::execv(command[0], command.data());
    tell("execute", false);
    return 0;
}

/// Writes what 7zz would, for the image or for the volume in it.
void beHonest(const std::string& command, bool isImage) {
    std::string text;
    if (command == "l" && isImage)
        text = "Type = Dmg\n----------\nPath = 0\nSize = 2048\nComment = disk image (Apple_HFS : 1)\n";
    else if (command == "l")
        text = "Type = HFS\n----------\nPath = Tavo\nFolder = +\n\nPath = Tavo/file\nFolder = -\nSize = 4\n";
    else if (command == "x" && isImage)
        text = std::string(1024, '\0') + std::string("H+\0\4", 4) + std::string(1020, '\0');
    else if (command == "x")
        text = "text";
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
