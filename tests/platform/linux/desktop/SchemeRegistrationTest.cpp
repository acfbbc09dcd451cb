#include "platform/linux/desktop/SchemeRegistration.h"

#include "platform/Exception.h"
#include "platform/linux/files/Descriptor.h"
#include "platform/linux/helpers/register-scheme/DesktopEntry.h"
#include "support/Child.h"
#include "support/Environment.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace join::test {

using namespace platform;
namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

const std::string type = "x-scheme-handler/tavojoin";
const std::string entryId = "com.tavo.join.desktop";

bool has(const std::string& text, const std::string& line) {
    return text.find("\n" + line + "\n") != std::string::npos;
}

TEST(DesktopEntry, EscapesPathsForItsReaders) {
    struct Case {
        std::string path, exec, string;
    };
    const std::vector<Case> cases{
        {"/höme/日本-_.:,+@[]{}!^", "/höme/日本-_.:,+@[]{}!^", "/höme/日本-_.:,+@[]{}!^"},
        {"/a b", R"("/a b")", "/a b"},
        {"/100%/%u", "/usr/bin/env /100%%/%%u", "/100%/%u"},
        {"/it's 5% (a&b;c)", R"-(/usr/bin/env "/it's 5%% (a&b;c)")-", "/it's 5% (a&b;c)"},
        {R"(/a\b)", R"("/a\\\\b")", R"(/a\\b)"},
        {R"(/"$HOME"`x`)", R"("/\\"\\$HOME\\"\\`x\\`")", R"(/"$HOME"`x`)"},
        {"/@JOIN_ENTRY_ICON@", "/@JOIN_ENTRY_ICON@", "/@JOIN_ENTRY_ICON@"},
    };
    const TemporaryFolder folder;
    for (const auto& [path, exec, string] : cases) {
        const std::string text = desktopEntryText(path, path + ".svg").value_or("");
        for (const std::string& line :
             {"Exec=" + exec + " %u", "TryExec=" + string, "Icon=" + string + ".svg"})
            EXPECT_TRUE(has(text, line)) << line << "\n" << text;
        const std::string file = writeFile(folder / "a.desktop", text);
        EXPECT_EQ(Child({.command = {"desktop-file-validate", file}, .output = folder / "faults"}).wait(), 0);
        EXPECT_EQ(contentsOf(folder / "faults"), "") << path;
    }
    for (const char* path : {"/a\nExec=b", "/a\tb", "/a\rb", "/a\x7F", "/a\xC2\x85", "/a\xFF", "/a=b"})
        EXPECT_FALSE(desktopEntryText(path, "join")) << path;
    EXPECT_FALSE(desktopEntryText("/a", "/a\nExec=b"));
}

class SchemeRegistrationTest : public testing::Test {
protected:
    struct StartedHelpers final : Tasks {
        std::vector<Lines> arguments;
        bool fails = false;
        TaskResult run(const Program& /*program*/) override { return {}; }
        void start(const Program& program) override {
            EXPECT_EQ(program.path, "register-scheme");
            arguments.push_back(program.arguments);
            if (fails)
                throw Exception("no more processes");
        }
    };

    SchemeRegistrationTest() {
        for (const char* program : {"/Join.app/Contents/MacOS/Join", "/bin/other"})
            writeProgram(folder_.path() + program);
    }

    /// Whether the entry starts the bundle's executable.
    bool starts(const std::string& bundle) {
        return has(contentsOf(entry_), "TryExec=" + bundle + "/Contents/MacOS/Join");
    }

    /// Registers like a start of the program; returns how often it started the helper, which then does its
    /// work.
    std::size_t ensure() {
        StartedHelpers started;
        SchemeRegistration registration(root_, bundle_, log_, started);
        registration.ensure("tavojoin", "com.tavo.join");
        registration.ensure("tavojoin", "com.tavo.join");
        for (const Lines& arguments : started.arguments)
            status_ = runHelper(arguments);
        return started.arguments.size();
    }

    int runHelper(Lines arguments) {
        arguments.insert(arguments.begin(), REGISTER_SCHEME_PROGRAM);
        return Child({.command = arguments, .output = folder_ / "complaints"}).wait();
    }
    std::string complaints() { return contentsOf(folder_ / "complaints"); }

    std::string answerOf(Lines query) {
        EXPECT_EQ(Child({.command = std::move(query), .output = folder_ / "answer"}).wait(), 0);
        return contentsOf(folder_ / "answer");
    }

    TemporaryFolder folder_;
    EnvironmentVariable home_{"HOME", folder_.path().c_str()};
    EnvironmentVariable data_{"XDG_DATA_HOME", (folder_ / "data").c_str()};
    EnvironmentVariable config_{"XDG_CONFIG_HOME", (folder_ / "config").c_str()};
    EnvironmentVariable others_{"XDG_DATA_DIRS", (folder_ / "none").c_str()};
    const std::string entry_ = folder_ / "data/applications/" + entryId;
    const std::string defaults_ = folder_ / "config/mimeapps.list";
    const SystemRoot root_{defaultSystemRoot(folder_.path())};
    const std::string bundle_ = folder_ / "Join.app";
    RecordingLog log_;
    int status_ = -1;
};

TEST_F(SchemeRegistrationTest, IsDoneOnceAndAgainWhenSomethingHasChanged) {
    EXPECT_EQ(ensure(), 1U);
    EXPECT_EQ(status_, 0) << complaints();
    EXPECT_TRUE(starts(bundle_) && has(contentsOf(entry_), "Icon=com.tavo.join"));
    EXPECT_EQ(fs::status(entry_).permissions(), fs::perms{0644});
    EXPECT_EQ(answerOf({"xdg-mime", "query", "default", type}), entryId + "\n");
    EXPECT_EQ(ensure(), 0U);

    writeFile(entry_, "[Desktop Entry]\nExec=/gone %u\n");
    EXPECT_EQ(ensure(), 1U);
    EXPECT_TRUE(starts(bundle_));

    writeFile(defaults_, "[Default Applications]\n" + type + "=other.desktop;" + entryId + ";\n");
    EXPECT_EQ(ensure(), 1U);
    EXPECT_EQ(answerOf({"xdg-mime", "query", "default", type}), entryId + "\n");

    const std::string installed = root_.toReal("/Applications/Join.app");
    writeFile(installed + "/Contents/MacOS/Join", "cannot be executed");
    EXPECT_EQ(ensure(), 0U);
    writeProgram(installed + "/Contents/MacOS/Join", ""); // a power cut has left it
    EXPECT_EQ(ensure(), 0U);
    writeProgram(installed + "/Contents/MacOS/Join");
    const std::string icon = writeFile(installed + "/Contents/Resources/Join.svg", "");
    EXPECT_EQ(ensure(), 1U);
    EXPECT_TRUE(starts(installed) && has(contentsOf(entry_), "Icon=" + icon));
    EXPECT_EQ(ensure(), 0U);
    EXPECT_EQ(complaints(), "");
    EXPECT_EQ(log_.lines, Lines{});
}

TEST_F(SchemeRegistrationTest, ChangesNoOtherDefault) {
    const Lines others{"# mine",
                       "[Added Associations]",
                       "text/html=b.desktop;",
                       "[Default Applications]",
                       "text/html=b.desktop",
                       "x-scheme-handler/https=b.desktop;c.desktop;",
                       "[Removed Associations]",
                       "text/plain=d.desktop"};
    std::string list;
    for (const std::string& line : others)
        list += line + "\n";
    fs::create_directories(folder_ / "config");
    fs::create_symlink(writeFile(folder_ / "kept elsewhere", list), defaults_);
    EXPECT_EQ(ensure(), 1U);
    EXPECT_EQ(status_, 0) << complaints();
    list = "\n" + contentsOf(folder_ / "kept elsewhere");
    for (const std::string& line : others)
        EXPECT_TRUE(has(list, line)) << line << "\n" << list;
}

TEST_F(SchemeRegistrationTest, LeavesAloneWhatIsNotItsOwnAndSaysSoEachTime) {
    const auto expectComplaint = [&](const std::string& complaint) {
        EXPECT_EQ(ensure(), 1U);
        EXPECT_EQ(status_, 1);
        EXPECT_NE(complaints().find(complaint), std::string::npos) << complaints();
    };
    const std::string foreign = writeFile(folder_ / "foreign", "[Desktop Entry]\n");
    fs::create_directories(fs::path(entry_).parent_path());
    fs::create_symlink(foreign, entry_);
    const std::string taken =
        "register-scheme: " + entry_ + " cannot be written: something else has its name\n";
    expectComplaint(taken);
    EXPECT_EQ(contentsOf(foreign), "[Desktop Entry]\n");
    fs::remove(entry_);
    fs::create_directory(entry_);
    expectComplaint(taken);
    fs::remove(entry_);

    const std::string unreadable = "[Default Applications]\ntext/html=b.desktop\nwhat is this\n";
    writeFile(defaults_, unreadable);
    expectComplaint("register-scheme: " + defaults_ + " is left as it is: ");
    EXPECT_EQ(contentsOf(defaults_), unreadable);
    fs::remove(defaults_);

    writeProgram(folder_ / "bin/other");
    writeFile(folder_ / "data/applications/other.desktop",
              "[Desktop Entry]\nType=Application\nName=O\nExec=" + (folder_ / "bin/other") + " %u\n");
    writeFile(folder_ / "config/special-mimeapps.list",
              "[Default Applications]\n" + type + "=other.desktop\n");
    const EnvironmentVariable desktop("XDG_CURRENT_DESKTOP", "Special");
    expectComplaint("register-scheme: links of " + type + " go to other.desktop\n");
}

TEST_F(SchemeRegistrationTest, IsOneLineInTheLogWhenThereIsNoHelper) {
    StartedHelpers none;
    none.fails = true;
    SchemeRegistration helpless(root_, bundle_, log_, none);
    for (int i = 0; i < 2; ++i)
        helpless.ensure("tavojoin", "com.tavo.join");
    EXPECT_EQ(none.arguments.size(), 2U);
    EXPECT_EQ(log_.lines, Lines{"no more processes"});
}

TEST_F(SchemeRegistrationTest, ItsHelperLetsGoOfItsParentAndLeavesTheWorkToOneThatIsAtIt) {
    const std::string mark = writeFile(folder_ / "data/tavojoin/registered", "");
    Descriptor held(::open(mark.c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::flock(held.get(), LOCK_EX), 0);
    EXPECT_EQ(ensure(), 1U);
    EXPECT_EQ(status_, 0) << complaints();
    EXPECT_FALSE(fs::exists(entry_));
    held.close();

    ASSERT_EQ(::mkfifo((folder_ / "data/pipe").c_str(), 0600), 0);
    fs::create_directories(folder_ / "config");
    fs::rename(folder_ / "data/pipe", defaults_); // GIO waits for a writer
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const Descriptor reading(ends[0]);
    Descriptor inherited(ends[1]);
    const Child helper({.command = {REGISTER_SCHEME_PROGRAM, "tavojoin", "com.tavo.join", bundle_}});
    inherited.close();
    char byte = 0;
    EXPECT_EQ(::read(reading.get(), &byte, 1), 0); // it has closed the pipe
    EXPECT_TRUE(eventually([&] { return fs::exists(entry_); }));
    EXPECT_EQ(::getsid(helper.process()), helper.process());
}

TEST_F(SchemeRegistrationTest, ItsHelperTakesNothingElse) {
    for (const Lines& arguments :
         {Lines{}, Lines{"s", "a"}, Lines{"s", "a", "/a", "b"}, Lines{"s/t", "a", "/a"},
          Lines{"s", "-a", "/a"}, Lines{"s", "../a", "/a"}, Lines{"s", "a", "b"}, Lines{"s", "", "/a"}})
        EXPECT_EQ(runHelper(arguments), 2) << testing::PrintToString(arguments);
    EXPECT_EQ(runHelper({"tavojoin", "com.tavo.join", "/a\nb"}), 1);
    EXPECT_FALSE(fs::exists(folder_ / "data/applications"));
}

} // namespace join::test
