#include "url/LaunchUrl.h"

#include "support/LogicTest.h"

namespace join::test {

TEST(LaunchUrl, IsParsedIntoPairs) {
    const std::pair<std::string, LaunchUrlParameters> cases[] = {
        {"tavojoin://k=1&&e&=x&", {{"k", "1"}, {"", "x"}}},
        {"tavojoin://k=1//e=a", {{"k", "1"}}},
        {"tavojoin://k=a=b=c", {{"k", "a"}}},
        {"tavojoin://k=1&K=2&k=3", {{"k", "3"}, {"K", "2"}}},
        {"tavojoin:///k=1", {{"/k", "1"}}},
        {"tavojoin://k%3D1=2%3D&e%3d%3d%3D&%3Dx&%3", {{"k%3D1", "2%3D"}, {"e", "%3d%3D"}, {"", "x"}}},
        // As browsers hand them over; scripts/try-browser shows it.
        {"tavojoin://k%3D1&authkey%3DQUJD%3D%3D&e%3Dann@example.org&cav=1.4",
         {{"k", "1"}, {"authkey", "QUJD%3D%3D"}, {"e", "ann@example.org"}, {"cav", "1.4"}}},
    };
    for (const auto& [url, expected] : cases)
        EXPECT_EQ(parseLaunchUrl(url).parameters, expected) << url;
}

class LaunchUrlHandler : public LogicTest {
protected:
    std::string state() {
        const JoinSessionDetails& now = session();
        return formatted("%@ %@ %@ %@ %@ %@ %@ %@ %@ %@ %@ %@ %@ %@ %@ %@", std::to_string(now.sessionType()),
                         now.key(), now.emailID(), now.gatewayName(), now.defaultGatewayName(),
                         now.tavoAppVersion(), now.joinAppVersion(), now.crashDetectorAppVersion(),
                         now.viewerId(), now.roleChangeOnInit(), now.firstTimeInstall(), now.authkey(),
                         now.group(), now.webServerName(), now.isDemoMode(), now.isDemoTech());
    }
    const std::string method = "-[AppDelegate handleGetURLEvent:withReplyEvent:]";
};

TEST_F(LaunchUrlHandler, PutsUsableValuesIntoTheSessionAndJoinsWithAKey) {
    using namespace std::string_literals;
    const std::string rest = " Guest g d t j c v r f a G w false false";
    const std::pair<std::string, std::string> cases[] = {
        {"e=null&gwn=null&gatewayhost=&gwn1=&tav=null&jav=&cav=&vid=null&rcoi=&fti=&authkey=&group=null&wsn=&E=x&K=2",
         "7 (null)" + rest},
        {"e=&email=someone&demo=TRUE&isDemoTech= true", "7 (null)" + rest},
        {"email=\tsome one \u00A0&demo=true", "7 (null) some one g d t j c v r f a G w true false"},
        {"isDemoTech=true&wsn=first&web_server=second",
         "7 (null) Guest g d t j c v r f a G first false true"},
        {"gwn=gwA&gatewayhost= 7 &gwn1= x&web_server=s",
         "7 (null) Guest gw7 x t j c v r f a G s false false"},
        {"tav=1&jav= 2 &cav=0&viewerid=3&rolechangeoninit=4&fti=5&authkey=6&group= null",
         "7 (null) Guest g d 1 2 0 3 4 5 6 null w false false"},
        {"vid=7&viewerid=3&rcoi=8&rolechangeoninit=4", "7 (null) Guest g d t j c 7 8 f a G w false false"},
        // The kind of a key is told from its length before its blanks are removed.
        {"k=123456789", "1 123456789" + rest},
        {"k=1234567890", "0 1234567890" + rest},
        {"k=         ", "1 " + rest},
        {"sessionId=123456789", "1 123456789" + rest},
        {"k=1&sessionId=2", "7 1" + rest},
        {"k=&sessionId=2", "7 (null)" + rest},
        // No control characters get into the files, nor what is not UTF-8.
        {"k=12\n34\0\x7F\xC3\xA4\xFF\xED\xA0\x80\xE2\x82g\x13\x95\x1B\x86\xC1"s,
         "0 12%0A34%00%7Fä%FF%ED%A0%80%E2%82g%13%95%1B%86%C1" + rest},
    };
    for (const auto& [pairs, expected] : cases) {
        prepared();
        urlEvents.deliver(
            "tavojoin://gwn=g&gwn1=d&tav=t&jav=j&cav=c&vid=v&rcoi=r&fti=f&authkey=a&group=G&wsn=w");
        session().sessionType.set(7);
        urlEvents.deliver("tavojoin://" + pairs);
        EXPECT_EQ(state(), expected) << pairs;
        const bool joins = session().key().has_value();
        EXPECT_EQ(joinDownloads(), joins ? 1 : 0);
        EXPECT_EQ(progressWindow().isVisible(), joins);
    }
}

TEST_F(LaunchUrlHandler, LogsWhatItReceivedUntrimmed) {
    prepared();
    for (const char* url :
         {"tavojoin://wsn=first&cav= 3 &tav= 1&jav=2", "tavojoin:k=1", "tavojoin://a&&k=\xFF"})
        urlEvents.deliver(url);
    EXPECT_EQ(said(method),
              (Journal{"Received Launch App Url : tavojoin://wsn=first&cav= 3 &tav= 1&jav=2",
                       "Launch App Param Dict : {cav =  3 ; jav = 2; tav =  1; wsn = first}",
                       "###Latest Tavo app Version (tav) :  1", "###Latest Join app Version (jav) : 2",
                       "###Latest Crash Detector app Version (cav) :  3 ", "Key not received in launchapp!",
                       "Received Launch App Url : tavojoin:k=1",
                       "The URL holds no parameters, which follow on \"//\"", "Launch App Param Dict : {}",
                       "Key not received in launchapp!", "Received Launch App Url : tavojoin://a&&k=%FF",
                       "Control characters or bytes that are not UTF-8 in the URL are percent-encoded",
                       "Pieces of the URL without \"=\" skipped : 2", "Launch App Param Dict : {k = %FF}",
                       "Modify join details by Launch App", "Join app version check method called!!"}));
}

TEST_F(LaunchUrlHandler, OneWithARefusedServerChangesNothingButTheWindow) {
    for (const auto& [pairs, refused] : {std::pair{"k=123456789&e=x&gwn=g&wsn= evil", "evil"},
                                         {"e=x&web_server=evil", "evil"},
                                         {"k=123456789&wsn=", "join.example.com"}}) { // the session's
        prepared();
        policy.refused = refused;
        const std::string before = state();
        urlEvents.deliver(std::string("tavojoin://") + pairs);
        delegate.applicationDidFinishLaunching();
        EXPECT_EQ(said(method), Journal{"Launch URL refused : " + policy.refused + " is refused"});
        EXPECT_EQ(state(), before);
        EXPECT_EQ(joinDownloads() + agentDownloads() + files.exists(joinDetails), 0);
        EXPECT_TRUE(happenedInOrder(journal, {"infoLabel: [LINK_NOT_ALLOWED]", "TavoJoinWindow: front"}));
        EXPECT_EQ(countBeginningWith(journal, "TavoJoinMainWindow"), 0);
    }
}

TEST_F(LaunchUrlHandler, ShowsTheWindowForWhatItBrings) {
    const auto happens = [&](const std::string& url, const Journal& expected) {
        journal.clear();
        urlEvents.deliver(url);
        EXPECT_TRUE(happenedInOrder(journal, expected));
    };
    prepared();
    happens("tavojoin://e=ann",
            {"redirect", "timer 100 ms", "log: " + method + " : Received Launch App Url : tavojoin://e=ann",
             "TavoJoinWindow: out", "keyInputTextfield: prompt [ENTER_KEY]",
             "keyInputTextfield: red prompt [ENTER_VALID_KEY]", "TavoJoinMainWindow: front"});
    happens("tavojoin://k=1",
            {"TavoJoinMainWindow: out", "TavoJoinWindow: front",
             "log: " + method + " : Modify join details by Launch App", "create " + joinDetails,
             "log: -[AppDelegate joinAppVersionCheck] : Join.app file not found in Applications folder - "
             "starting JoinMac.dmg download",
             "log: " + method + " : Join app version check method called!!"});
    EXPECT_EQ(timers.running, 1U);
    EXPECT_TRUE(delegate.applicationShouldHandleReopen());
    delegate.tavoJoinWindow->showProblem();
    happens("tavojoin://k=1", {"progress: start", "TavoJoinWindow: display", "TavoJoinWindow: front"});
}

} // namespace join::test
