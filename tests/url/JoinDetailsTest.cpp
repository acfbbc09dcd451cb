#include "support/LogicTest.h"
#include "url/ModifyJoinDetails.h"

namespace join::test {

class JoinDetails : public LogicTest {
protected:
    /// The details file after the update of this one.
    std::string updated(const std::string& old) {
        files.put(joinDetails, old);
        logSink.lines.clear();
        modifyJoinDetails();
        return files.read(joinDetails).value_or("none");
    }
    void SetUp() override {
        prepared();
        session().key.set("K");
        session().emailID.set("E");
        session().webServerName.set("S");
    }
    const std::string method = "-[AppDelegate modifyJoinDetails]";
};

TEST_F(JoinDetails, AFreshFileHoldsTheSessionAsItStandsAndTheDefaultPorts) {
    session().emailID.set(std::nullopt);
    modifyJoinDetails();
    EXPECT_EQ(files.read(joinDetails), header + "&key=K&email=(null)&gatewayName=(null)&webServerName=S&"
                                                "&gatewayPort=443&webServerPort=443&");
    EXPECT_EQ(said(method), (Journal{"Modify joindetails called!",
                                     "tavojoindetails.conf file not available in TavoMeetingNative folder",
                                     "tavojoindetails.conf file has been created by join url parameters. "}));
    files.remove(joinDetails);
    files.failAt(joinDetails);
    modifyJoinDetails();
    EXPECT_EQ(said(method).back(), "Unable to create tavojoindetails.conf file");
}

TEST_F(JoinDetails, AnUpdateKeepsTheConnectionItemsAndTheHostsThatTheSessionDoesNotKnow) {
    const std::string hosts = "&gatewayName=W&defaultGatewayName=D&webServerName=S";
    const struct {
        std::string old, expected;
        Text gateway = "W", defaultGateway = "D", webServer = "S";
    } cases[] = {
        {header + "&webServerPort=443&gatewayPort=443&authToken=A&key=OLD&email=old&group=G&isDemoMode=true&",
         "&webServerPort=443&gatewayPort=443&authToken=A" + hosts},
        {header + "&_tracker&writeSocketDataToFile=1&webSiteDomainName=w&joinDomainName=j&_trackerX=2",
         "&_tracker&writeSocketDataToFile=1&webSiteDomainName=w&joinDomainName=j&_trackerX=2" + hosts},
        {header + "&GatewayHost1=g&firstTime=true&joinAppVersion=1&authToken=A&authkey=B&viewer_id=1"
                  "&first_time_install=1&isConfirmationNeeded=1&role_change_on_init=1&",
         "&authToken=A" + hosts},
        {header + "& authToken=A&AuthToken=A&xauthToken=A&", hosts},
        {"short", hosts},
        {header + "&defaultGatewayName=gw9&gatewayName=gw4&webServerName=w",
         "&gatewayName=gw4&defaultGatewayName=gw9&webServerName=w", "", "", ""},
        {header + "&gatewayName=gw4&gatewayName=gw5=x&defaultGatewayName=gw9&webServerName=w",
         "&gatewayName=gw5=x&defaultGatewayName=null&webServerName=s", std::nullopt, "null", "s"},
        {header + "&gatewayName=&webServerName",
         "&gatewayName=&defaultGatewayName=(null)&webServerName=webServerName", "", "", ""},
    };
    for (const auto& [old, expected, gateway, defaultGateway, webServer] : cases) {
        session().gatewayName.set(gateway);
        session().defaultGatewayName.set(defaultGateway);
        session().webServerName.set(webServer);
        EXPECT_EQ(updated(old),
                  header + expected + "&isDemoMode=false&isDemoTech=false&group=null&email=E&key=K&")
            << old;
    }
}

TEST_F(JoinDetails, WritesWhatTheSessionHoldsInItsOrderAndSaysSo) {
    urlEvents.deliver("tavojoin://e=E&rcoi=r&vid=v&fti=f&authkey=a&group=g&demo=true&isDemoTech=true");
    session().isConfirmationNeeded.set("c");
    const std::string text = header +
                             "&role_change_on_init=r&viewer_id=v&first_time_install=f&isConfirmationNeeded=c"
                             "&gatewayName=(null)&defaultGatewayName=(null)&authkey=a&webServerName=S"
                             "&isDemoMode=true&isDemoTech=true&group=g&email=E&key=K&";
    EXPECT_EQ(updated(header + "&role_change_on_init=true&"), text);
    const std::string name = method + " : ";
    EXPECT_EQ(
        logSink.lines,
        (Journal{name + "Modify joindetails called!", name + "Role Change Init : role_change_on_init=true",
                 name + "Condition roleChangeOnInit : r", name + "Condition viewer_d : v",
                 name + "Condition firsttimeInstall : f ", "condition isConfirmationNeeded : c ",
                 name + "Key : K email : E ", name + "Join Details : " + text,
                 name + "Joindetails file has been modified by join url parameters. "}));
    EXPECT_TRUE(happenedInOrder(journal, {"remove " + joinDetails, "create " + joinDetails}));
    files.failAt(joinDetails);
    modifyJoinDetails();
    EXPECT_TRUE(
        happenedInOrder(said(method), {"Unable to create tavojoindetails.conf file",
                                       "Joindetails file has been modified by join url parameters. "}));
}

TEST_F(JoinDetails, ASessionWithoutEmailIsAGuestAndWithoutKeyWritesNothing) {
    for (const Text& email : {Text(), Text(""), Text("(null)")}) {
        session().emailID.set(email);
        session().key.set("");
        EXPECT_TRUE(updated(header).ends_with("&email=Guest&key=&"));
        session().emailID.set(email);
        session().key.set(std::nullopt);
        EXPECT_EQ(updated(header + "&key=OLD&"), header + "&key=OLD&");
        EXPECT_EQ(said(method).back(), "Key : (null) email : Guest ");
    }
}

} // namespace join::test
