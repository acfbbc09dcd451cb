#include "platform/linux/system/StderrLog.h"

#include "platform/Exception.h"
#include "platform/linux/system/StandardStreams.h"
#include "platform/linux/system/SystemClock.h"
#include "support/Child.h"
#include "support/Environment.h"
#include "support/FakeTime.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sys/resource.h>

namespace join::test {

using namespace platform;

class StderrLogTest : public testing::Test {
protected:
    static bool leadsTo(int stream, const std::string& path) {
        return fs::read_symlink("/proc/self/fd/" + std::to_string(stream)) == path;
    }
    static bool allLeadTo(const std::string& path) {
        return leadsTo(0, path) && leadsTo(1, path) && leadsTo(2, path);
    }

    Journal journal_;
    FakeClock clock_{journal_};
    TemporaryFolder folder_;
    const std::string path_ = folder_ / "logs/log";
};

TEST(SystemClock, CountsAThousandMillisecondsAndFollowsAChangeOfTheTimeZone) {
    EXPECT_TRUE(eventually([] { return SystemClock().localTime().millisecond > 99; }));
    const EnvironmentVariable east("TZ", "<EAST>-6");
    const int hour = SystemClock().localTime().hour;
    const EnvironmentVariable west("TZ", "<WEST>6");
    EXPECT_NE(SystemClock().localTime().hour, hour); // half a day apart
}

TEST(CallStack, GoesWithAnExceptionALineForEachFrame) {
    Exception::setCallStackSource(callStack);
    const std::string frames = callStackOf(Exception("no reason"));
    Exception::setCallStackSource(nullptr);
    EXPECT_GT(std::ranges::count(frames, '\n'), 2);
    EXPECT_NE(frames.find("linux_tests"), std::string::npos) << frames;
}

TEST_F(StderrLogTest, TheStreamsFollowTheFileOfThatNameAsLongAsItCanBeOpenedAndAreNeverClosed) {
    writeFile(path_, "12345");
    shell(folder_.path(), "mkfifo pipe");
    expectInChild([&] {
        StderrLog log("Join", clock_);
        EXPECT_TRUE(log.redirectStandardStreams(path_) == 5 && allLeadTo(path_));
        fs::resize_file(path_, 0);
        const std::string kept = "\ta\n \xC2\xA0 \xF0\x9F\x98\x80 \\x";
        std::string writer;
        std::jthread([&] {
            writer = "[" + std::to_string(::getpid()) + ":" + std::to_string(::gettid()) + "] ";
            log.write("emptied\x1B" + kept);
        }).join();
        EXPECT_EQ(contentsOf(path_), "2024-02-29 13:05:09.000 Join" + writer + "emptied\\x1B" + kept + "\n");
        EXPECT_EQ(::fcntl(2, F_GETFL) & (O_APPEND | O_ACCMODE), O_APPEND | O_RDWR);
        for (const char* rotation : {"mv logs/log rotated", "rm logs/log"}) {
            shell(folder_.path(), rotation);
            EXPECT_TRUE(log.redirectStandardStreams(path_) == 0 && allLeadTo(path_));
        }
        for (const std::string& other :
             {folder_ / "missing/log", folder_.path(), folder_ / "pipe", path_ + "/log", std::string()})
            EXPECT_TRUE(log.redirectStandardStreams(other) == 0 && allLeadTo(path_)) << other;
        fs::rename(folder_ / "logs", folder_ / "gone");
        EXPECT_TRUE(log.redirectStandardStreams(path_) == 0 && allLeadTo(folder_ / "gone/log"));
        log.write("still heard");
        fs::rename(folder_ / "gone", folder_ / "logs");
        EXPECT_TRUE(log.redirectStandardStreams(path_) == contentsOf(path_).size() && allLeadTo(path_));
        for (const int closed : {0, 2})
            ::close(closed);
        openMissingStandardStreams();
        EXPECT_TRUE(leadsTo(0, "/dev/null") && leadsTo(1, path_) && leadsTo(2, "/dev/null"));
    });
    EXPECT_TRUE(contentsOf(path_).ends_with("still heard\n")) << contentsOf(path_);
}

TEST_F(StderrLogTest, EachLineIsOneWriteAndWhereTheFileTakesNoneGoesWhereStandardErrorLedAtFirst) {
    writeFile(path_, std::string(10'000, '\n'));
    const auto check = [&] {
        StderrLog log("Join", clock_);
        std::array<int, 2> ends{};
        ASSERT_TRUE(::pipe2(ends.data(), O_DIRECT) == 0 && ::dup2(ends[1], 2) == 2); // keeps writes apart
        log.write("two\nlines");
        std::array<char, 1000> written{};
        const auto size = static_cast<std::size_t>(::read(ends[0], written.data(), written.size()));
        EXPECT_TRUE(std::string(written.data(), size).ends_with("] two\nlines\n"));

        const rlimit full{10'000, 10'000}; // this file cannot grow
        std::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &full);
        log.redirectStandardStreams(path_);
        log.write("the disk is full");
    };
    expectInChild(check, "the disk is full");
}

} // namespace join::test
