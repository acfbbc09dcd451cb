#include "support/LogicTest.h"

namespace join::test {

class LogUpload : public LogicTest {
protected:
    void SetUp() override {
        preparedToJoin();
        tasks.statusOf = [this](const platform::Program& tool) {
            if (tool.path == "/usr/bin/zip")
                files.put(archive, "PK\r\n--");
            return 0;
        };
    }

    /// The whole body, as it would be sent.
    static std::string bodyOf(const platform::PostRequest& request) {
        std::string file(request.file ? request.file->size() : 0, '\0');
        EXPECT_EQ(file.empty() ? 0 : request.file->read(0, file), file.size());
        return request.body + file + request.bodyBehindFile;
    }

    /// Sends the logs and lets the connection be opened.
    const platform::PostRequest& upload(const Text& comment = "it failed") {
        notifications.post("SendJoinLog", comment);
        mainQueue.turn();
        return http.connections.back().first;
    }

    std::string texts(const std::string& key, const std::string& comment) const {
        const std::string value = "\";\r\n\r\n";
        return part + "logSeverity" + value + "CRITICAL" + part + "key" + value + key + part +
               "logEventName" + value + "JoinLogs" + part + "subStr" + value + "Mac Join.app!" + part +
               "comment" + value + comment + part + "module" + value + "MAC" +
               "\r\n--unique-consistent-string--\r\n";
    }
    std::string attachment(const std::string& bytes) const {
        return part + "attachment\"; filename=\"" + archive +
               "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + bytes;
    }
    const std::string part = "\r\n--unique-consistent-string\r\nContent-Disposition: form-data; name=\"";
    const std::string archive = "/tmp/ann//User.zip";
    const std::string logs = "/home/ann/Library/Logs//TavoFendel/";
    const std::string zip = "run /usr/bin/zip in " + logs + " for 60 s -r -q " + archive + " . -i *";
};

TEST_F(LogUpload, PostsTheArchiveAndTheTextsAsOneForm) {
    files.put(archive, "stale");
    const platform::PostRequest& request = upload();
    EXPECT_EQ(request.url, "https://host/api/v1/send_log_mail");
    EXPECT_EQ(bodyOf(request), attachment("PK\r\n--") + texts("123456789", "it failed"));
    EXPECT_EQ(request.headers, (decltype(request.headers){
                                   {"Content-Type", "multipart/form-data; boundary=unique-consistent-string"},
                                   {"Content-Length", std::to_string(bodyOf(request).size())}}));
    EXPECT_TRUE(happenedInOrder(
        journal,
        {"log: -[AppDelegate sendLogFiles:] : Logger URL : https://host/api/v1/send_log_mail",
         "remove " + archive, zip, "log: -[AppDelegate zipDirectoryWithPath:] : Task succeeded.",
         "run /usr/sbin/scselect in / false",
         "log: -[AppDelegate sendJoinLogTask:]_block_invoke : SendlogTask output \n"
         "said by /usr/sbin/scselect",
         "log: -[AppDelegate sendJoinLogTask:] : Log file has been sent succesfully !!! ",
         "log: -[AppDelegate sendLogFiles:]_block_invoke : Log sending url connection established!! "}));
}

TEST_F(LogUpload, ItsFlagSaysWhetherAnEarlierUploadWasOpened) {
    http.refusesConnections = true;
    notifications.post("SendJoinLog");
    mainQueue.turn();
    http.refusesConnections = false;
    upload();
    upload();
    const std::string dump = "run /usr/sbin/scselect in / ";
    EXPECT_TRUE(happenedInOrder(journal, {dump + "false", dump + "false", dump + "true"}));
    EXPECT_EQ(countBeginningWith(journal, dump), 3);
    EXPECT_EQ(http.livingConnections, 2U); // the one that was replaced goes on
}

TEST_F(LogUpload, ACommentThatSaysNothingIsReplaced) {
    session().key.set(std::nullopt);
    tasks.statusOf = [](const auto&) { return 12; };
    for (const Text& comment : {Text(), Text(""), Text("(null)")})
        EXPECT_EQ(bodyOf(upload(comment)),
                  attachment("") + texts("(null)", "Join App failed to start agent - "));
    EXPECT_EQ(said("-[AppDelegate zipDirectoryWithPath:]").back(), "Task failed.");
}

TEST_F(LogUpload, GoesOnWithoutLogFolderAndWithoutZip) {
    tasks.fails = true;
    files.put(archive, "stale");
    files.failAt(archive);
    EXPECT_EQ(bodyOf(upload()), attachment("") + texts("123456789", "it failed"));
    EXPECT_EQ(said("-[AppDelegate getFileDataWith:]"),
              Journal{"Nothing is attached, there is no readable archive : " + archive});
    EXPECT_EQ(said("-[AppDelegate zipDirectoryWithPath:]"),
              (Journal{"Temporary Directory : /tmp/ann/",
                       "Existing Log file in Temp cannot be deleted : " + archive,
                       "**************** EXCEPTION ***************** : cannot start /usr/bin/zip "}));
    EXPECT_EQ(logSink.lines.end()[-2],
              "Exception in -[AppDelegate sendJoinLogTask:] : cannot start /usr/sbin/scselect");
    files.remove("/home/ann/Library/Logs/TavoFendel");
    EXPECT_EQ(bodyOf(upload()), texts("123456789", "it failed"));
    EXPECT_EQ(said("-[AppDelegate sendLogFiles:]").back(),
              "Nothing is attached, there is no folder : " + logs);
}

TEST_F(LogUpload, OnlyTheWholeBodySaysSuccessAndAConnectionGoesWhenItHasEnded) {
    upload();
    http.connections.back().second->connectionDidFail({"reset", "https://host/"});
    EXPECT_EQ(said("-[AppDelegate connection:didFailWithError:]"),
              Journal{"Join Log send NSURLConnection failed! Error - reset https://host/"});
    const std::string longest(platform::PostRequest().maximumAnswerSize - 1, 'x');
    const std::string failure = "Join send log NSURLConnection failure Response : ";
    const std::pair<std::string, std::string> cases[] = {
        // the answer, and the text that it is
        {"", ""},
        {"SUCCESS", "SUCCESS"},
        {"SUCCESS\n", "SUCCESS\n"},
        {"SUCCESS\xE2", "(null)"},
        {longest + "\xE2", longest}, // cut within a character
    };
    for (const auto& [answer, text] : cases) {
        upload();
        logSink.lines.clear();
        platform::ConnectionDelegate& connection = *http.connections.back().second;
        connection.connectionDidReceiveData("of a redirect");
        connection.connectionDidReceiveResponse();
        connection.connectionDidReceiveData(answer.substr(0, answer.size() / 2));
        connection.connectionDidReceiveData(answer.substr(answer.size() / 2));
        connection.connectionDidFinishLoading();
        EXPECT_EQ(said("-[AppDelegate connectionDidFinishLoading:]"),
                  (Journal{formatted("Succeeded! Received %lu bytes of data", answer.size()),
                           "Received data " + text,
                           text == "SUCCESS" ? "Log File sent succesfully!" : failure + text}));
        EXPECT_EQ(http.livingConnections, 1U); // those before have gone
    }
}

} // namespace join::test
