#include "RunningService.h"
#include "service/LogMailForm.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

namespace {

using join::test::contentsOf;
using join::test::Running;
using join::test::TemporaryFolder;
using join::tools::LogMailForm;
using join::tools::parseLogMailForm;

const std::string delimiter = "\r\n--unique-consistent-string";
const std::string closing = delimiter + "--\r\n";
const std::string formType = "multipart/form-data; boundary=unique-consistent-string";
const char* const path = "/api/v1/send_log_mail";

const std::string archive("PK\0\r\n--\r\n\xff", 10);

std::string attachment(const std::string& fileName) {
    return delimiter + "\r\nContent-Disposition: form-data; name=\"attachment\"; filename=\"" + fileName +
           "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + archive;
}

std::string part(const std::string& name, const std::string& value) {
    return delimiter + "\r\nContent-Disposition: form-data; name=\"" + name + "\";\r\n\r\n" + value;
}

std::string parts(const std::string& comment) {
    return part("logSeverity", "CRITICAL") + part("key", "(null)") + part("logEventName", "JoinLogs") +
           part("subStr", "Mac Join.app!") + part("comment", comment) + part("module", "MAC");
}

TEST(LogMailForm, IsReadAsItsSenderWritesIt) {
    const std::string comment = "it\r\n broke: \xc3\xa9\"";
    for (const bool attached : {true, false}) {
        const std::string body = (attached ? attachment("/t//a\";b.zip") : "") + parts(comment) + closing;
        const auto form = parseLogMailForm(body);
        ASSERT_TRUE(form);
        ASSERT_EQ(form->attachment.has_value(), attached);
        if (attached) {
            EXPECT_EQ(form->attachment->fileName, "/t//a\";b.zip");
            EXPECT_EQ(form->attachment->bytes, archive);
        }
        EXPECT_EQ(form->values, (std::array<std::string_view, 6>{"CRITICAL", "(null)", "JoinLogs",
                                                                 "Mac Join.app!", comment, "MAC"}));
    }
}

TEST(LogMailForm, IsRefusedWhereverItIsCut) {
    const std::string body = attachment("a.zip") + parts("c") + closing;
    for (std::size_t length = 0; length < body.size(); ++length)
        EXPECT_FALSE(parseLogMailForm(body.substr(0, length))) << length;
}

TEST(LogMailForm, IsRefusedInAnyOtherShape) {
    const std::vector<std::string> bodies{
        "",
        closing,
        attachment("a.zip") + closing,
        parts("c"),
        parts("c") + delimiter + "\r\n",
        parts("c") + closing + " ",
        " " + parts("c") + closing,
        parts("c") + attachment("a.zip") + closing,
        attachment("a.zip") + attachment("a.zip") + parts("c") + closing,
        attachment("a\r\nb.zip") + parts("c") + closing,
        parts("c") + part("module", "MAC") + closing,
        part("key", "1") + part("logSeverity", "CRITICAL") + parts("c").substr(parts("c").find("JoinLogs")),
        parts("a" + delimiter + "b") + closing,
    };
    for (const std::string& body : bodies)
        EXPECT_FALSE(parseLogMailForm(body)) << body;
}

TEST(LogMail, IsStoredAndConfirmed) {
    const TemporaryFolder folder;
    Running service({"--log-mail-folder", folder / "new/mails"});
    for (const std::string& body : {attachment("/t//User.zip") + parts("it\nbroke") + closing,
                                    parts(std::string(1U << 20U, 'c')) + closing}) {
        const httplib::Result result = service.client().Post(path, body, formType);
        ASSERT_TRUE(result) << result.error();
        EXPECT_EQ(result->status, 200);
        EXPECT_EQ(result->body, "SUCCESS");
    }
    EXPECT_TRUE(service.logs("POST /api/v1/send_log_mail 200 7"));
    EXPECT_EQ(contentsOf(folder / "new/mails/1.zip"), archive);
    EXPECT_EQ(contentsOf(folder / "new/mails/1.txt"),
              "filename=/t//User.zip\nlogSeverity=CRITICAL\nkey=(null)\nlogEventName=JoinLogs\n"
              "subStr=Mac Join.app!\ncomment=it\\x0abroke\nmodule=MAC\n");
    EXPECT_FALSE(std::filesystem::exists(folder / "new/mails/2.zip"));
    EXPECT_GT(contentsOf(folder / "new/mails/2.txt").size(), 1U << 20U);
}

TEST(LogMail, IsRefusedWhenItIsNotThatFormOrNotOfItsAnnouncedLength) {
    const TemporaryFolder folder;
    const std::string body = parts("c") + closing;
    Running service({"--log-mail-folder", folder / "mails"});
    const auto status = [](const httplib::Result& result) { return result ? result->status : -1; };
    EXPECT_EQ(status(service.client().Post(path, body.substr(1), formType)), 400);
    EXPECT_EQ(status(service.client().Post(path, body, "text/plain")), 400);
    EXPECT_EQ(status(service.client().Post(path, body, "multipart/form-data; boundary=other")), 400);
    EXPECT_EQ(status(service.client().Post(path, httplib::Headers{{"Content-Length", "7"}}, body, formType)),
              400);
    const auto chunked = [&](std::size_t, httplib::DataSink& sink) {
        sink.write(body.data(), body.size());
        sink.done();
        return true;
    };
    EXPECT_EQ(status(service.client().Post(path, chunked, formType)), 400);
    EXPECT_EQ(status(service.get(path)), 404);
    EXPECT_TRUE(std::filesystem::is_empty(folder / "mails"));
}

TEST(LogMail, IsAnsweredInTheScenariosWay) {
    struct Case {
        std::string option;
        int status;
        std::string beginning;
    };
    const std::vector<Case> cases{{"line-feed", 200, "SUCCESS\n"},
                                  {"error", 500, "<!DOCTYPE html>"},
                                  {"empty", 200, ""},
                                  {"slow", 200, "SUCCESS"}};
    for (const auto& [option, status, beginning] : cases) {
        Running service({"--log-mail", option});
        const httplib::Result result = service.client().Post(path, parts("c") + closing, formType);
        ASSERT_TRUE(result) << option << result.error();
        EXPECT_EQ(result->status, status);
        EXPECT_TRUE(result->body.starts_with(beginning) && result->body.empty() == beginning.empty());
    }
    Running resetting({"--log-mail", "reset"});
    EXPECT_EQ(resetting.client().Post(path, parts("c") + closing, formType).error(), httplib::Error::Read);

    Running endless({"--log-mail", "endless"});
    httplib::Request request;
    request.method = "POST";
    request.path = path;
    request.headers = {{"Content-Type", formType}};
    request.body = parts("c") + closing;
    std::size_t received = 0;
    request.content_receiver = [&](const char*, std::size_t size, auto, auto) {
        received += size;
        return received < 1'000'000;
    };
    EXPECT_EQ(endless.client().send(request).error(), httplib::Error::Canceled);
}

} // namespace
