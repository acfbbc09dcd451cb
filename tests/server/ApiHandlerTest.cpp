#include "server/ApiHandler.h"

#include "server/SessionAnswer.h"
#include "support/LogicTest.h"

namespace join::test {

TEST(SessionAnswer, ATextMeansYesByItsFirstCharacterAfterBlanksSignAndZeros) {
    for (const char* yes : {"true", "1", "yes", "Y", "T", "\t -007", "+2", "0y", " \n9"})
        EXPECT_TRUE(truthOfText(yes)) << yes;
    for (const char* no : {"", "false", "0", "no", "--1", "+ 1", "-", " ", "0 1", "on"})
        EXPECT_FALSE(truthOfText(no)) << no;
}

class SessionCheck : public LogicTest {
protected:
    bool answer(platform::HttpReply reply) {
        prepared();
        session().webServerName.set("host");
        session().key.set("a&b c");
        session().localTavoAppVersion.set("(null)");
        http.expect(url, std::move(reply));
        return ApiHandler::getInstance()->checkSessionApi();
    }
    bool answerBody(const std::string& body) { return answer({200, body, {}}); }
    bool answerMeeting(const std::string& members) {
        return answerBody(R"({"response":{"result":{"meeting":{)" + members + "}}}}");
    }
    /// What an answer can change.
    std::string state() {
        return formatted("%i,%@,%@,%i,%@,%i", session().isUpdateNeeded(), session().awsUrl(),
                         session().awsServer(), session().isAwsAvailable(), session().cdnUrl(),
                         session().isCdnAvailable());
    }
    const std::string url =
        "https://host/api/public/json/meetings/checkSessionID?key=a&b c&installed-version=(null)&os=mac";
    const std::string untouched = "1,(null),(null),0,(null),0";
    const std::string method = "-[ApiHandler checkSessionApi]";
};

TEST_F(SessionCheck, MembersOfTheMeetingGoIntoTheSession) {
    const std::pair<std::string, std::string> cases[] = {
        // update needed, storage URL, storage server, is there, content delivery, is there
        {R"("update_needed":false,"cdn_link":"cdn")", "0,(null),(null),0,cdn,1"},
        {R"("update_needed":false,"cdn_link":"evil")", "0,(null),(null),0,evil,0"}, // refused by the policy
        {R"("cdn_link":"","aws_server":"","aws_server_download_url":"")", "1,(null),,0,(null),0"},
        {R"("aws_server_download_url":"u","aws_server":"s")", "1,u,s,1,(null),0"},
        {R"("Update_needed":false,"cdn_link ":"x","other":null,"list":[1,{}])", untouched},
        {R"("aws_server":"s","aws_server":null,"update_needed":0)", "0,(null),(null),0,(null),0"},
        {R"("aws_server":7,"cdn_link":"cdn")", "1,(null),(null),0,cdn,1"},
        {R"("update_needed":0)", "0,(null),(null),0,(null),0"},
        {R"("update_needed":-0.5)", untouched},
        {R"("update_needed":"false")", "0,(null),(null),0,(null),0"},
        {R"("update_needed":"1")", untouched},
    };
    for (const auto& [members, expected] : cases) {
        EXPECT_TRUE(answerMeeting(members)) << members;
        EXPECT_EQ(state(), expected) << members;
    }
}

TEST_F(SessionCheck, AWrongTypeEndsTheWalkWithABannerAndKeepsWhatCameBefore) {
    for (const std::string member :
         {R"("cdn_link":null)", R"("cdn_link":1)", R"("cdn_link":["x"])", R"("aws_server_download_url":null)",
          R"("aws_server_download_url":true)", R"("update_needed":null)", R"("update_needed":{})"}) {
        EXPECT_FALSE(answerMeeting(R"("aws_server":"s",)" + member + R"(,"aws_server":"t")")) << member;
        EXPECT_EQ(state(), "1,(null),s,0,(null),0") << member;
        EXPECT_TRUE(said(method).back().starts_with(
            "************************ EXCEPTION ************************ \n Description :  "));
    }
}

TEST_F(SessionCheck, AnAnswerWithoutAMeetingChangesNothing) {
    for (const std::string body :
         {"", "not JSON", "{}", R"({"response":{"result":{}}})",
          R"({"Response":{"result":{"meeting":{"update_needed":false}}}})",
          "{\"response\":{\"result\":{\"meeting\":{\"update_needed\":false}}}}\xFF"}) {
        EXPECT_TRUE(answerBody(body)) << body;
        EXPECT_EQ(state(), untouched) << body;
    }
    for (const std::string body : {R"({"response":null})", R"({"response":{"result":"x"}})",
                                   R"({"response":{"result":{"meeting":[{"update_needed":false}]}}})"}) {
        EXPECT_FALSE(answerBody(body)) << body;
        EXPECT_EQ(state(), untouched) << body;
    }
}

TEST_F(SessionCheck, SaysWhatBecameOfTheRequest) {
    const std::string asked = "Request Url URL : " + url + "\n";
    const std::string failed = "NSURLConnection failed for this request : " + url + " and status code : ";
    EXPECT_FALSE(answer({{}, {}, platform::HttpError{"no network", url}}));
    EXPECT_EQ(said(method), (Journal{"Check Update failed : no network",
                                     "Error in the HTTP Request(URL: " + url + ") : no network", asked,
                                     "Status code : 0", failed + "0"}));
    const std::string body = R"({"response":{"result":{"meeting":{"update_needed":false}}}})";
    for (const int status : {404, 201}) {
        EXPECT_FALSE(answer({status, body, {}}));
        EXPECT_EQ(said(method),
                  (Journal{asked, formatted("Status code : %d", status), failed + std::to_string(status)}));
        EXPECT_EQ(state(), untouched);
    }
    EXPECT_TRUE(answerBody(body));
    EXPECT_EQ(said(method), (Journal{asked, "Status code : 200", said(method).back()}));
    EXPECT_TRUE(said(method).back().starts_with("Response : "));
}

} // namespace join::test
