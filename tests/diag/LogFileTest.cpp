#include "diag/LogFile.h"

#include "diag/MonitoringHandler.h"
#include "support/LogicTest.h"

namespace join::test {

class LogFile : public LogicTest {
protected:
    void SetUp() override { prepared(); }

    static std::string generation(int number) { return logFolder + "join" + std::to_string(number) + ".log"; }
    /// How the rotated files begin, the newest first.
    std::string marks(int count) {
        std::string all;
        for (int number = 0; number < count; ++number) {
            const std::string contents = files.read(generation(number)).value_or("-");
            all += contents.substr(0, contents.find('.')) + ' ';
        }
        return all;
    }
};

TEST_F(LogFile, ARunOverwritesOldGenerationsAsFarAsItHasRotatedAndKeepsElevenWhereAGapMovesUp) {
    for (int number = 0; number <= 3; ++number)
        files.put(generation(number), "old" + std::to_string(number) + ".");
    files.put(logFolder + "join.log", std::string(262'144, 'x'));
    timers.fire();
    EXPECT_EQ(marks(5), "old0 old1 old2 old3 - ");
    const std::map<int, std::string> expected = {{2, "2 1 old2 old3 - - - - - - - - "},
                                                 {12, "12 11 10 9 8 7 6 5 4 3 - - "},
                                                 {14, "14 13 12 11 10 9 8 7 6 5 4 - "}};
    for (int rotation = 1; rotation <= 14; ++rotation) {
        files.put(logFolder + "join.log", std::to_string(rotation) + std::string(262'144, '.'));
        timers.fire();
        EXPECT_EQ(journal.back(), "truncate " + slots().tavoJoinLogFolder + "join.log"); // in place
        EXPECT_EQ(marks(12), expected.contains(rotation) ? expected.at(rotation) : marks(12));
        if (rotation == 5)
            files.remove(generation(3));
    }
}

TEST_F(LogFile, AMilestoneHasTheTimeOfATwelveHourClockAndIsKeptOnce) {
    for (const auto& [hour, text] :
         {std::pair(0, "12:05:09"), {1, "01:05:09"}, {11, "11:05:09"}, {12, "12:05:09"}, {13, "01:05:09"}}) {
        clock.now.hour = hour;
        EXPECT_EQ(MonitoringHandler::currentTime(), text);
        MonitoringHandler::addkey("M2", text);
    }
    EXPECT_EQ(said("+[MonitoringHandler addkey:value:]").back(),
              R"(Time stamp : {"M1":"Join Launched time : 01:05:09","M2":"01:05:09"})");
}

} // namespace join::test
