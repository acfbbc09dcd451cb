#include "endtoend/JoinWorld.h"

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <fstream>

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
        const std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection(
            xcb_connect(display().c_str(), nullptr), xcb_disconnect);
        const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
        const auto atom = [&](std::string_view name) {
            const auto asked = xcb_intern_atom(connection.get(), 0, name.size(), name.data());
            const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
                xcb_intern_atom_reply(connection.get(), asked, nullptr), &std::free);
            return reply->atom;
        };
        const std::uint32_t answers = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection.get(), root, XCB_CW_EVENT_MASK, &answers);
        xcb_client_message_event_t ping{};
        ping.response_type = XCB_CLIENT_MESSAGE;
        ping.format = 32;
        ping.window = static_cast<xcb_window_t>(std::stoul(window));
        ping.type = atom("WM_PROTOCOLS");
        ping.data.data32[0] = atom("_NET_WM_PING");
        ping.data.data32[2] = ping.window;
        xcb_send_event(connection.get(), 0, ping.window, 0, reinterpret_cast<const char*>(&ping));
        xcb_flush(connection.get());
        return eventually([&] {
            const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event(
                xcb_poll_for_event(connection.get()), &std::free);
            const auto* answer = reinterpret_cast<xcb_client_message_event_t*>(event.get());
            return event && (event->response_type & 0x7F) == XCB_CLIENT_MESSAGE &&
                   answer->type == ping.type && answer->data.data32[2] == ping.window;
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
    const Launch launch = update(world);
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
