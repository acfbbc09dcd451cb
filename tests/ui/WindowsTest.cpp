#include "support/LogicTest.h"

namespace join::test {

/// All windows on the screen, without the delegate: the notifications are only recorded.
class ShownWindows : public LogicTest {
protected:
    ShownWindows() {
        notifications.addObserver("ReadJoinParameters", [this](const Text&) {
            session().webServerName.set("host");
            session().key.set("of the file");
        });
        for (const std::string name : {"ReadJoinParameters", "ModifyJoinDetails", "LaunchTavoApp"})
            notifications.addObserver(name, [this, name](const Text&) { journal.push_back("post " + name); });
        JoinSessionDetails::setDefaultValues();
        journal.clear();
        error.showWindow();
        progress.showWindow();
        entry.showWindow();
        setUp = std::exchange(journal, {});
    }

    FakeWindow& window(const std::string& name) { return *windows.loaded.at(name); }
    RecordingControl& control(const std::string& name) { return window("TavoJoinMainWindow").control(name); }

    void join(const std::string& key, const std::string& email) {
        control("keyInputTextfield").typed = key;
        control("emailInputTextfield").typed = email;
        journal.clear();
        control("joinButton").click();
    }

    static std::string question(const std::string& key, const std::string& type = "Meeting") {
        return "https://host/api/public/xml/meetings/checkSessionID?key=" + key +
               "&role=agent&sessionType=" + type;
    }

    Journal setUp; ///< the steps that showed the windows
    ErrorWindow error;
    TavoJoinWindowHandler progress;
    TavoJoinMainWindowHandler entry{progress};

    const std::string joinMethod = "-[TavoJoinMainWindowHandler joinButtonAction:]";
    const std::string keyMethod = "-[TavoJoinMainWindowHandler isKeyValid:]";
};

TEST_F(ShownWindows, SayWhatTheyAreForInTheUsersLanguage) {
    std::string text;
    for (const std::string& step : std::set(setUp.begin(), setUp.end()))
        text += step + '\n';
    EXPECT_EQ(text,
              "ErrorWindow: front\nErrorWindow: level 25\nErrorWindow: title [JOIN]\nErrorWindow: white\n"
              "TavoJoinMainWindow: front\nTavoJoinMainWindow: level 3\nTavoJoinMainWindow: no close\n"
              "TavoJoinMainWindow: title [JOIN]\nTavoJoinWindow: display\nTavoJoinWindow: front\n"
              "TavoJoinWindow: level 3\nTavoJoinWindow: title [JOIN]\nTavoJoinWindow: white\n"
              "cancelButton: title [CANCEL]\n"
              "emailInputTextfield: prompt [ENTER_EMAIL]\nemailLabel: [EMAIL_ADDRESS]\n"
              "errorText: [ERROR_MESSAGE]\ninfoLabel: [JOIN_PROGRESS]\njoinButton: title [JOIN]\n"
              "keyInputTextfield: focus\n"
              "keyInputTextfield: prompt [ENTER_KEY]\nkeyLabel: [SESSION_KEY]\nload ErrorWindow\n"
              "load TavoJoinMainWindow\nload TavoJoinWindow\nok: title [OK]\nprogress: start\n");
}

TEST_F(ShownWindows, EndTheSessionWhenTheyAreLeft) {
    const Journal cancelled = {"TavoJoinMainWindow: out",
                               "log: -[TavoJoinMainWindowHandler cancelButtonAction:] : "
                               "Terminating tavo join from main window cancel button event",
                               sessionEnd, "terminate"};
    const std::pair<std::function<void()>, Journal> cases[] = {
        {[this] { window("TavoJoinMainWindow").close(); }, cancelled},
        {control("cancelButton").click, cancelled},
        {[this] { window("TavoJoinWindow").close(); },
         {"TavoJoinWindow: out", "progress: stop",
          "log: -[TavoJoinWindowHandler windowShouldClose:] : Terminating tavo join", sessionEnd,
          "terminate"}},
        {[this] { window("ErrorWindow").close(); }, {"exit"}},
        {window("ErrorWindow").control("ok").click, {"exit"}},
    };
    for (const auto& [leave, expected] : cases) {
        journal.clear();
        EXPECT_THROW(leave(), Terminated);
        EXPECT_EQ(journal, expected);
    }
}

TEST_F(ShownWindows, TheMessageOfAnErrorLinksTheFirstOccurrenceOfTheLinkText) {
    const std::array<std::string, 3> cases[] = {
        // the text, that of its link, what is shown
        {"Schön: hier oder hier", "hier", "Schön: <hier> oder hier"},
        {"100%%%% sure, 5% here", "here", "100%% sure, 5% <here>"},
        {"Go here.", "", "Go here."},
        {"", "here", ""},
    };
    for (const auto& [localized, linkText, shown] : cases) {
        strings.texts = {{"ERROR_MESSAGE", localized}, {"CLICK_HERE", linkText}};
        ErrorWindow().showWindow();
        EXPECT_EQ(std::ranges::count(journal, "errorText: " + shown), 1) << shown;
    }
}

TEST_F(ShownWindows, TheProgressIsSaidAsItChanges) {
    progress.showProgress(); // as it does already
    progress.showProblem("LINK_NOT_ALLOWED");
    progress.showProgress();
    EXPECT_EQ(journal, (Journal{"infoLabel: [LINK_NOT_ALLOWED]", "progress: stop", "infoLabel: announced",
                                "progress: start", "infoLabel: [JOIN_PROGRESS]", "TavoJoinWindow: display"}));
}

TEST_F(ShownWindows, OfADownloadTheyTellHowMuchHasArrived) {
    // How much has arrived of how much, in which words, and what is shown.
    const std::tuple<std::uint64_t, std::uint64_t, std::string, std::string> cases[] = {
        {42'400'000, 97'000'000, "%1 of %2 MB", "0.43 42 of 97 MB"},
        {42'500'000, 97'000'000, "%2 MB 中 %1 MB", "0.43 97 MB 中 43 MB"},
        {97'000'001, 97'000'000, "%1 of %2 MB", "1.00 97 of 97 MB"},
        {1, 500'000, "%1 of %2 MB", "0.00 0 of 1 MB"},
        {499'999, 499'999, "%1 of %2 MB", "1.00 "},
        {0, 8ULL << 30, "no places", "0.00 no places"}};
    for (const auto& [received, announced, words, shown] : cases) {
        journal.clear();
        strings.texts["DOWNLOADED"] = words;
        progress.showDownload(&received, received, announced);
        progress.showDownload(this, 1, 2); // another at the same time
        progress.endDownload(this);
        progress.endDownload(&received);
        EXPECT_EQ(journal, (Journal{"progress: " + shown, "progress: turn"}));
    }
}

TEST_F(ShownWindows, TheFieldsSayWhatIsMissing) {
    const std::string noKey = "keyInputTextfield: red prompt [ENTER_KEY]";
    const std::string noEmail = "emailInputTextfield: red prompt [ENTER_EMAIL]";
    const std::tuple<std::string, std::string, Journal> cases[] = {
        {" \t\u00A0", "\u3000", {noKey, noEmail, "keyInputTextfield: focus"}},
        {"", " a@b ", {noKey, "emailInputTextfield: prompt a@b", "keyInputTextfield: focus"}},
        {" 123 ", " ", {"keyInputTextfield: prompt 123", noEmail, "emailInputTextfield: focus"}},
    };
    for (auto [key, email, expected] : cases) {
        join(key, email);
        expected.insert(expected.begin(), "post ReadJoinParameters");
        EXPECT_EQ(journal, expected);
        EXPECT_EQ(control("keyInputTextfield").typed + control("emailInputTextfield").typed, key + email);
    }
}

TEST_F(ShownWindows, AKeyThatTheServerAcceptsJoinsAndAnotherGivesWayToARedPrompt) {
    const std::tuple<std::string, platform::HttpReply, Journal> cases[] = {
        {" 12 34",
         {{}, {}, platform::HttpError{"no URL", "12 34"}},
         {"log: " + keyMethod + " : The key could not be checked : no URL",
          "log: " + keyMethod + " : Error getting while checking key 12 34, HTTP status code 0",
          "progress: stop", "TavoJoinMainWindow: ready", "keyInputTextfield: red prompt [ENTER_VALID_KEY]",
          "keyInputTextfield: focus"}},
        {"\t123456789\u00A0",
         {200, "<is-valid>true", {}},
         {"log: " + keyMethod + " : Response string : <is-valid>true isvalid : true", "progress: stop",
          "TavoJoinMainWindow: ready", "emailInputTextfield: ", "progress: start",
          "infoLabel: [JOIN_PROGRESS]", "TavoJoinWindow: display", "post ModifyJoinDetails",
          "post LaunchTavoApp", "TavoJoinMainWindow: out",
          "log: -[TavoJoinMainWindowHandler close] : Join main window close event called!",
          "TavoJoinWindow: front"}},
    };
    progress.showProblem();
    for (auto [typed, reply, expected] : cases) {
        const std::string key(trimBlanks(typed));
        http.expect(question(key), reply);
        join(typed, " ann");
        expected.insert(expected.begin(),
                        {"post ReadJoinParameters", "log: " + joinMethod + " : Key : " + key + " Email : ann",
                         "keyInputTextfield: ", "keyInputTextfield: prompt " + key, "progress: start",
                         "TavoJoinMainWindow: busy", "get " + question(key)});
        EXPECT_EQ(journal, expected);
        EXPECT_EQ(formatted("%@ %@", session().key(), session().emailID()), key + " ann");
    }
    logSink.throwsOnceOn = joinMethod;
    join("7", "ann");
    EXPECT_EQ(logSink.lines.back(), "Exception in " + joinMethod + " : the log is full");
}

TEST_F(ShownWindows, AKeyIsValidWhenTheServerSaysSoOfItsKindOfSession) {
    const std::string failed = "Error getting while checking key 7, HTTP status code ";
    const std::string answered = "Response string : ";
    const std::tuple<std::int32_t, std::string, int, Text, bool, std::string> cases[] = {
        // the kind of session and its name, the answer, whether it says so, and what is logged
        {0, "Meeting", 200, "a<is-valid>true b<is-valid>no", true,
         answered + "a<is-valid>true b<is-valid>no isvalid : true b"},
        {0, "Meeting", 200, "<is-valid> true", false, answered + "<is-valid> true isvalid :  true"},
        {1, "Fendel", 200, "true", false, answered + "true isvalid : (null)"},
        {2, "Unattended", 200, "<is-valid>true\xFF", false, answered + "(null) isvalid : (null)"},
        {3, "Fendel", 200, {}, false, answered + "(null) isvalid : (null)"},
        {0, "Meeting", 404, "<is-valid>true", false, failed + "404"},
    };
    session().webServerName.set("host");
    for (const auto& [sessionType, typeName, status, body, isValid, line] : cases) {
        session().sessionType.set(sessionType);
        http.expect(question("7", typeName), {status, body, {}});
        EXPECT_EQ(entry.isKeyValid("7"), isValid) << line;
        EXPECT_EQ(logSink.lines.back(), keyMethod + " : " + line);
    }
}

} // namespace join::test
