#include "endtoend/JoinWorld.h"

#include <fstream>
#include <gtest/gtest.h>

#include <X11/Xlib.h> // last: its macros have everyday names

namespace join::test {
namespace {

/// A virtual screen with a window manager.
class Desktop {
public:
    Desktop() { xdotool({"get_num_desktops"}); } // which the manager tells as soon as it is there

    std::string display() const {
        std::string number;
        eventually([&] { return (number = contentsOf(folder_ / "display")).ends_with('\n'); });
        return ":" + number.substr(0, number.size() - 1);
    }

    /// Whether the command succeeds in the end.
    bool xdotool(std::vector<std::string> command) const {
        command.insert(command.begin(), "xdotool");
        const Launch launch{
            .command = command, .environment = {{"DISPLAY", display()}}, .output = folder_ / "window"};
        return eventually([&] { return statusOf(launch) == 0; });
    }

    /// The window of that process.
    std::string windowOf(const Child& process) const {
        xdotool({"search", "--onlyvisible", "--pid", std::to_string(process.process())});
        const std::string windows = contentsOf(folder_ / "window");
        return windows.substr(0, windows.find('\n'));
    }

    /// Whether the window answers as https://specifications.freedesktop.org/wm-spec/ ("_NET_WM_PING") has it.
    bool isAnswered(const std::string& window) const {
        const std::unique_ptr<Display, int (*)(Display*)> server(XOpenDisplay(display().c_str()),
                                                                 XCloseDisplay);
        XSelectInput(server.get(), DefaultRootWindow(server.get()),
                     StructureNotifyMask | SubstructureNotifyMask);
        XEvent ping{};
        ping.xclient.type = ClientMessage;
        ping.xclient.format = 32;
        ping.xclient.window = std::stoul(window);
        ping.xclient.message_type = XInternAtom(server.get(), "WM_PROTOCOLS", False);
        ping.xclient.data.l[0] = static_cast<long>(XInternAtom(server.get(), "_NET_WM_PING", False));
        ping.xclient.data.l[2] = static_cast<long>(ping.xclient.window);
        XSendEvent(server.get(), ping.xclient.window, False, NoEventMask, &ping);
        return eventually([&] {
            XEvent answer{};
            return XCheckTypedEvent(server.get(), ClientMessage, &answer) &&
                   answer.xclient.message_type == ping.xclient.message_type &&
                   answer.xclient.data.l[2] == ping.xclient.data.l[2];
        });
    }

private:
    TemporaryFolder folder_;
    Child screen_{{.command = {"sh", "-c", "exec Xvfb -displayfd 1 -nolisten tcp -noreset 2>/dev/null"},
                   .output = folder_ / "display"}};
    Child manager_{{.command = {"openbox"}, .environment = {{"DISPLAY", display()}}}};
};

/// An update with a copy of Join in the home folder.
Launch update(const JoinWorld& world) {
    world.installPrograms();
    JoinWorld::copyJoinTo(world.home());
    return world.launch({world.url()}, world.home() + "/Join.app");
}

Launch updateWithHangingMount(const JoinWorld& world) {
    Launch launch = update(world);
    const std::string helper = world.home() + "/Join.app/Contents/Helpers/hdiutil";
    fs::copy(JOIN_HANGING_TOOL, helper, fs::copy_options::overwrite_existing);
    return launch;
}

/// A delivered copy that is long on its way.
Launch largeCopy(const JoinWorld& world) {
    Launch launch = update(world);
    launch.command.pop_back();
    for (int number = 0; number < 60'000; ++number)
        std::ofstream(world.home() + "/Join.app/" + std::to_string(number));
    return launch;
}

Launch typedKey(const JoinWorld& world) { return world.launch({"tavojoin://wsn=" + world.host()}); }

TEST(Waiting, WhateverJoinWaitsForTheUserLeavesAtOnce) {
    constexpr auto typed = "Key : 1 Email : 2";
    const struct {
        std::vector<std::string> service;
        Launch (*prepare)(const JoinWorld&);
        const char* begins; ///< the last line of the log before the wait
        const char* leave;  ///< the keys
        const char* says = "Terminating tavo join";
    } waits[] = {{{"--delay", "60000"}, update, "Update Info Object Allocated", "alt+F4"},
                 {{"--delay", "60000"}, typedKey, typed, "Escape", "main window cancel button event"},
                 {delivering({"--image-fail", "all", "--update-needed", "true"}), update,
                  "Retrying dmg download! COUNT", "ctrl+w"},
                 {delivering({"--update-needed", "true"}), updateWithHangingMount, "\"M3\":", "ctrl+q"},
                 {{}, largeCopy, "Application folder : /Applications", "alt+F4"}};
    const Desktop desktop;
    for (const auto& [service, prepare, begins, leave, says] : waits) {
        SCOPED_TRACE(begins);
        const JoinWorld world(service);
        Launch launch = prepare(world);
        launch.environment.insert(launch.environment.end(),
                                  {{"QT_QPA_PLATFORM", "xcb"}, {"DISPLAY", desktop.display()}});
        Child join(launch);
        ASSERT_TRUE(world.logs(begins == typed ? "Launch app called" : begins));
        const std::string window = desktop.windowOf(join);
        if (begins == typed) {
            ASSERT_TRUE(desktop.xdotool(
                {"windowactivate", "--sync", window, "key", "--delay", "1", "1", "Tab", "2", "Return"}));
            ASSERT_TRUE(world.logs(begins));
        }
        EXPECT_TRUE(desktop.isAnswered(window));
        EXPECT_TRUE(desktop.xdotool({"windowactivate", "--sync", window, "key", leave}));
        EXPECT_EQ(join.wait(), 0) << world.log();
        const std::string log = world.log();
        const std::string since = log.substr(log.find('\n', log.rfind(begins)));
        EXPECT_EQ(count(since, " Join["), 2) << since; // that the user leaves, and the end of the session
        EXPECT_NE(since.find(says), std::string::npos) << since;
        EXPECT_TRUE(since.ends_with("-\n\n")) << since;
    }
}

} // namespace
} // namespace join::test
