#include "standins/StandIns.h"

#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using join::test::Child;
using join::test::contentsOf;
using join::test::eventually;
using join::test::TemporaryFolder;
using Texts = std::vector<std::string>;

std::string unescaped(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\\')
            result += text[i];
        else
            result += text.at(++i) == 'n' ? '\n' : text[i];
    return result;
}

/// The values of the record's lines of that name.
Texts valuesOf(const std::string& name, const std::string& record) {
    Texts values;
    std::istringstream lines(record);
    for (std::string line; std::getline(lines, line);)
        if (line.rfind(name + ' ', 0) == 0)
            values.push_back(unescaped(line.substr(name.size() + 1)));
    return values;
}

Texts hostileArguments() {
    std::string everyByte;
    for (int byte = 1; byte < 256; ++byte)
        everyByte += static_cast<char>(byte);
    return {
        "",   "two words", R"('"`)", "line\nend\n", "\\",   R"(\n\\)", "-n",     "$HOME$(id)`id`",
        "%s", "*",         "(",      "!",           "\r\t", everyByte, "\u2028", std::string(20'000, 'x')};
}

template <typename Number>
Number numberAt(const std::string& bytes, std::size_t offset) {
    Number number = 0;
    EXPECT_LE(offset + sizeof number, bytes.size());
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}

/// What a loader of 64-bit Mach-O files takes for the embedded property list.
std::optional<std::string> embeddedList(const std::string& bytes) {
    std::size_t command = 32;
    for (auto commands = numberAt<std::uint32_t>(bytes, 16); commands > 0; --commands) {
        const bool isText = numberAt<std::uint32_t>(bytes, command) == 25 &&
                            std::strcmp(bytes.c_str() + command + 8, "__TEXT") == 0;
        const std::size_t sections = isText ? numberAt<std::uint32_t>(bytes, command + 64) : 0;
        for (std::size_t section = command + 72; section < command + 72 + 80 * sections; section += 80)
            if (std::strcmp(bytes.c_str() + section, "__info_plist") == 0)
                return bytes.substr(numberAt<std::uint32_t>(bytes, section + 48),
                                    numberAt<std::uint64_t>(bytes, section + 40));
        command += numberAt<std::uint32_t>(bytes, command + 4);
    }
    return std::nullopt;
}

struct Start {
    const char* description;
    const char* recordFile;
    Texts command;
    std::string input = "/dev/null";
};

TEST(StandIns, NoteHostileArgumentsAndTheWorkingDirectoryExactly) {
    const TemporaryFolder folder;
    const std::string agent = folder / "Tavo.app/Contents/MacOS/Tavo";
    const std::string detector = folder / "TavoCrashDetector";
    join::tools::makeAgentBundle(folder / "Tavo.app", "5.2");
    join::tools::makeCrashDetector(detector, "1.4");
    const std::string directory = folder / "odd\\ \nfolder\n";
    fs::create_directory(directory);

    const std::vector<Start> starts{
        {"agent, by the kernel", "agent.txt", {agent}},
        {"agent, by bash", "agent.txt", {"bash", agent}},
        {"detector, by the kernel", "crashdetector.txt", {detector}},
        {"detector, by dash", "crashdetector.txt", {"dash", detector}},
        {"detector, read by bash", "crashdetector.txt", {"bash", "-s", "--"}, detector}};
    for (const Start& start : starts) {
        SCOPED_TRACE(start.description);
        Texts command = start.command;
        const Texts arguments = hostileArguments();
        command.insert(command.end(), arguments.begin(), arguments.end());
        const std::string notes = folder / start.description;
        Child child({.command = command,
                     .environment = {{"TAVO_STANDIN_LOG", notes}, {"TAVO_STANDIN_SECONDS", "0"}},
                     .directory = directory,
                     .input = start.input});
        EXPECT_EQ(child.wait(), 0);
        const std::string record = contentsOf(notes + "/" + start.recordFile);
        EXPECT_EQ(record.substr(0, 6), "start\n");
        EXPECT_EQ(valuesOf("directory", record), Texts{directory});
        EXPECT_EQ(valuesOf("argument", record), arguments);
        EXPECT_TRUE(record.ends_with("\nend\n"));
    }
}

TEST(AgentStandIn, StaysAliveUnderItsOwnPathUntilItIsEnded) {
    const TemporaryFolder folder;
    const std::string agent = folder / "Tavo.app/Contents/MacOS/Tavo";
    join::tools::makeAgentBundle(folder / "Tavo.app", "5.2");
    ::unsetenv("TAVO_STANDIN_LOG");
    Child child(
        {.command = {agent, "a"}, .environment = {{"HOME", folder.path()}, {"TAVO_STANDIN_SECONDS", "600"}}});
    const std::string notes = folder / "tavo-standin/agent.txt";
    ASSERT_TRUE(eventually([&] { return contentsOf(notes).ends_with("end\n"); }));

    const std::string commandLine = contentsOf("/proc/" + std::to_string(child.process()) + "/cmdline");
    EXPECT_NE(commandLine.find('\0' + agent + '\0'), std::string::npos);
    child.end();
    EXPECT_NE(child.wait(), 0);
}

TEST(CrashDetectorStandIn, CarriesItsPropertyListInAMachOSection) {
    // The lengths run through list sizes and offsets that hold the byte of a line feed.
    for (std::size_t length = 1; length < 600; ++length) {
        const std::string version(length, '1');
        const std::string bytes = join::tools::crashDetectorBytes(version);
        const std::string header = bytes.substr(0, 184);
        ASSERT_EQ(std::count(header.begin(), header.end(), '\n'), 1) << length;
        const std::optional<std::string> list = embeddedList(bytes);
        ASSERT_TRUE(list && list->starts_with("<?xml")) << length;
        ASSERT_NE(list->find("<key>CFBundleShortVersionString</key>\n    <string>" + version + "</string>"),
                  std::string::npos);
        ASSERT_NE(list->find("<string>com.tavo.TavoCrashDetector</string>"), std::string::npos);
        ASSERT_TRUE(bytes.ends_with(*list));
    }
}

TEST(MakeStandIns, LaysOutBothInPlaceOfOlderOnes) {
    const TemporaryFolder folder;
    const std::string target = folder / "new/folder";
    const std::string list = target + "/Tavo.app/Contents/Info.plist";
    const auto make = [&](Texts options) {
        options.insert(options.begin(), {MAKE_STANDINS_PROGRAM, target});
        return Child({.command = options}).wait();
    };
    ASSERT_EQ(make({}), 0);
    EXPECT_NE(contentsOf(list).find("<string>5.2</string>"), std::string::npos);
    ASSERT_EQ(make({"--agent-version", "6<&7", "--crash-detector-version", "2.0"}), 0);

    EXPECT_NE(contentsOf(list).find("<string>6&lt;&amp;7</string>"), std::string::npos);
    EXPECT_NE(contentsOf(list).find("<string>com.tavo.fendel.Tavo</string>"), std::string::npos);
    EXPECT_EQ(contentsOf(target + "/TavoCrashDetector"), join::tools::crashDetectorBytes("2.0"));
    const fs::path link = target + "/Tavo.app/Contents/Resources/English.lproj";
    EXPECT_TRUE(fs::read_symlink(link).is_relative());
    EXPECT_TRUE(fs::exists(link));
    EXPECT_EQ(make({"--agent-version"}), 2);
    EXPECT_EQ(make({"--colour", "red"}), 2);
}

} // namespace
