#include "platform/linux/instance/SingleInstance.h"

#include "platform/Exception.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/LinuxPaths.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace join::platform {

namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr const char* lockName = "instance.lock";
constexpr const char* socketName = "instance";

[[noreturn]] void raise(const std::string& what) { throw Exception(what + ": " + std::strerror(errno)); }

Descriptor packetSocket() {
    Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    if (!socket)
        raise("No socket can be had");
    return socket;
}

/// Returns the socket's address by way of its open folder: a folder's path may be too long for an address.
sockaddr_un addressIn(const Descriptor& folder) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = "/proc/self/fd/" + std::to_string(folder.get()) + "/" + socketName;
    path.copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
    return address;
}

void setPatience(const Descriptor& socket, SteadyClock::time_point limit) {
    const auto left = std::max<SteadyClock::duration>(limit - SteadyClock::now(), 1ms); // zero means no limit
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(left).count();
    const timeval value{.tv_sec = microseconds / 1'000'000, .tv_usec = microseconds % 1'000'000};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &value, sizeof value);
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &value, sizeof value);
}

Descriptor openOrMakePrivateFolder(int parent, const char* name) {
    ::mkdirat(parent, name, S_IRWXU); // it may exist already; it is checked below
    return openPrivateFolder(parent, name, O_NOFOLLOW);
}

Descriptor inRuntimeFolder(const std::string& path) {
    const Descriptor runtime = openPrivateFolder(AT_FDCWD, path.c_str(), O_NOFOLLOW);
    return runtime ? openOrMakePrivateFolder(runtime.get(), "tavojoin") : Descriptor();
}

} // namespace

Descriptor openInstanceFolder() {
    Descriptor folder;
    if (const auto runtime = absoluteFromEnvironment("XDG_RUNTIME_DIR"))
        folder = inRuntimeFolder(*runtime);
    if (!folder)
        folder = inRuntimeFolder("/run/user/" + std::to_string(::geteuid()));
    if (!folder)
        folder = openOrMakePrivateFolder(LinuxPaths().openCache().get(), "run");
    if (!folder)
        throw Exception("There is no private folder for the starts of Join to meet in");
    return folder;
}

SingleInstance::SingleInstance(Descriptor folder, std::chrono::milliseconds patience)
    : folder_(std::move(folder)), patience_(patience) {}

SingleInstance::Start SingleInstance::start(const InstanceMessage& message) { return meet(message, true); }

bool SingleInstance::handOver(const InstanceMessage& message) {
    return meet(message, false) == Start::handedOver;
}

SingleInstance::Start SingleInstance::meet(const InstanceMessage& message, bool mayBeFirst) {
    const std::string bytes = instanceMessageBytes(message);
    const auto limit = SteadyClock::now() + patience_;
    for (;;) {
        if (mayBeFirst && takePlace())
            return Start::first;
        const Answer answer = send(bytes, limit);
        if (answer == Answer::taken)
            return Start::handedOver;
        if (answer == Answer::none || SteadyClock::now() > limit)
            return Start::unanswered;
        std::this_thread::sleep_for(1ms); // the first is about to listen, or about to end
    }
}

std::vector<InstanceMessage> SingleInstance::resign() {
    std::vector<InstanceMessage> left;
    if (listener_) {
        left = listener_->close();
        ::unlinkat(folder_.get(), socketName, 0);
    }
    lock_.close();
    return left;
}

bool SingleInstance::takePlace() {
    Descriptor lock(
        ::openat(folder_.get(), lockName, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (!lock)
        raise("The lock file cannot be opened");
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK)
            raise("The lock file takes no lock");
        return false;
    }
    listener_.emplace(listeningSocket());
    lock_ = std::move(lock);
    return true;
}

Descriptor SingleInstance::listeningSocket() const {
    Descriptor socket = packetSocket();
    const sockaddr_un address = addressIn(folder_);
    ::unlinkat(folder_.get(), socketName, 0); // whoever left it is dead: we hold the lock
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket.get(), SOMAXCONN) != 0)
        raise("The socket cannot be made");
    return socket;
}

SingleInstance::Answer SingleInstance::send(const std::string& bytes, SteadyClock::time_point limit) const {
    const Descriptor socket = packetSocket();
    const int size = static_cast<int>(maximumInstanceMessageSize);
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
    setPatience(socket, limit);
    const sockaddr_un address = addressIn(folder_);
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return errno == EAGAIN ? Answer::none : Answer::nobodyThere;
    if (!isOwnPeer(socket.get()))
        return Answer::none;
    std::array<char, instanceReply.size()> reply{};
    if (::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0)
        return errno == EAGAIN ? Answer::none : Answer::nobodyThere;
    ssize_t received = ::recv(socket.get(), reply.data(), reply.size(), 0);
    if (received < 0 && errno == EAGAIN) {
        ::shutdown(socket.get(), SHUT_RD); // from now on no answer can be sent; one sent before counts
        received = ::recv(socket.get(), reply.data(), reply.size(), MSG_DONTWAIT);
        if (received <= 0)
            return Answer::none;
    }
    const bool isTaken =
        received >= 0 && std::string_view(reply.data(), static_cast<std::size_t>(received)) == instanceReply;
    return isTaken ? Answer::taken : Answer::nobodyThere;
}

} // namespace join::platform
