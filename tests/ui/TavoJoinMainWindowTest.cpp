#include "ui/TavoJoinMainWindowHandler.h"

#include "support/LogicTest.h"
#include "ui/TavoJoinWindowHandler.h"

namespace join::test {

const std::string joinMethod = "-[TavoJoinMainWindowHandler joinButtonAction:]";
const std::string keyMethod = "-[TavoJoinMainWindowHandler isKeyValid:]";
const std::string noKey = "keyInputTextfield: red prompt [ENTER_KEY]";
const std::string noValidKey = "keyInputTextfield: red prompt [ENTER_VALID_KEY]";
const std::string noEmail = "emailInputTextfield: red prompt [ENTER_EMAIL]";
const std::string readParameters = "post ReadJoinParameters";

std::string question(const std::string& key, const std::string& type = "Meeting") {
    return "https://host/api/public/xml/meetings/checkSessionID?key=" + key +
           "&role=agent&sessionType=" + type;
}

/// The entry window on the screen, without the delegate: its notifications are only recorded.
class EntryWindow : public LogicTest {
protected:
    EntryWindow() {
        for (const std::string name : {"ReadJoinParameters", "ModifyJoinDetails", "LaunchTavoApp"})
            notifications.addObserver(name, [this, name](const Text&) { journal.push_back("post " + name); });
        JoinSessionDetails::setDefaultValues();
        session().webServerName.set("host");
        session().sessionType.set(SessionType::meeting);
        progress.showProblem();
        progress.closeWindow();
        journal.clear();
        entry.showWindow();
    }

    FakeWindow& loaded() { return *windows.loaded.at("TavoJoinMainWindow"); }
    RecordingControl& keyField() { return loaded().control("keyInputTextfield"); }
    RecordingControl& emailField() { return loaded().control("emailInputTextfield"); }

    void join(const std::string& key, const std::string& email) {
        keyField().typed = key;
        emailField().typed = email;
        journal.clear();
        logSink.lines.clear();
        loaded().control("joinButton").click();
    }

    TavoJoinWindowHandler progress;
    TavoJoinMainWindowHandler entry{progress};
};

TEST_F(EntryWindow, SaysInItsFieldsWhatIsMissing) {
    const struct {
        std::string key, email;
        Journal expected;
    } cases[] = {
        {"", "", {readParameters, noKey, noEmail, "keyInputTextfield: focus"}},
        {" \t\u00A0", "\u3000", {readParameters, noKey, noEmail, "keyInputTextfield: focus"}},
        {"",
         " ann@example.org ",
         {readParameters, noKey, "emailInputTextfield: prompt ann@example.org", "keyInputTextfield: focus"}},
        {" 123 ",
         " ",
         {readParameters, "keyInputTextfield: prompt 123", noEmail, "emailInputTextfield: focus"}},
    };
    for (const auto& [key, email, expected] : cases) {
        join(key, email);
        EXPECT_EQ(journal, expected) << '"' << key << "\" \"" << email << '"';
        EXPECT_EQ(keyField().typed, key);
        EXPECT_EQ(emailField().typed, email);
    }
}

TEST_F(EntryWindow, AValidKeyRewritesTheDetailsStartsTheAgentAndMakesRoomForTheProgress) {
    http.expect(question("123456789"), {200, "<is-valid>true</is-valid>", {}});
    join(" \t123456789\u00A0", " ann@example.org ");
    EXPECT_EQ(journal,
              (Journal{readParameters, "log: " + joinMethod + " : Key : 123456789 Email : ann@example.org",
                       "keyInputTextfield: ", "keyInputTextfield: prompt 123456789", "progress: start",
                       "TavoJoinMainWindow: busy", "get " + question("123456789"),
                       "log: " + keyMethod + " : Response string : <is-valid>true</is-valid> " +
                           "isvalid : true</is-valid>",
                       "progress: stop", "TavoJoinMainWindow: ready", "emailInputTextfield: ",
                       "progress: start", "infoLabel: [JOIN_PROGRESS]", "TavoJoinWindow: display",
                       "post ModifyJoinDetails", "post LaunchTavoApp", "TavoJoinMainWindow: out",
                       "log: -[TavoJoinMainWindowHandler close] : Join main window close event called!",
                       "TavoJoinWindow: front"}));
    EXPECT_EQ(session().key(), "123456789");
    EXPECT_EQ(session().emailID(), "ann@example.org");
}

TEST_F(EntryWindow, ARefusedKeyGivesWayToARedPromptAndTheEmailStays) {
    http.expect(question("12 34"), {{}, {}, platform::HttpError{"no URL", "12 34"}});
    join("12 34", "ann");
    EXPECT_EQ(
        journal,
        (Journal{readParameters, "log: " + joinMethod + " : Key : 12 34 Email : ann", "keyInputTextfield: ",
                 "keyInputTextfield: prompt 12 34", "progress: start", "TavoJoinMainWindow: busy",
                 "get " + question("12 34"), "log: " + keyMethod + " : The key could not be checked : no URL",
                 "log: " + keyMethod + " : Error getting while checking key 12 34, HTTP status code 0",
                 "progress: stop", "TavoJoinMainWindow: ready", noValidKey, "keyInputTextfield: focus"}));
    EXPECT_EQ(emailField().typed, "ann");
    EXPECT_EQ(session().key(), "12 34");
    EXPECT_EQ(session().emailID(), "ann");
}

TEST_F(EntryWindow, AKeyIsValidWhenTheAnswerSaysSo) {
    const auto response = [](const std::string& body, const std::string& validity) {
        return "Response string : " + body + " isvalid : " + validity;
    };
    const struct {
        platform::HttpReply reply;
        bool isValid;
        std::string line;
    } cases[] = {
        {{200, "a<is-valid>true", {}}, true, response("a<is-valid>true", "true")},
        {{200, "<is-valid>true<is-valid>no", {}}, true, response("<is-valid>true<is-valid>no", "true")},
        {{200, "<is-valid>no<is-valid>true", {}}, false, response("<is-valid>no<is-valid>true", "no")},
        {{200, "<is-valid> true", {}}, false, response("<is-valid> true", " true")},
        {{200, "<is-valid>True", {}}, false, response("<is-valid>True", "True")},
        {{200, "<is-valid>", {}}, false, response("<is-valid>", "")},
        {{200, "true", {}}, false, response("true", "(null)")},
        {{200, "", {}}, false, response("", "(null)")},
        {{200, "<is-valid>true\xFF", {}}, false, response("(null)", "(null)")},
        {{200, {}, {}}, false, response("(null)", "(null)")},
        {{404, "<is-valid>true", {}}, false, "Error getting while checking key 7, HTTP status code 404"},
        {{204, {}, {}}, false, "Error getting while checking key 7, HTTP status code 204"},
    };
    for (const auto& [reply, isValid, line] : cases) {
        logSink.lines.clear();
        http.expect(question("7"), reply);
        EXPECT_EQ(entry.isKeyValid("7"), isValid) << line;
        EXPECT_EQ(said(keyMethod), Journal{line});
    }
}

TEST_F(EntryWindow, TheServerIsToldTheKindOfSession) {
    const std::pair<std::int32_t, const char*> cases[] = {
        {0, "Meeting"}, {1, "Fendel"}, {2, "Unattended"}, {3, "Fendel"}, {-1, "Fendel"}};
    for (const auto& [sessionType, name] : cases) {
        session().sessionType.set(sessionType);
        http.expect(question("7", name), {200, "<is-valid>no", {}});
        EXPECT_FALSE(entry.isKeyValid("7"));
    }
}

TEST_F(EntryWindow, TheParameterFileIsReadBeforeTheServerIsAsked) {
    session().webServerName.set("elsewhere");
    notifications.addObserver("ReadJoinParameters", [&](const Text&) {
        session().webServerName.set("host");
        session().key.set("of the file");
    });
    http.expect(question("7"), {200, "<is-valid>no", {}});
    join("7", "ann");
    EXPECT_EQ(session().key(), "7");
}

TEST_F(EntryWindow, AnErrorWhileJoiningIsLoggedAndTheWindowStays) {
    notifications.addObserver("ReadJoinParameters",
                              [](const Text&) { throw platform::Exception("unreadable"); });
    join("7", "ann");
    EXPECT_EQ(logSink.lines, Journal{"Exception in " + joinMethod + " : unreadable"});
    EXPECT_TRUE(loaded().isVisible());
}

TEST_F(EntryWindow, QuitsByCancelAndByADesktopsOwnWayToCloseIt) {
    const Journal expected = {"TavoJoinMainWindow: out",
                              "log: -[TavoJoinMainWindowHandler cancelButtonAction:] : Terminating tavo join "
                              "from main window cancel "
                              "button event",
                              sessionEnd, "terminate"};
    journal.clear();
    EXPECT_THROW(loaded().control("cancelButton").click(), Terminated);
    EXPECT_EQ(journal, expected);
    journal.clear();
    EXPECT_THROW(loaded().close(), Terminated);
    EXPECT_EQ(journal, expected);
}

class EntryWindowOfTheDelegate : public LogicTest {};

TEST_F(EntryWindowOfTheDelegate, AsksForAValidKeyAtItsFirstShowingAfterAUrlWithoutOne) {
    prepared();
    urlEvents.deliver("tavojoin://e=ann");
    EXPECT_TRUE(happenedInOrder(
        journal, {"keyInputTextfield: prompt [ENTER_KEY]", noValidKey, "TavoJoinMainWindow: front"}));
}

} // namespace join::test
