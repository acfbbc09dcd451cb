#include "diag/LogFile.h"

#include "diag/MonitoringHandler.h"
#include "support/LogicTest.h"

namespace join::test {

class LogFile : public LogicTest {
protected:
    void SetUp() override { prepared(); }

    static std::string generation(int number) { return logFolder + "join" + std::to_string(number) + ".log"; }
    void rotate(const std::string& mark) {
        files.put(logFolder + "join.log", mark + std::string(262'145 - mark.size(), '.'));
        timers.fire();
        EXPECT_EQ(journal.back(),
                  "truncate " + slots().tavoJoinLogFolder + "join.log"); // the streams stay on it
    }
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

TEST_F(LogFile, ARunOverwritesOldGenerationsOnlyAsFarAsItHasRotated) {
    for (int number = 0; number <= 3; ++number)
        files.put(generation(number), "old" + std::to_string(number) + ".");
    files.put(logFolder + "join.log", std::string(262'144, 'x'));
    timers.fire();
    EXPECT_EQ(marks(5), "old0 old1 old2 old3 - ");
    rotate("1");
    EXPECT_EQ(marks(5), "1 old1 old2 old3 - ");
    rotate("2");
    EXPECT_EQ(marks(5), "2 1 old2 old3 - ");
}

TEST_F(LogFile, AGapMovesUpAndTwelveRotationsLeaveElevenGenerations) {
    for (int rotation = 1; rotation <= 12; ++rotation) {
        rotate(std::to_string(rotation));
        EXPECT_EQ(slots().logFileNameCount, std::min(rotation, 10));
        if (rotation == 5)
            files.remove(generation(3));
    }
    EXPECT_EQ(marks(12), "12 11 10 9 8 7 6 5 4 3 - - ");
    rotate("13");
    rotate("14");
    EXPECT_EQ(marks(12), "14 13 12 11 10 9 8 7 6 5 4 - ");
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
