#include "platform/linux/desktop/SchemeRegistration.h"

#include "platform/linux/files/Descriptor.h"
#include "platform/linux/helpers/register-scheme/DesktopEntry.h"
#include "support/Child.h"
#include "support/Environment.h"
#include "support/FakeWorkspace.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <gtest/gtest.h>
#include <sys/file.h>

namespace join::test {

using namespace platform;
using namespace std::string_literals;

const std::string type = "x-scheme-handler/tavojoin";
const std::string entryId = "com.tavo.join.desktop";

bool has(const std::string& text, const std::string& line) {
    return ("\n" + text).find("\n" + line + "\n") != std::string::npos;
}

TEST(DesktopEntry, EscapesPathsForItsReaders) {
    const std::array<std::string, 3> cases[] = {
        {"/höme/日本-_.:,+@[]{}!^", "/höme/日本-_.:,+@[]{}!^", "/höme/日本-_.:,+@[]{}!^"},
        {"/100%/%u", "/usr/bin/env /100%%/%%u", "/100%/%u"},
        {"/it's 5% (a&b;c)", R"-(/usr/bin/env "/it's 5%% (a&b;c)")-", "/it's 5% (a&b;c)"},
        {R"(/a\b"$HOME"`x`)", R"("/a\\\\b\\"\\$HOME\\"\\`x\\`")", R"(/a\\b"$HOME"`x`)"}};
    const TemporaryFolder folder;
    for (const auto& [path, exec, string] : cases) {
        const std::string text = desktopEntryText(path, path + ".svg").value_or("");
        for (const std::string& line :
             {"Exec=" + exec + " %u", "TryExec=" + string, "Icon=" + string + ".svg"})
            EXPECT_TRUE(has(text, line)) << line << "\n" << text;
        writeFile(folder / "a.desktop", text);
        EXPECT_EQ(shell(folder.path(), "desktop-file-validate a.desktop 2>&1; echo $?"), "0\n") << path;
    }
    for (const char* path : {"/a\nExec=b", "/a\tb", "/a\rb", "/a\xFF", "/a=b"})
        EXPECT_FALSE(desktopEntryText(path, "join")) << path;
    EXPECT_FALSE(desktopEntryText("/a", "/a\nExec=b"));
}

class SchemeRegistrationTest : public testing::Test {
protected:
    SchemeRegistrationTest() { writeProgram(bundle_ + "/Contents/MacOS/Join"); }

    /// Registers like a start of the program. Returns how often it started the helper, which does its work.
    std::size_t ensure() {
        started_.clear();
        SchemeRegistration registration(root_, bundle_, log_, tasks_);
        for (int time = 0; time < 2; ++time)
            registration.ensure("tavojoin", "com.tavo.join");
        const std::string call = "start register-scheme in / ";
        for (const std::string& entry : started_) {
            EXPECT_TRUE(entry.starts_with(call)) << entry;
            if (!tasks_.fails)
                outcome_ = runHelper(entry.substr(call.size()));
        }
        return started_.size();
    }

    /// Takes arguments as a shell reads them. Returns what it says, and its status.
    static std::string runHelper(const std::string& arguments) {
        return shell("/", REGISTER_SCHEME_PROGRAM " " + arguments + " 2>&1; echo $?");
    }

    /// That the helper had something to do, and that links now start this bundle.
    void expectRegistered(const std::string& bundle, const std::string& icon = "com.tavo.join") {
        EXPECT_EQ(ensure(), 1U);
        EXPECT_EQ(outcome_, "0\n");
        const std::string entry = contentsOf(entry_);
        EXPECT_TRUE(has(entry, "TryExec=" + bundle + "/Contents/MacOS/Join")) << entry;
        EXPECT_TRUE(has(entry, "Icon=" + icon)) << entry;
        EXPECT_TRUE(has(contentsOf(defaults_), type + "=" + entryId)) << contentsOf(defaults_);
        EXPECT_EQ(ensure(), 0U);
    }

    void expectComplaint(const std::string& complaint) {
        EXPECT_EQ(ensure(), 1U);
        EXPECT_TRUE(outcome_.starts_with("register-scheme: " + complaint) && outcome_.ends_with("\n1\n"))
            << outcome_;
    }

    TemporaryFolder folder_;
    EnvironmentVariable home_{"HOME", folder_.path().c_str()};
    EnvironmentVariable data_{"XDG_DATA_HOME", (folder_ / "data").c_str()};
    EnvironmentVariable config_{"XDG_CONFIG_HOME", "relative"}; // and so of no effect
    EnvironmentVariable others_{"XDG_DATA_DIRS", (folder_ / "none").c_str()};
    const std::string entry_ = folder_ / "data/applications/" + entryId;
    const std::string defaults_ = folder_ / ".config/mimeapps.list";
    const SystemRoot root_{defaultSystemRoot(folder_.path())};
    const std::string bundle_ = folder_ / "Join.app";
    RecordingLog log_;
    Journal started_;
    RecordingTasks tasks_{started_};
    std::string outcome_;
};

TEST_F(SchemeRegistrationTest, IsDoneOnceAndAgainWhenSomethingHasChangedAndAMissingHelperIsOneLineInTheLog) {
    expectRegistered(bundle_);
    EXPECT_EQ(fs::status(entry_).permissions(), fs::perms{0644});
    writeFile(entry_, "[Desktop Entry]\nExec=/gone %u\n");
    expectRegistered(bundle_);
    writeFile(defaults_, "[Default Applications]\n" + type + "=other.desktop;" + entryId + ";\n");
    expectRegistered(bundle_);

    const std::string installed = root_.toReal("/Applications/Join.app");
    writeFile(installed + "/Contents/MacOS/Join", "cannot be executed");
    EXPECT_EQ(ensure(), 0U);
    writeProgram(installed + "/Contents/MacOS/Join", ""); // a power cut has left it
    EXPECT_EQ(ensure(), 0U);
    writeProgram(installed + "/Contents/MacOS/Join");
    expectRegistered(installed, writeFile(installed + "/Contents/Resources/Join.svg", ""));
    EXPECT_EQ(log_.lines, Journal{});

    tasks_.fails = true;
    fs::remove(entry_);
    EXPECT_EQ(ensure(), 2U);
    EXPECT_EQ(log_.lines, Journal{"cannot start register-scheme"});
}

TEST_F(SchemeRegistrationTest, ChangesNoOtherDefault) {
    const std::string before = "# mine\n[Added Associations]\ntext/html=b.desktop;\n"
                               "[Default Applications]\ntext/html=b.desktop\n"
                               "x-scheme-handler/https=b.desktop;c.desktop;\n";
    const std::string behind = "[Removed Associations]\ntext/plain=d.desktop\n";
    writeFile(folder_ / "elsewhere", before + behind);
    shell(folder_.path(), "mkdir .config; ln -s ../elsewhere .config/mimeapps.list");
    expectRegistered(bundle_);
    EXPECT_EQ(shell(folder_.path(), "grep . elsewhere"), before + type + "=" + entryId + "\n" + behind);
}

TEST_F(SchemeRegistrationTest, LeavesAloneWhatIsNotItsOwnAndSaysSoEachTime) {
    const std::string foreign = writeFile(folder_ / "foreign", "[Desktop Entry]\n");
    const std::string taken = entry_ + " cannot be written: something else has its name\n";
    for (const std::string& put : {"ln -s " + foreign, "mkdir"s}) {
        shell(folder_.path(), "mkdir -p data/applications; rm -rf " + entry_ + "; " + put + " " + entry_);
        expectComplaint(taken);
    }
    EXPECT_EQ(contentsOf(foreign), "[Desktop Entry]\n");
    fs::remove(entry_);

    const std::string unreadable = "[Default Applications]\ntext/html=b.desktop\nwhat is this\n";
    writeFile(defaults_, unreadable);
    expectComplaint(defaults_ + " is left as it is: ");
    EXPECT_EQ(contentsOf(defaults_), unreadable);
    fs::remove(defaults_);

    const std::string other = writeProgram(folder_ / "bin/other");
    writeFile(folder_ / "data/applications/other.desktop",
              "[Desktop Entry]\nType=Application\nName=O\nExec=" + other + " %u\n");
    writeFile(folder_ / ".config/special-mimeapps.list",
              "[Default Applications]\n" + type + "=other.desktop\n");
    const EnvironmentVariable desktop("XDG_CURRENT_DESKTOP", "Special");
    expectComplaint("links of " + type + " go to other.desktop\n");
}

TEST_F(SchemeRegistrationTest, ItsHelperLetsGoOfItsParentAndLeavesTheWorkToOneThatIsAtIt) {
    const std::string mark = writeFile(folder_ / "data/tavojoin/registered", "");
    Descriptor held(::open(mark.c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::flock(held.get(), LOCK_EX), 0);
    EXPECT_EQ(ensure(), 1U);
    EXPECT_EQ(outcome_, "0\n");
    EXPECT_FALSE(fs::exists(entry_));
    held.close();

    shell(folder_.path(), "mkdir .config; mkfifo .config/mimeapps.list"); // GIO waits for a writer
    // The shell's output ends when nobody has the pipe open any more.
    const pid_t helper = std::stoi(shell("/", REGISTER_SCHEME_PROGRAM " tavojoin com.tavo.join " + bundle_ +
                                                  " 7>&1 2>/dev/null & echo $!"));
    EXPECT_TRUE(eventually([&] { return fs::exists(entry_); }));
    EXPECT_EQ(::getsid(helper), helper);
    ::kill(helper, SIGKILL);
}

TEST_F(SchemeRegistrationTest, ItsHelperTakesNothingElse) {
    for (const char* arguments :
         {"", "s a", "s a /a b", "s/t a /a", "s -a /a", "s ../a /a", "s a b", "s '' /a"})
        EXPECT_EQ(runHelper(arguments), "usage: register-scheme SCHEME BUNDLEIDENTIFIER BUNDLE\n2\n");
    EXPECT_EQ(runHelper("tavojoin com.tavo.join '/a\nb'"),
              "register-scheme: no desktop entry can name the program /a\nb/Contents/MacOS/Join\n1\n");
    EXPECT_FALSE(fs::exists(folder_ / "data/applications"));
}

} // namespace join::test
