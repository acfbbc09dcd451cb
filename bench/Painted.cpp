// Runs a program again and again and prints how many milliseconds pass from its start until the middle of the
// screen is white, which is when a user sees its window painted. Needs a display that shows nothing else.
//
//   painted RUNS PROGRAM [ARGUMENT...]

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

class Screen {
public:
    Screen() : connection_(xcb_connect(nullptr, nullptr), xcb_disconnect) {
        if (xcb_connection_has_error(connection_.get()))
            throw std::runtime_error("there is no display");
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data;
    }

    /// A little beside the middle of the screen, where the progress window is empty.
    bool isWhite() const {
        const auto x = static_cast<std::int16_t>(screen_->width_in_pixels / 2);
        const auto y = static_cast<std::int16_t>(screen_->height_in_pixels / 2 - 40);
        const auto cookie =
            xcb_get_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root, x, y, 1, 1, ~0U);
        const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> image(
            xcb_get_image_reply(connection_.get(), cookie, nullptr), &std::free);
        const std::uint8_t* const pixel = image ? xcb_get_image_data(image.get()) : nullptr;
        return pixel && pixel[0] == 0xFF && pixel[1] == 0xFF && pixel[2] == 0xFF;
    }

    void waitUntil(bool white) const {
        const auto limit = Clock::now() + std::chrono::seconds(20);
        while (isWhite() != white) {
            if (Clock::now() > limit)
                throw std::runtime_error("the window does not come, or does not go");
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    }

private:
    std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection_;
    const xcb_screen_t* screen_ = nullptr;
};

double millisecondsToWindow(const Screen& screen, char** command) {
    screen.waitUntil(false);
    const auto begin = Clock::now();
    const pid_t child = ::fork();
    if (child == 0) {
        const int null = ::open("/dev/null", O_RDWR);
        for (const int stream : {0, 1, 2})
            ::dup2(null, stream);
        ::execv(command[0], command);
        ::_exit(127);
    }
    screen.waitUntil(true);
    const Milliseconds passed = Clock::now() - begin;
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    return passed.count();
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3)
        return 2;
    try {
        const Screen screen;
        std::vector<double> times;
        for (int run = 0; run < std::max(1, std::atoi(argv[1])); ++run)
            times.push_back(millisecondsToWindow(screen, argv + 2));
        std::ranges::sort(times);
        std::cout << times[times.size() / 2] << ' ' << times.front() << ' ' << times.back() << '\n';
    } catch (const std::exception& exception) {
        std::cerr << "painted: " << exception.what() << '\n';
        return 1;
    }
}
