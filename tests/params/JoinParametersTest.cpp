#include "params/JoinParameters.h"

#include "support/LogicTest.h"

namespace join::test {

class JoinParameters : public LogicTest {
protected:
    std::string state() {
        return formatted("%@,%@,%@,%@,%@,%d", session().key(), session().emailID(), session().gatewayName(),
                         session().defaultGatewayName(), session().firstTime(), session().sessionType());
    }
    void setOldState() {
        prepared();
        session().key.set("old12345");
        session().emailID.set("e");
        session().gatewayName.set("g");
        session().sessionType.set(7);
    }
};

TEST_F(JoinParameters, AnItemIsTakenByTheFirstNameItBeginsWith) {
    const std::pair<std::string, std::string> cases[] = {
        // key, e-mail, gateway, default gateway, first time and kind of session after reading the body
        {"", "old12345,e,g,(null),(null),7"},
        {"&key=123456789&email=&firstTime=true&", "123456789,Guest,g,(null),true,1"},
        {"&key=123&key=1234567890&", "1234567890,e,g,(null),(null),0"},
        {"&key=123456789&key=12&", "12,e,g,(null),(null),1"},
        {"&key=kekey=y=1&", "key=1,e,g,(null),(null),7"},
        {"&keyword=x&", "keyword=x,e,g,(null),(null),1"},
        {"&GatewayHost1=gw1&defaultGatewayName=gw2&", "old12345,e,g,gw1,(null),7"},
        {"&gatewayName=a=b&email=(null)&", "old12345,(null),a=b,(null),(null),7"},
        {"&gatewayName&firstTime=TRUE&email", "old12345,email,gatewayName,(null),TRUE,7"},
        {"& key=1&KEY=1&gatewayPort=1&=&", "old12345,e,g,(null),(null),7"},
        {"key=äöüäöüäöü", "äöüäöüäöü,e,g,(null),(null),1"},
    };
    for (const auto& [body, expected] : cases) {
        setOldState();
        files.put(parameters, "another header_\xC3\xA4\n" + body);
        readJoinParameters();
        EXPECT_EQ(state(), expected) << body;
        EXPECT_EQ(said("-[AppDelegate readJoinParameters]"),
                  (Journal{"Read join parameters called.", "Join Parameters Path : " + parameters,
                           "Join parameters file content : " + body}));
    }
}

TEST_F(JoinParameters, EveryOtherNameHasItsField) {
    prepared();
    session().key.set("123456789"); // from elsewhere; reading any item sets the kind of session by it
    files.put(parameters, header + "&webServerName=1&tavoAppVersion=2&joinAppVersion=3&role_change_on_init=4"
                                   "&first_time_install=5&isConfirmationNeeded=6&viewer_id=7&isDemoMode=8"
                                   "&isDemoTech=9&group=10&crashDetectorAppVersion=11&authkey=12&");
    readJoinParameters();
    const JoinSessionDetails& details = session();
    EXPECT_EQ(formatted("%@ %@ %@ %@ %@ %@ %@ %@ %@ %@ %@ %@", details.webServerName(),
                        details.tavoAppVersion(), details.joinAppVersion(), details.roleChangeOnInit(),
                        details.firstTimeInstall(), details.isConfirmationNeeded(), details.viewerId(),
                        details.isDemoMode(), details.isDemoTech(), details.group(),
                        details.crashDetectorAppVersion(), details.authkey()),
              "1 2 3 4 5 6 7 8 9 10 11 12");
    EXPECT_EQ(details.key(), "123456789");
    EXPECT_EQ(details.sessionType(), 1);
}

TEST_F(JoinParameters, AFileWithoutAReadableBodyChangesNothing) {
    const std::string short_ = "The file at " + parameters + " is not UTF-8 or shorter than its header";
    const std::pair<Text, std::string> cases[] = {{std::nullopt, "There is no file to read at " + parameters},
                                                  {"TAVO_MEETING_IND", short_},
                                                  {header + "&key=123456789&firstTime=true&\xC3", short_}};
    for (const auto& [bytes, complaint] : cases) {
        setOldState();
        if (bytes)
            files.put(parameters, *bytes);
        EXPECT_FALSE(delegate.firstTimeCheck());
        EXPECT_EQ(state(), "old12345,e,g,(null),(null),7") << complaint;
        slots().joinParametersTavoJoinFilePath = parameters;
        createTavoJoinDetails();
        EXPECT_FALSE(files.exists(joinDetails));
        EXPECT_EQ(said("-[AppDelegate readJoinParameters]"),
                  (Journal{"Read join parameters called.", "Join Parameters Path : " + parameters, complaint,
                           "Join parameters file content : (null)"}));
        EXPECT_EQ(said("-[AppDelegate createTavoJoinDetails]"), Journal{complaint});
    }
}

TEST_F(JoinParameters, TheDetailsFileOfAFirstRunIsTheDeliveredBodyByteForByte) {
    prepared();
    slots().joinParametersTavoJoinFilePath = "/v/.joinparameters";
    const std::string body = "&key=1&authToken=\xC3\xA4 \r\n&&last";
    files.put("/v/.joinparameters", std::string(17, '#') + body);
    files.put(joinDetails, "a longer one of an earlier session" + body + body);
    createTavoJoinDetails();
    EXPECT_EQ(files.read(joinDetails), header + body);
    EXPECT_TRUE(happenedInOrder(journal, {"remove " + joinDetails, "create " + joinDetails}));
    files.failAt(joinDetails); // which the log does not tell
    files.failAt(parameters);
    createTavoJoinDetails();
    rewriteJoinParameters();
    EXPECT_EQ(said("-[AppDelegate createTavoJoinDetails]").size(), 6U);
    EXPECT_EQ(said("-[AppDelegate applicationDidFinishLaunching:]").back(),
              "FirstTime parameter value has been changed to false.");
}

} // namespace join::test
