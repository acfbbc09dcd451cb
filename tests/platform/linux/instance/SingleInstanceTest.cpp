#include "platform/linux/instance/SingleInstance.h"

#include "platform/linux/instance/LaterStarts.h"
#include "support/Child.h"
#include "support/Environment.h"
#include "support/FakeTime.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <sys/socket.h>
#include <sys/un.h>

namespace join::test {
namespace {

using namespace platform;
using namespace std::chrono_literals;
using Lines = std::vector<std::string>;
using Start = SingleInstance::Start;

Descriptor opened(const std::string& folder) { return openForReading(AT_FDCWD, folder.c_str(), O_DIRECTORY); }

InstanceMessage urlMessage(const std::string& url) { return {.url = url, .activationToken = ""}; }

/// Becomes the first and begins to take messages.
void startFirst(SingleInstance& instance) {
    ASSERT_EQ(instance.start({}), Start::first);
    instance.messages().begin();
}

class SingleInstanceTest : public testing::Test {
protected:
    void expectResignsWith(const Lines& urls) {
        Lines left;
        for (const InstanceMessage& message : first.resign())
            left.push_back(message.url.value_or("(none)"));
        EXPECT_EQ(left, urls);
    }

    TemporaryFolder folder;
    SingleInstance first{opened(folder.path())};
    SingleInstance impatient{opened(folder.path()), 50ms};
};

TEST_F(SingleInstanceTest, TakesTheMessagesOfOthersInTheirOrderAndLeavesThePlaceWithTheRest) {
    writeFile(folder / "instance.lock", ""); // as a dead one has left them
    writeFile(folder / "instance", "in the socket's place");
    startFirst(first);
    std::atomic<int> notified = 0;
    for (int i = 0; i < 20; ++i) {
        if (i == 10)
            first.messages().setNotification([&] { ++notified; });
        const auto message = urlMessage("tavojoin://" + std::to_string(i));
        EXPECT_EQ(SingleInstance(opened(folder.path())).start(message), Start::handedOver);
    }
    for (int i = 0; i < 18; ++i)
        EXPECT_EQ(first.messages().next(), urlMessage("tavojoin://" + std::to_string(i)));
    expectResignsWith({"tavojoin://18", "tavojoin://19"});
    EXPECT_EQ(notified, 20); // the sender gets its answer a moment earlier

    SingleInstance next(opened(folder.path()));
    startFirst(next);
    const InstanceMessage longest{"TAVOJOIN:\n\xff" + std::string(std::size_t{127} * 1024, 'x'), "token"};
    EXPECT_TRUE(first.handOver(longest));
    EXPECT_EQ(next.messages().next(), longest);
    EXPECT_EQ(next.messages().next(), std::nullopt);
}

TEST_F(SingleInstanceTest, TakesNothingLateWhoseSenderWasToldThatNobodyAnswers) {
    ASSERT_EQ(first.start({}), Start::first);
    EXPECT_EQ(impatient.start(urlMessage("tavojoin://early")), Start::unanswered);
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
        EXPECT_TRUE(said.empty() || ::send(other.get(), said.data(), said.size(), MSG_NOSIGNAL) > 0);
    }
    EXPECT_TRUE(first.handOver(urlMessage("tavojoin://x")));
    expectResignsWith({"tavojoin://x"});
    char reply = 0;
    for (const Descriptor& other : others)
        EXPECT_LE(::recv(other.get(), &reply, 1, 0), 0); // each was dropped, none was answered
}

using LaterStartsTest = SingleInstanceTest;

TEST_F(LaterStartsTest, AreToldInTheLogWhenNoNextOneTakesThem) {
    startFirst(impatient);
    RecordingLog log;
    FakeMainQueue mainQueue;
    Lines happened;
    const auto startNext = [&](const Lines& arguments) {
        happened.push_back("next with " + std::to_string(arguments.size()));
        return false;
    };
    LaterStarts starts(&impatient, mainQueue, log,
                       {.registerScheme = {},
                        .bringToFront = [](const auto& /*token*/) { return false; },
                        .reopen = [] { return false; },
                        .terminate = [&] { happened.emplace_back("the end"); },
                        .startNext = startNext});
    starts.setEventHandler([&](const std::string& url) { happened.push_back(url); });
    EXPECT_TRUE(first.handOver(urlMessage("tavojoin://a")));
    EXPECT_TRUE(first.handOver({})); // wants a window
    starts.begin("tavojoin://own");
    mainQueue.turn();
    EXPECT_TRUE(first.handOver(urlMessage("tavojoin://b")));
    starts.passOn();
    EXPECT_EQ(happened, (Lines{"tavojoin://own", "tavojoin://a", "the end", "next with 0"}));
    EXPECT_EQ(log.lines, (Lines{"There is no window to show : a new Join takes over",
                                "A later start is lost : (no URL)", "A later start is lost : tavojoin://b"}));
}

TEST(InstanceFolder, IsPrivateAndPassesOverWhatOthersCanReach) {
    const TemporaryFolder cache;
    const TemporaryFolder runtime;
    const TemporaryFolder elsewhere; // could be ours
    const EnvironmentVariable cacheVariable("XDG_CACHE_HOME", cache.path().c_str());
    const EnvironmentVariable runtimeVariable("XDG_RUNTIME_DIR", runtime.path().c_str());
    const auto isOursTakenAfter = [&](const std::string& change) {
        shell(runtime.path(), change);
        const Descriptor folder = openInstanceFolder();
        const auto path = fs::read_symlink("/proc/self/fd/" + std::to_string(folder.get()));
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all);
        EXPECT_NE(path, elsewhere.path());
        return path == runtime / "tavojoin";
    };
    EXPECT_FALSE(isOursTakenAfter("chmod 755 .") || isOursTakenAfter("chmod 770 ."));
    EXPECT_TRUE(isOursTakenAfter("chmod 700 ."));
    EXPECT_FALSE(isOursTakenAfter("rmdir tavojoin; ln -s " + elsewhere.path() + " tavojoin"));
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can make what belongs to another user";
    EXPECT_FALSE(isOursTakenAfter("rm tavojoin; mkdir -m 700 tavojoin; chown 65534:65534 tavojoin"));
}

TEST_F(SingleInstanceTest, KeepsOtherUsersFromItsSocketAndItsName) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can act as another user";
    startFirst(first);
    ASSERT_EQ(::seteuid(65534), 0);
    EXPECT_FALSE(opened(folder.path()));
    // Not even with a descriptor of the folder.
    EXPECT_EQ(refusalOf([this] { impatient.start(urlMessage("tavojoin://x")); }),
              "The lock file cannot be opened: Permission denied");
    ASSERT_EQ(::seteuid(0), 0);
    expectResignsWith({});
}

} // namespace
} // namespace join::test
