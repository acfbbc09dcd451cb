#include "params/SelfInstall.h"

#include "support/LogicTest.h"

namespace join::test {

/// Each Join.app holds one file and each parameter file one word: the folder that it comes from.
class SelfInstall : public LogicTest {
protected:
    void putJoin(const std::string& folder) {
        files.put(folder + "/Join.app/Info", folder);
        bundles.versions[folder + "/Join.app"] = "1";
    }
    void putDelivered(const std::string& folder) { files.put(folder + "/.joinparameters", folder); }

    /// Returns the origins of the stored parameter file, the system copy and the home copy afterwards.
    Journal runFrom(const std::string& folder) {
        prepared();
        putJoin(folder);
        application.bundle = folder + "/Join.app";
        copyCurrentJoinAppFile();
        return {files.read(parameters).value_or("none"),
                files.read("/Applications/Join.app/Info").value_or("none"),
                files.read(homeJoin + "/Info").value_or("none")};
    }
    Journal lines() { return said("-[AppDelegate copyCurrentJoinAppFile]"); }
    void SetUp() override {
        files.put(parameters, "old");
        putJoin("/Applications");
    }
    const std::string home = "/home/ann/Applications";
    const std::string volume = "/Volumes/TavoJoin";
};

TEST_F(SelfInstall, AVolumeReplacesTheStoredFileAndBothCopies) {
    putDelivered(volume);
    putJoin(home);
    workspace.volumes = {{"/Volumes/TavoJoin 2", {true, true, false, true, "", ""}}};
    EXPECT_EQ(runFrom(volume), (Journal{volume, volume, volume}));
    EXPECT_EQ(lines(), (Journal{"Join App Path : /Volumes/TavoJoin", "Application folder : /Applications",
                                "joinparameters.conf file removed in TavoMeetingNative folder : 1",
                                "joinparameters.conf file copied", "Join.app file copied",
                                "Join.app file copied to users applications folder"}));
    logSink.throwsOnceOn = "Join App Path";
    EXPECT_TRUE(copyCurrentJoinAppFile()); // no refusal: nothing has been read
}

TEST_F(SelfInstall, FindsTheDeliveredFileOnTheLastVolumeThatQualifies) {
    workspace.volumes = {{"/Volumes/TavoJoin 1", {true, true, false, true, "", "hfs"}},
                         {"/Volumes/TavoJoin 2", {true, true, true, true, "disk", "hfs"}},
                         {"/Volumes/TavoJoin 3", {true, false, false, true, "fixed", "ext4"}},
                         {"/Volumes/TavoJoin 4", {true, true, true, false, "", ""}},
                         {"/Volumes/tavojoin", {true, true, true, true, "", ""}}};
    for (const auto& [path, info] : workspace.volumes)
        putDelivered(path);
    putJoin("/Volumes/TavoJoin 2");
    EXPECT_EQ(runFrom("/opt"), (Journal{"/Volumes/TavoJoin 2", "/opt", "none"}));
    EXPECT_TRUE(happenedInOrder(
        lines(),
        {"Result : 1 Volume : /Volumes/TavoJoin 1, isRemovable :1, isWritable : 0, isUnmountable : 1, "
         "Description : , type : hfs",
         "JoinParameter Directory : /Volumes/TavoJoin 1/.joinparameters",
         "JoinParameter Directory : /Volumes/TavoJoin 2/.joinparameters",
         "Result : 1 Volume : /Volumes/TavoJoin 3, isRemovable :0, isWritable : 0, isUnmountable : 1, "
         "Description : fixed, type : ext4"}));
    EXPECT_EQ(countBeginningWith(lines(), "Result : "), 4);
    EXPECT_EQ(countBeginningWith(lines(), "JoinParameter Directory : "), 2);
}

TEST_F(SelfInstall, NeverRemovesTheAppThatRuns) {
    putDelivered("/Applications");
    putJoin(home);
    EXPECT_EQ(runFrom("/Applications"), (Journal{"old", "/Applications", home}));
    EXPECT_EQ(countBeginningWith(journal, "re"), 0); // neither removed nor replaced
    EXPECT_EQ(lines().size(), 2U);

    putDelivered(home);
    EXPECT_EQ(runFrom(home), (Journal{home, home, home}));
    EXPECT_EQ(countBeginningWith(journal, "replace " + homeJoin), 0);
}

TEST_F(SelfInstall, WithoutADeliveredFileTheStoredOneGoes) {
    Journal expected = {"Join App Path : /opt", "Application folder : /Applications",
                        "joinparameters.conf file removed in TavoMeetingNative folder : 1",
                        "Join.app file copied"};
    for (int run = 1; run <= 2; ++run) {
        EXPECT_EQ(runFrom("/opt"), (Journal{"none", "/opt", "none"}));
        EXPECT_EQ(slots().joinParametersTavoJoinFilePath, "/opt/.joinparameters");
        EXPECT_EQ(lines(), expected);
        expected.erase(expected.begin() + 2); // it is not there any more
    }
}

TEST_F(SelfInstall, WithoutTheRightsItKeepsWhatIsThereAndGoesOn) {
    putDelivered(volume);
    files.putFolder(home);
    files.failAt(parameters);
    files.failAt("/Applications/Join.app");
    EXPECT_EQ(runFrom(volume)[1], "/Applications"); // what cannot be replaced stays
    EXPECT_EQ(lines(), (Journal{"Join App Path : /Volumes/TavoJoin", "Application folder : /Applications",
                                "joinparameters.conf file removed in TavoMeetingNative folder : 0",
                                "Join.app file copied to users applications folder"}));
}

} // namespace join::test
