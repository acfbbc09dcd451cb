#include "platform/linux/instance/SingleInstance.h"

#include "platform/Exception.h"
#include "platform/linux/instance/LaterStarts.h"
#include "support/Environment.h"
#include "support/FakeTime.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fcntl.h>
#include <functional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace join::platform {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using test::TemporaryFolder;
using Start = SingleInstance::Start;

Descriptor opened(const std::string& folder) { return openForReading(AT_FDCWD, folder.c_str(), O_DIRECTORY); }

InstanceMessage urlMessage(const std::string& url) { return {.url = url, .activationToken = ""}; }

std::vector<std::string> urlsOf(const std::vector<InstanceMessage>& messages) {
    std::vector<std::string> urls;
    urls.reserve(messages.size());
    for (const InstanceMessage& message : messages)
        urls.push_back(message.url.value_or("(none)"));
    return urls;
}

TEST(InstanceMessage, IsReadBackAsItWasWrittenAndNothingElseIsAMessage) {
    const std::vector<InstanceMessage> messages = {
        {},
        {.url = {}, .activationToken = "token"},
        {.url = "TAVOJOIN://k=1\n&e=\xff", .activationToken = ""},
        {.url = "tavojoin:" + std::string(std::size_t{127} * 1024, 'x'), .activationToken = "token"},
    };
    for (const InstanceMessage& message : messages)
        EXPECT_EQ(parseInstanceMessage(instanceMessageBytes(message)), message);

    for (const std::string& none :
         {""s, "\0\0\0"s, "tavojoin 1\0"s, "tavojoin 1\0\0"s, "tavojoin 1\0\0\0x"s, "tavojoin 2\0\0\0"s,
          "tavojoin 1\0--help\0\0"s, "tavojoin 1" + std::string(maximumInstanceMessageSize, '\0')})
        EXPECT_EQ(parseInstanceMessage(none), std::nullopt) << none.substr(0, 30);
}

/// Becomes the first and begins to take messages.
void startFirst(SingleInstance& instance) {
    ASSERT_EQ(instance.start({}), Start::first);
    instance.messages().begin();
}

class SingleInstanceTest : public testing::Test {
protected:
    Start startAnother(const InstanceMessage& message, std::chrono::milliseconds patience = 5s) const {
        return SingleInstance(opened(folder.path()), patience).start(message);
    }
    void expectResignsWith(const std::vector<std::string>& urls) { EXPECT_EQ(urlsOf(first.resign()), urls); }

    TemporaryFolder folder;
    SingleInstance first{opened(folder.path())};
};

TEST_F(SingleInstanceTest, GivesTheFirstOneTheMessagesOfTheOthersInTheirOrder) {
    startFirst(first);
    std::atomic<int> notified = 0;
    for (int i = 0; i < 20; ++i) {
        if (i == 10)
            first.messages().setNotification([&] { ++notified; });
        EXPECT_EQ(startAnother(urlMessage("tavojoin://" + std::to_string(i))), Start::handedOver);
    }
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(first.messages().next(), urlMessage("tavojoin://" + std::to_string(i)));
    EXPECT_EQ(first.messages().next(), std::nullopt);
    EXPECT_EQ(notified, 20); // the sender gets its answer a moment earlier
}

TEST_F(SingleInstanceTest, ResignsWithWhatItHasTakenAndLeavesThePlaceToTheNext) {
    startFirst(first);
    for (const char* url : {"tavojoin://a", "tavojoin://b"})
        ASSERT_TRUE(first.handOver(urlMessage(url)));
    expectResignsWith({"tavojoin://a", "tavojoin://b"});
    SingleInstance next(opened(folder.path()));
    startFirst(next);
    EXPECT_TRUE(first.handOver(urlMessage("tavojoin://c")));
    EXPECT_EQ(next.messages().next(), urlMessage("tavojoin://c"));
}

TEST_F(SingleInstanceTest, TakesThePlaceOfOneThatHasLeftItsSocketAndLock) {
    test::writeFile(folder / "instance.lock", "");
    test::writeFile(folder / "instance", "in the socket's place");
    startFirst(first);
    EXPECT_EQ(startAnother({}), Start::handedOver);
}

TEST_F(SingleInstanceTest, TakesNothingLateWhoseSenderWasToldThatNobodyAnswers) {
    ASSERT_EQ(first.start({}), Start::first);
    EXPECT_EQ(startAnother(urlMessage("tavojoin://early"), 50ms), Start::unanswered);
    first.messages().begin();
    EXPECT_TRUE(first.handOver(urlMessage("tavojoin://later")));
    expectResignsWith({"tavojoin://later"});
}

TEST_F(SingleInstanceTest, IsNotHeldUpByThoseWhoConnectAndSayNothingOrNonsense) {
    startFirst(first);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    (folder / "instance").copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
    std::vector<Descriptor> others;
    for (const std::string& said : {std::string(), std::string("--help"), std::string(150'000, 'x')}) {
        Descriptor& other = others.emplace_back(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        ASSERT_EQ(::connect(other.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        if (!said.empty()) {
            ASSERT_GT(::send(other.get(), said.data(), said.size(), MSG_NOSIGNAL), 0);
        }
    }
    EXPECT_TRUE(first.handOver(urlMessage("tavojoin://x")));
    expectResignsWith({"tavojoin://x"});
    char reply = 0;
    for (const Descriptor& other : others)
        EXPECT_LE(::recv(other.get(), &reply, 1, 0), 0); // each was dropped, none was answered
}

TEST(LaterStarts, AreToldInTheLogWhenNoNextOneStartsToTakeThem) {
    const TemporaryFolder folder;
    SingleInstance first(opened(folder.path()), 50ms);
    startFirst(first);
    test::RecordingLog log;
    test::FakeMainQueue mainQueue;
    std::vector<std::string> happened;
    LaterStarts starts(&first, mainQueue, log,
                       {.registerScheme = {},
                        .bringToFront = [](const auto& /*token*/) { return false; },
                        .reopen = [] { return false; },
                        .terminate = [&] { happened.emplace_back("the end"); },
                        .startNext =
                            [&](const auto& arguments) {
                                happened.push_back("next with " + std::to_string(arguments.size()));
                                return false;
                            }});
    starts.setEventHandler([&](const std::string& url) { happened.push_back(url); });
    EXPECT_TRUE(first.handOver(urlMessage("tavojoin://a")));
    EXPECT_TRUE(first.handOver({})); // wants a window
    starts.begin("tavojoin://own");
    mainQueue.turn();
    EXPECT_TRUE(first.handOver(urlMessage("tavojoin://b")));
    starts.passOn();
    EXPECT_EQ(happened,
              (std::vector<std::string>{"tavojoin://own", "tavojoin://a", "the end", "next with 0"}));
    EXPECT_EQ(log.lines, (std::vector<std::string>{"There is no window to show : a new Join takes over",
                                                   "A later start is lost : (no URL)",
                                                   "A later start is lost : tavojoin://b"}));
}

TEST(InstanceFolder, IsPrivateAndPassesOverWhatOthersCanReach) {
    const TemporaryFolder world;
    const test::EnvironmentVariable home("HOME", world.path().c_str());
    const test::EnvironmentVariable cache("XDG_CACHE_HOME", (world / "cache").c_str());
    const auto pathOf = [](const Descriptor& folder) {
        return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(folder.get())).string();
    };
    const std::string runtime = world / "runtime";
    const std::string ours = runtime + "/tavojoin";
    const test::EnvironmentVariable variable("XDG_RUNTIME_DIR", runtime.c_str());
    const std::string elsewhere = world / "elsewhere";
    const auto link = [&] { std::filesystem::create_directory_symlink(elsewhere, ours); };
    const auto giveAway = [&] {
        std::filesystem::create_directory(ours);
        ::chmod(ours.c_str(), 0700);
        EXPECT_EQ(::chown(ours.c_str(), 65534, 65534), ::geteuid() == 0 ? 0 : -1); // only root can
    };
    const struct {
        const char* what;
        mode_t mode;
        bool isTaken;
        std::function<void()> prepare = [] {};
    } cases[] = {{"a private one", 0700, true},
                 {"one that others can enter", 0755, false},
                 {"one that the group can write", 0770, false},
                 {"one in which a link leads elsewhere", 0700, false, link},
                 {"one in which our folder is another user's", 0700, ::geteuid() != 0, giveAway}};
    for (const auto& [what, mode, isTaken, prepare] : cases) {
        for (const std::string& made : {elsewhere, runtime})
            std::filesystem::create_directory(made);
        ::chmod(elsewhere.c_str(), 0700); // could be ours
        ::chmod(runtime.c_str(), mode);
        prepare();
        const Descriptor folder = openInstanceFolder();
        struct stat found {};
        ASSERT_EQ(::fstat(folder.get(), &found), 0);
        EXPECT_EQ(found.st_mode & 07777U, 0700U) << what;
        EXPECT_EQ(pathOf(folder) == ours, isTaken) << what;
        EXPECT_NE(pathOf(folder), elsewhere) << what;
        std::filesystem::remove_all(runtime);
    }
}

TEST(InstanceFolder, KeepsOtherUsersFromTheSocketAndItsName) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can act as another user";
    const TemporaryFolder world;
    ::chmod(world.path().c_str(), 0755);
    std::filesystem::create_directory(world / "private");
    ::chmod((world / "private").c_str(), 0700);
    Descriptor folder = opened(world / "private");
    SingleInstance first(opened(world / "private"));
    startFirst(first);
    ASSERT_EQ(::seteuid(65534), 0);
    EXPECT_FALSE(opened(world / "private"));
    // Not even with a descriptor of the folder.
    EXPECT_THROW(SingleInstance(std::move(folder), 50ms).start(urlMessage("tavojoin://x")), Exception);
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(urlsOf(first.resign()), std::vector<std::string>{});
}

} // namespace
} // namespace join::platform
