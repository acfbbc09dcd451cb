#include "server/ApiHandler.h"

#include "server/SessionAnswer.h"
#include "support/LogicTest.h"

namespace join::test {

TEST(SessionAnswer, ATextMeansYesByItsFirstCharacterAfterBlanksSignAndZeros) {
    for (const char* yes : {"true", "1", "yes", "Y", "T", "\t -007", "+2", "0y", " \n9"})
        EXPECT_TRUE(truthOfText(yes)) << yes;
    for (const char* no : {"", "false", "0", "no", "--1", "+ 1", "-", " ", "0 1", "on", "~"})
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
        {R"("cdn_link":"","aws_server":"","aws_server_download_url":"")", "1,(null),,0,(null),0"},
        {R"("aws_server_download_url":"u","aws_server":"s")", "1,u,s,1,(null),0"},
        {R"("Update_needed":false,"cdn_link ":"x","other":null,"list":[1,{}])", untouched},
        {R"("aws_server":"s","aws_server":null,"update_needed":0)", "0,(null),(null),0,(null),0"},
        {R"("aws_server":7,"cdn_link":"cdn")", "1,(null),(null),0,cdn,1"},
        {R"("update_needed":"false")", "0,(null),(null),0,(null),0"},
        {R"("update_needed":0,"update_needed":-0.5)", untouched},
        {R"("update_needed":false,"cdn_link":"evil")", "0,(null),(null),0,evil,0"},
    };
    for (const auto& [members, expected] : cases) {
        EXPECT_TRUE(answerMeeting(members)) << members;
        EXPECT_EQ(state(), expected) << members;
    }
    EXPECT_EQ(said(method).back(), "The host of the images is refused : evil is refused");
}

TEST_F(SessionCheck, AWrongTypeEndsTheWalkWithABannerAndKeepsWhatCameBefore) {
    for (const std::string member :
         {R"("cdn_link":null)", R"("aws_server_download_url":1)", R"("update_needed":{})"}) {
        EXPECT_FALSE(answerMeeting(R"("aws_server":"s",)" + member + R"(,"aws_server":"t")")) << member;
        EXPECT_EQ(state(), "1,(null),s,0,(null),0") << member;
        EXPECT_EQ(said(method).back(), banner("The member " + member.substr(0, member.find(':')) +
                                              " of the answer is of a wrong type"));
    }
}

TEST_F(SessionCheck, AnAnswerWithoutAMeetingChangesNothing) {
    const std::string nothing = "Response : (null)";
    const std::pair<std::string, Journal> cases[] = {
        // the body, and what is logged behind the status
        {"", {"The answer is not a JSON document", nothing}},
        {R"({"response":{"result":{}}})", {nothing}},
        {R"({"response":{"result":"x"}})",
         {banner("The answer holds no object that could hold \"meeting\"")}},
        {R"({"response":{"result":{"meeting":[{"update_needed":false}]}}})",
         {banner("The member \"meeting\" of the answer is of a wrong type")}},
    };
    for (const auto& [body, lines] : cases) {
        EXPECT_EQ(answerBody(body), lines.back() == nothing) << body;
        EXPECT_EQ(state(), untouched) << body;
        const Journal all = said(method);
        EXPECT_EQ(Journal(all.begin() + 2, all.end()), lines);
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
    EXPECT_FALSE(answer({201, body, {}}));
    EXPECT_EQ(said(method), (Journal{asked, "Status code : 201", failed + "201"}));
    EXPECT_EQ(state(), untouched);
    EXPECT_TRUE(answerBody(body));
    EXPECT_EQ(said(method), (Journal{asked, "Status code : 200", R"(Response : {"update_needed":false})"}));
}

} // namespace join::test
