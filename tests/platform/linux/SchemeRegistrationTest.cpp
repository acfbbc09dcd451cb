#include "platform/linux/SchemeRegistration.h"

#include "platform/Exception.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/DesktopEntry.h"
#include "platform/linux/MimeAppsList.h"
#include "platform/linux/registerscheme/Registration.h"
#include "support/Child.h"
#include "support/Environment.h"
#include "support/OrdinaryUser.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <gtest/gtest.h>
#include <sys/stat.h>

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
        const std::string text = desktopEntryText({.executable = path, .icon = path + ".svg"}).value_or("");
        for (const std::string& line :
             {"Exec=" + exec + " %u", "TryExec=" + string, "Icon=" + string + ".svg"})
            EXPECT_TRUE(has(text, line)) << line << "\n" << text;
        const std::string file = writeFile(folder / "a.desktop", text);
        EXPECT_EQ(Child({.command = {"desktop-file-validate", file}, .output = folder / "faults"}).wait(), 0);
        EXPECT_EQ(contentsOf(folder / "faults"), "") << path;
    }
    for (const char* path : {"/a\nExec=b", "/a\tb", "/a\rb", "/a\x7F", "/a\xC2\x85", "/a\xFF", "/a=b"})
        EXPECT_FALSE(desktopEntryText({.executable = path, .icon = "join"})) << path;
    EXPECT_FALSE(desktopEntryText({.executable = "/a", .icon = "/a\nExec=b"}));
}

TEST(MimeAppsList, TellsTheFirstDefaultAndWhatTheCacheKnows) {
    struct Case {
        std::string text;
        bool isFirst, isKnown;
    };
    const std::string defaults = "[Default Applications]\n";
    const std::string cache = "[MIME Cache]\n";
    const std::string ours = type + "=" + entryId;
    const std::string others = type + "=b.desktop;";
    const std::vector<Case> cases{
        {"", false, false},
        {ours, false, false},
        {"# a\n\n[Added Associations]\n" + others + "\n" + defaults + ours + ";b.desktop;\n", true, false},
        {defaults + "[Added Associations]\n" + ours, false, false},
        {defaults + others + entryId + ";\n", false, false},
        {defaults + others + "\n" + ours + "\n", false, false},
        {defaults + "text/html=a\n" + "[x]\n" + defaults + ours + "\n" + others, true, false},
        {"[Default Applications]\r\n" + ours + ";\r\n", true, false},
        {defaults + ours + "\r\n", false, false},
        {defaults + ours + std::string("\0;", 2), false, false},
        {defaults + "#" + ours + "\nx" + ours + "\n" + ours + "x\n" + type, false, false},
        {std::string(1 << 20, '[') + "\n" + defaults + std::string(1 << 20, 'x') + "\n" + ours, true, false},
        {cache + ours + ";", false, true},
        {cache + others + entryId, false, true},
        {"[x]\n" + ours + "\n" + cache + others + ";x" + entryId + ";com.tavo.join\n", false, false},
    };
    for (const auto& [text, isFirst, isKnown] : cases) {
        EXPECT_EQ(isFirstDefault(text, type, entryId), isFirst) << text.substr(0, 200);
        EXPECT_EQ(isInMimeCache(text, type, entryId), isKnown) << text.substr(0, 200);
    }
}

class SchemeRegistrationTest : public testing::Test {
protected:
    struct KeptLog final : Log {
        Lines lines;
        void write(std::string_view line) override { lines.emplace_back(line); }
        std::uint64_t redirectStandardStreams(const std::string& /*path*/) override { return 0; }
    };

    static std::string makeProgram(const std::string& path, const std::string& script = "") {
        fs::permissions(writeFile(path, "#!/bin/sh\n" + script + '\n'), fs::perms::owner_all);
        return path;
    }

    /// Whether the entry starts the bundle's executable.
    bool starts(const std::string& bundle) {
        return has(contentsOf(entry_), "TryExec=" + bundle + "/Contents/MacOS/Join");
    }

    /// As a later start of the program would, without a helper.
    void ensureAgain(const std::string& bundle, const std::string& identifier = "com.tavo.join") {
        SchemeRegistration(root_, bundle, log_, {}).ensure("tavojoin", identifier);
    }

    int runHelper() { return Child({.command = helper_, .output = folder_ / "complaints"}).wait(); }
    std::string complaints() { return contentsOf(folder_ / "complaints"); }

    TemporaryFolder folder_;
    EnvironmentVariable home_{"HOME", folder_.path().c_str()};
    EnvironmentVariable data_{"XDG_DATA_HOME", (folder_ / "data").c_str()};
    EnvironmentVariable config_{"XDG_CONFIG_HOME", (folder_ / "config").c_str()};
    EnvironmentVariable others_{"XDG_DATA_DIRS", (folder_ / "none").c_str()};
    const std::string applications_ = folder_ / "data/applications";
    const std::string entry_ = applications_ + "/" + entryId;
    const SystemRoot root_{defaultSystemRoot(folder_.path())};
    const std::string bundle_ = folder_ / "Join.app";
    Lines helper_{REGISTER_SCHEME_PROGRAM, "tavojoin", entryId, applications_};
    KeptLog log_;
    std::vector<Lines> started_;
    SchemeRegistration registration_{root_, bundle_, log_,
                                     [this](const Lines& arguments) { started_.push_back(arguments); }};
};

TEST_F(SchemeRegistrationTest, WritesTheEntryMendsItAndTurnsToTheInstalledCopy) {
    const auto ensure = [&] { registration_.ensure("tavojoin", "com.tavo.join"); };
    ensure();
    EXPECT_TRUE(starts(bundle_) && has(contentsOf(entry_), "Icon=com.tavo.join"));
    EXPECT_EQ(fs::status(entry_).permissions(), fs::perms{0644});
    writeFile(entry_, "[Desktop Entry]\nExec=/gone %u\n");
    const std::string installed = root_.toReal("/Applications/Join.app");
    const std::string executable = writeFile(installed + "/Contents/MacOS/Join", "cannot be executed");
    ensure();
    EXPECT_TRUE(starts(bundle_));
    makeProgram(executable);
    const std::string icon = writeFile(installed + "/Contents/Resources/Join.svg", "");
    ensure();
    EXPECT_TRUE(starts(installed) && has(contentsOf(entry_), "Icon=" + icon));
    EXPECT_EQ(started_, (std::vector<Lines>{{"tavojoin", entryId, applications_}}));
    EXPECT_EQ(log_.lines, Lines{});
}

TEST_F(SchemeRegistrationTest, LeavesAloneWhatIsNotItsOwn) {
    const std::string foreign = writeFile(folder_ / "foreign", "[Desktop Entry]\n");
    fs::create_directories(applications_);
    fs::create_symlink(foreign, entry_);
    ensureAgain(bundle_);
    EXPECT_EQ(contentsOf(foreign), "[Desktop Entry]\n");
    EXPECT_TRUE(fs::is_symlink(entry_));
    fs::remove(entry_);
    fs::create_directory(entry_);
    ensureAgain(bundle_);
    EXPECT_EQ(log_.lines,
              Lines(2, "The desktop entry " + entry_ + " cannot be written: something else has its name"));
}

TEST_F(SchemeRegistrationTest, SaysInOneLineWhatCannotBeDone) {
    for (const auto& [bundle, identifier] : std::vector<std::pair<std::string, std::string>>{
             {"/a\nb", "com.tavo.join"}, {bundle_, "../x"}, {bundle_, ""}}) {
        ensureAgain(bundle, identifier);
        EXPECT_EQ(std::exchange(log_.lines, {}).size(), 1U) << identifier;
    }
    EXPECT_FALSE(fs::exists(folder_ / "data"));

    int tries = 0;
    SchemeRegistration helpless(root_, bundle_, log_, [&](const Lines& /*arguments*/) {
        ++tries;
        throw Exception("no more processes");
    });
    for (int i = 0; i < 2; ++i)
        helpless.ensure("tavojoin", "com.tavo.join");
    EXPECT_EQ(tries, 2);
    EXPECT_EQ(std::exchange(log_.lines, {}), Lines{"no more processes"});

    fs::remove(entry_);
    fs::permissions(applications_, fs::perms{0555});
    const OrdinaryUser user;
    ensureAgain(bundle_);
    EXPECT_EQ(log_.lines.size(), 1U);
}

TEST_F(SchemeRegistrationTest, ItsHelperChangesNoOtherDefaultAndIsNeededOnce) {
    const std::string before = "# mine\n\n[Added Associations]\ntext/html=b.desktop;\n\n\n"
                               "[Default Applications]\ntext/html=b.desktop\n"
                               "x-scheme-handler/https=b.desktop;c.desktop;\n";
    const std::string after = "\n[Removed Associations]\nx-scheme-handler/tavojoin=d.desktop\n";
    const std::string defaults = writeFile(folder_ / "config/mimeapps.list", before + after);
    registration_.ensure("tavojoin", "com.tavo.join");
    EXPECT_EQ(started_.size(), 1U);
    ASSERT_EQ(runHelper(), 0) << complaints();
    EXPECT_EQ(complaints(), "");
    EXPECT_EQ(contentsOf(defaults), before + type + "=" + entryId + "\n" + after);
    const std::string answer = folder_ / "answer";
    EXPECT_EQ(Child({.command = {"xdg-mime", "query", "default", type}, .output = answer}).wait(), 0);
    EXPECT_EQ(contentsOf(answer), entryId + "\n");

    struct stat first {};
    struct stat second {};
    ::stat(entry_.c_str(), &first);
    ensureAgain(bundle_);
    ::stat(entry_.c_str(), &second);
    EXPECT_TRUE(first.st_ino == second.st_ino && first.st_mtim.tv_nsec == second.st_mtim.tv_nsec);
    EXPECT_EQ(log_.lines, Lines{}); // it would tell that there is no helper
}

TEST_F(SchemeRegistrationTest, ItsHelperRunsEachToolWhateverTheOtherDoes) {
    const EnvironmentVariable path("PATH", (folder_ / "bin").c_str());
    const EnvironmentVariable secret("SECRET", "ours");
    EXPECT_EQ(runHelper(), 1);
    EXPECT_EQ(complaints(), "register-scheme: update-desktop-database is not there\n"
                            "register-scheme: xdg-mime is not there\n");
    const std::string database = makeProgram(folder_ / "bin/update-desktop-database", "kill -9 $$");
    const std::string xdgMime =
        makeProgram(folder_ / "bin/xdg-mime", R"(echo "$*$SECRET" > "$HOME/asked"; exit 4)");
    EXPECT_EQ(runHelper(), 1);
    EXPECT_EQ(complaints(), "register-scheme: update-desktop-database was ended by signal 9\n"
                            "register-scheme: xdg-mime failed with status 4\n");
    EXPECT_EQ(contentsOf(folder_ / "asked"), "default " + entryId + " " + type + "\n");

    makeProgram(database, "exec /bin/sleep 3600");
    makeProgram(xdgMime, "/bin/sleep 3600 & wait");
    const auto failures =
        registerscheme::runTools({"tavojoin", entryId, applications_}, std::chrono::milliseconds(100));
    const std::string tooLong = " has not done its work: it took too long";
    EXPECT_EQ(failures, (Lines{"update-desktop-database" + tooLong, "xdg-mime" + tooLong}));
}

TEST_F(SchemeRegistrationTest, ItsHelperStandsAloneAndIsTheOnlyOne) {
    const EnvironmentVariable path("PATH", (folder_ / "bin").c_str());
    makeProgram(folder_ / "bin/update-desktop-database", R"(: > "$HOME/asked"; read -r line < "$HOME/gate")");
    makeProgram(folder_ / "bin/xdg-mime");
    ASSERT_EQ(::mkfifo((folder_ / "gate").c_str(), 0600), 0);
    const Descriptor gate(::open((folder_ / "gate").c_str(), O_RDWR | O_CLOEXEC));
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const Descriptor reading(ends[0]);
    Descriptor inherited(ends[1]);
    Child first({.command = helper_});
    inherited.close();
    char byte = 0;
    EXPECT_EQ(::read(reading.get(), &byte, 1), 0); // it has let go of the pipe
    EXPECT_TRUE(eventually([&] { return fs::exists(folder_ / "asked"); }));
    EXPECT_EQ(::getsid(first.process()), first.process());

    fs::remove(folder_ / "asked");
    EXPECT_EQ(runHelper(), 0);
    EXPECT_FALSE(fs::exists(folder_ / "asked"));
    EXPECT_EQ(::write(gate.get(), "\n", 1), 1);
    EXPECT_EQ(first.wait(), 0);
}

TEST_F(SchemeRegistrationTest, ItsHelperTakesNothingElse) {
    for (const Lines& arguments :
         {Lines{}, Lines{"s", "a.desktop"}, Lines{"s", "a.desktop", "/a", "b"},
          Lines{"s/t", "a.desktop", "/a"}, Lines{"s", "-a.desktop", "/a"}, Lines{"s", "../a.desktop", "/a"},
          Lines{"s", "a.txt", "/a"}, Lines{"s", "a.desktop", "-q"}})
        EXPECT_FALSE(registerscheme::registrationFrom(arguments)) << testing::PrintToString(arguments);
    helper_.resize(1);
    EXPECT_EQ(runHelper(), 2);
}

} // namespace join::test
