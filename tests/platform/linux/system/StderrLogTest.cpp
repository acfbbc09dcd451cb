#include "platform/linux/system/StderrLog.h"

#include "platform/Exception.h"
#include "platform/linux/system/LogText.h"
#include "platform/linux/system/StandardStreams.h"
#include "platform/linux/system/SystemClock.h"
#include "support/Child.h"
#include "support/Environment.h"
#include "support/FakeTime.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace join::platform;
using join::test::contentsOf;
using join::test::TemporaryFolder;
namespace test = join::test;

const std::string stamp = "2024-02-29 13:05:09.000 Join";

/// Runs the check in a child process, so that this one keeps its streams. Returns the number of the first
/// line that fails, or 0.
void expectInChild(const std::function<int(StderrLog&)>& check, const char* said = "") {
    EXPECT_EXIT(
        {
            test::Journal journal;
            test::FakeClock clock(journal);
            StderrLog log("Join", clock);
            ::_exit(check(log));
        },
        testing::ExitedWithCode(0), said);
}

#define REQUIRE_IN_CHILD(condition)                                                                          \
    if (!(condition))                                                                                        \
    return std::clamp(__LINE__, 1, 255)

bool leadsTo(int stream, const std::string& path) {
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(stream)) == path;
}

bool allLeadTo(const std::string& path) { return leadsTo(0, path) && leadsTo(1, path) && leadsTo(2, path); }

TEST(SystemClock, CountsAThousandMillisecondsAndFollowsAChangeOfTheTimeZone) {
    EXPECT_TRUE(test::eventually([] { return SystemClock().localTime().millisecond > 99; }));
    const test::EnvironmentVariable east("TZ", "<EAST>-6");
    const int hour = SystemClock().localTime().hour;
    const test::EnvironmentVariable west("TZ", "<WEST>6");
    EXPECT_NE(SystemClock().localTime().hour, hour); // half a day apart
}

TEST(CallStack, GoesWithAnExceptionALineForEachFrame) {
    Exception::setCallStackSource(callStack);
    const std::string frames = callStackOf(Exception("no reason"));
    Exception::setCallStackSource(nullptr);
    EXPECT_GT(std::ranges::count(frames, '\n'), 2);
    EXPECT_NE(frames.find("linux_tests"), std::string::npos) << frames;
}

TEST(LogText, KeepsTextAndEscapesWhatATerminalWouldObey) {
    const std::pair<std::string, std::string> messages[] = {
        {"", ""},
        {"a\tb\nc", "a\tb\nc"},
        {"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \\x", "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \\x"},
        {std::string("\0\r\x1B[2J\x7F", 7), "\\x00\\x0D\\x1B[2J\\x7F"},
        {"\xC2\x9B\xC2\xA0", "\\xC2\\x9B\xC2\xA0"},
        {"\xC3(\x80\xC3", "\\xC3(\\x80\\xC3"},
        {"\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80\xFF", "\\xC0\\xAF\\xED\\xA0\\x80\\xF4\\x90\\x80\\x80\\xFF"}};
    for (const auto& [message, line] : messages)
        EXPECT_EQ(escapedForLog(message), line);
}

TEST(StderrLog, EachLineIsWrittenWholeFromEveryThread) {
    const TemporaryFolder folder;
    const std::string path = folder / "log";
    expectInChild([&](StderrLog& log) {
        REQUIRE_IN_CHILD(log.redirectStandardStreams(path) == 0);
        std::vector<std::jthread> threads;
        threads.reserve(4);
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                for (int line = 0; line < 100; ++line)
                    log.write(std::string(2000, 'x'));
            });
        return 0;
    });
    std::istringstream lines(contentsOf(path));
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        EXPECT_TRUE(line.starts_with(stamp + "[") && line.ends_with("] " + std::string(2000, 'x'))) << line;
    EXPECT_EQ(count, 400);
}

TEST(StderrLog, TheStreamsFollowTheFileOfThatNameAndStayWhereTheyAreWhenItCannotBeOpened) {
    const TemporaryFolder folder;
    const std::string path = test::writeFile(folder / "logs/log", "12345");
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    expectInChild([&](StderrLog& log) {
        REQUIRE_IN_CHILD(log.redirectStandardStreams(path) == 5 && allLeadTo(path));
        REQUIRE_IN_CHILD(::truncate(path.c_str(), 0) == 0);
        std::string writer;
        std::jthread([&] {
            writer = "[" + std::to_string(::getpid()) + ":" + std::to_string(::gettid()) + "] ";
            log.write("emptied\x1B");
        }).join();
        REQUIRE_IN_CHILD(contentsOf(path) == stamp + writer + "emptied\\x1B\n");

        REQUIRE_IN_CHILD((::fcntl(2, F_GETFL) & (O_APPEND | O_ACCMODE)) == (O_APPEND | O_RDWR));
        std::filesystem::rename(path, folder / "rotated");
        REQUIRE_IN_CHILD(log.redirectStandardStreams(path) == 0 && allLeadTo(path));
        std::filesystem::remove(path);
        REQUIRE_IN_CHILD(log.redirectStandardStreams(path) == 0 && allLeadTo(path));

        for (const std::string& other :
             {folder / "missing/log", folder.path(), pipe, path + "/log", std::string()})
            REQUIRE_IN_CHILD(log.redirectStandardStreams(other) == 0 && allLeadTo(path));
        std::filesystem::rename(folder / "logs", folder / "gone");
        REQUIRE_IN_CHILD(log.redirectStandardStreams(path) == 0 && allLeadTo(folder / "gone/log"));
        log.write("still heard");
        std::filesystem::rename(folder / "gone", folder / "logs");
        REQUIRE_IN_CHILD(log.redirectStandardStreams(path) == contentsOf(path).size() && allLeadTo(path));
        return 0;
    });
    EXPECT_TRUE(contentsOf(path).ends_with("still heard\n"));
}

TEST(StderrLog, ALineThatTheFileDoesNotTakeGoesWhereStandardErrorLedAtFirst) {
    const TemporaryFolder folder;
    const std::string path = test::writeFile(folder / "log", std::string(10'000, '\n'));
    expectInChild(
        [&](StderrLog& log) {
            const rlimit full{10'000, 10'000}; // this file cannot grow
            std::signal(SIGXFSZ, SIG_IGN);
            ::setrlimit(RLIMIT_FSIZE, &full);
            log.redirectStandardStreams(path);
            log.write("the disk is full");
            return 0;
        },
        "the disk is full");
}

TEST(StandardStreams, ClosedOnesLeadToTheNullDevice) {
    expectInChild([](StderrLog& log) {
        for (const int stream : {0, 2})
            ::close(stream);
        const int before = ::fcntl(1, F_GETFL);
        openMissingStandardStreams();
        REQUIRE_IN_CHILD(leadsTo(0, "/dev/null") && leadsTo(2, "/dev/null") && ::fcntl(1, F_GETFL) == before);
        log.write("harmless");
        return 0;
    });
}

} // namespace
