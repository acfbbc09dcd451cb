#include "platform/linux/process/Interruption.h"

#include "platform/Exception.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <sys/signalfd.h>

namespace join::platform {

Interruption::Interruption(std::chrono::milliseconds allowed)
    : end_(std::chrono::steady_clock::now() + allowed) {
    sigset_t ends{};
    ::sigemptyset(&ends);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaddset(&ends, signal);
    ::sigprocmask(SIG_BLOCK, &ends, &before_);
    signals_ = Descriptor(::signalfd(-1, &ends, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!signals_) {
        ::sigprocmask(SIG_SETMASK, &before_, nullptr);
        throw Exception("the system has no descriptors left");
    }
}

Interruption::~Interruption() {
    // A signal that has arrived must not end the process once it has cleaned up and is reporting the outcome.
    signalfd_siginfo ignored{};
    while (readSome(signals_.get(), &ignored, sizeof ignored) > 0) {
    }
    ::sigprocmask(SIG_SETMASK, &before_, nullptr);
}

void Interruption::awaitReadable(int descriptor) const {
    using namespace std::chrono;
    std::array<pollfd, 2> watched{pollfd{signals_.get(), POLLIN, 0}, pollfd{descriptor, POLLIN, 0}};
    do {
        const auto left = ceil<milliseconds>(end_ - steady_clock::now()).count();
        if (left <= 0)
            throw Exception("it took too long");
        const int patience = descriptor < 0 ? 0 : static_cast<int>(std::min<decltype(left)>(left, INT_MAX));
        if (::poll(watched.data(), watched.size(), patience) < 0 && errno != EINTR)
            throw Exception("the system cannot wait");
        if (watched[0].revents != 0)
            throw Exception("it was told to end");
    } while (descriptor >= 0 && watched[1].revents == 0);
}

} // namespace join::platform
