#include "support/LogicTest.h"

#include <latch>
#include <thread>

namespace join::test {

class SessionState : public LogicTest {};

const std::string creation = "+[JoinSessionDetails getInstance]";
const std::string defaults = "+[JoinSessionDetails setDefaultValues]";

TEST_F(SessionState, DefaultsTouchNothingButTheirOwnFields) {
    JoinSessionDetails& details = session();
    details.key.set("123");
    details.sessionType.set(1);
    details.retryCounter.set(5);
    details.isUpdateNeeded.set(false);
    JoinSessionDetails::setDefaultValues();
    EXPECT_EQ(formatted("%@ %@ %@ %@ %d %d %@ %d %@ %@ %@", details.webServerName(),
                        details.crashDetectorAppVersion(), details.localTavoAppVersion(),
                        details.localJoinAppVersion(), details.isUpdateNeeded(), details.retryCounter(),
                        details.key(), details.sessionType(), details.localCrashDetectorAppVersion(),
                        details.tavoAppVersion(), details.emailID()),
              "join.example.com 0 0 0 1 0 123 1 (null) (null) (null)");
    EXPECT_EQ(said(defaults), (Journal{"Setting default values ...", "Default values are set"}));
}

TEST_F(SessionState, ALineThatCannotBeLoggedGivesABannerAndNothingElse) {
    logSink.throwsOnceOn = "Update Info Object Allocated";
    EXPECT_EQ(JoinSessionDetails::getInstance(), nullptr);
    EXPECT_EQ(said(creation), Journal{banner("the log is full")});
    for (const char* line : {"Setting default values ...", "Update Info Object Allocated"}) {
        slots() = {};
        logSink.throwsOnceOn = line;
        JoinSessionDetails::setDefaultValues();
        EXPECT_EQ(said(defaults).back(),
                  banner(line[0] == 'S' ? "the log is full" : "There is no session state"));
        EXPECT_EQ(session().webServerName(), std::nullopt) << line;
        EXPECT_NE(session().isUpdateNeeded(), true) << line;
    }
}

TEST_F(SessionState, TheInstanceIsOneForAllThreadsAndItsPropertiesAreIndivisible) {
    logSink.atWrite = [] { std::this_thread::yield(); }; // in the middle of a creation
    const std::string words[] = {std::string(100, 'a'), std::string(200, 'b')};
    Atomic<Text> property;
    for (int round = 0; round < 500; ++round) {
        slots().joinInfo.reset();
        JoinSessionDetails* instances[2] = {};
        std::latch line(2);
        const auto run = [&](std::size_t self) {
            line.arrive_and_wait();
            instances[self] = JoinSessionDetails::getInstance();
            for (int time = 0; time < 100; ++time) {
                property.set(words[self]);
                const Text seen = property();
                EXPECT_TRUE(seen == words[0] || seen == words[1]);
            }
        };
        std::jthread other(run, 1);
        run(0);
        other.join();
        EXPECT_EQ(instances[0], instances[1]);
    }
    EXPECT_EQ(said(creation).size(), 500U);
}

} // namespace join::test
