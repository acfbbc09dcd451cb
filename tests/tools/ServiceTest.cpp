#include "RunningService.h"

#include <gtest/gtest.h>
#include <openssl/x509v3.h>

#include <functional>
#include <optional>

namespace {

using join::test::Running;
using join::test::TemporaryFolder;
using join::test::writeFile;
using Texts = std::vector<std::string>;

const std::string versionCheck =
    "/api/public/json/meetings/checkSessionID?key=123456789&installed-version=5.2&os=mac";
const std::string keyCheck = "/api/public/xml/meetings/checkSessionID?role=agent&sessionType=Meeting&key=";

const std::string noUpdate = R"({"response":{"result":{"meeting":{"update_needed":false}}}})";

struct Exchange {
    Texts options;
    std::string target;
    int status;
    std::string body;
};

std::string keyAnswer(const std::string& valid) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<response><result><is-valid>" + valid +
           "</is-valid></result></response>\n";
}

TEST(Service, AnswersTheChecksInTheScenariosWords) {
    const TemporaryFolder folder;
    const std::string bytes("\0given\n", 7);
    const std::string given = writeFile(folder / "answer", bytes);
    const std::vector<Exchange> exchanges{
        {{}, versionCheck, 200, noUpdate},
        {{"--update-needed", "true", "--cdn-link", "h:1", "--aws-server", "a\"b", "--aws-url", "https://h/x"},
         versionCheck,
         200,
         R"({"response":{"result":{"meeting":{"update_needed":true,"cdn_link":"h:1","aws_server":"a\"b",)"
         R"("aws_server_download_url":"https://h/x"}}}})"},
        {{"--update-needed", "absent"}, versionCheck, 200, R"({"response":{"result":{"meeting":{}}}})"},
        {{"--status", "503"}, versionCheck, 503, noUpdate},
        {{"--answer", given}, versionCheck, 200, bytes},
        {{"--answer", given}, keyCheck, 200, bytes},
        {{}, keyCheck + "1", 200, keyAnswer("true")},
        {{}, keyCheck, 200, keyAnswer("false")},
        {{"--valid-key", "1", "--valid-key", "2"}, keyCheck + "2", 200, keyAnswer("true")},
        {{"--valid-key", "1", "--valid-key", "2"}, keyCheck + "3", 200, keyAnswer("false")},
        {{}, "/api/public/json/meetings/checkSessionID?key=1&os=mac", 400, ""},
        {{}, "/api/public/json/meetings/checkSessionID?key=1&installed-version=1&os=other", 400, ""},
        {{}, "/api/public/xml/meetings/checkSessionID?key=1&role=agent", 400, ""},
        {{}, "/api/public/xml/meetings/checkSessionID?key=1&role=agent&sessionType=Party", 400, ""},
        {{}, "/elsewhere", 404, ""},
    };
    for (const Exchange& exchange : exchanges) {
        SCOPED_TRACE(exchange.target);
        Running service(exchange.options);
        const httplib::Result result = service.get(exchange.target);
        ASSERT_TRUE(result) << result.error();
        EXPECT_EQ(result->status, exchange.status);
        EXPECT_EQ(result->body, exchange.body);
        EXPECT_TRUE(service.logs("Z GET " + exchange.target + ' ' + std::to_string(exchange.status) + ' ' +
                                 std::to_string(exchange.body.size())));
    }
}

TEST(Service, SpoilsTheBodiesOfBothChecks) {
    const auto has = [](const char* text) {
        return [text](const std::string& body) { return body.find(text) != std::string::npos; };
    };
    struct Spoilt {
        std::string broken;
        std::string target;
        std::function<bool(const std::string&)> holds;
    };
    const std::vector<Spoilt> cases{
        {"html", versionCheck, has("<html>")},
        {"empty", versionCheck, [](auto& body) { return body.empty(); }},
        {"garbage", versionCheck, has("\xff")},
        {"deep", versionCheck, [](auto& b) { return b.size() == 200'000 && b[99'999] == '['; }},
        {"deep", keyCheck, [](auto& b) { return b.size() == 700'000 && b.starts_with("<a><a>"); }},
        {"types", versionCheck, has(R"("update_needed":["true"],"cdn_link":7,)")},
        {"types", keyCheck, has("<is-valid><is-valid>")},
    };
    for (const Spoilt& spoilt : cases) {
        SCOPED_TRACE(spoilt.broken);
        Running service({"--broken", spoilt.broken});
        const httplib::Result result = service.get(spoilt.target);
        ASSERT_TRUE(result) << result.error();
        EXPECT_EQ(result->status, 200);
        EXPECT_TRUE(spoilt.holds(result->body));
    }
}

TEST(Service, ClosesTheConnectionWithoutAnAnswerWhenToldSo) {
    Running service({"--broken", "reset"});
    EXPECT_EQ(service.get(versionCheck).error(), httplib::Error::Read);
    EXPECT_TRUE(service.logs(versionCheck + " - 0"));
    EXPECT_EQ(service.get("/elsewhere")->status, 404);
    EXPECT_TRUE(service.logs("/elsewhere 404 0"));
}

TEST(Service, EndsACutBodyBeforeItsAnnouncedLength) {
    Running service({"--broken", "cut"});
    std::string body;
    const auto result = service.client().Get(versionCheck, [&](const char* bytes, std::size_t size) {
        body.append(bytes, size);
        return true;
    });
    EXPECT_EQ(result.error(), httplib::Error::Read);
    EXPECT_EQ(body, R"({"response":{"result":{"meeti)");
    EXPECT_TRUE(service.logs("200 29"));
}

TEST(Service, StreamsAHundredMegabytesAndWithoutEnd) {
    constexpr std::size_t huge = 100'000'000;
    for (const std::string broken : {"huge", "endless"}) {
        Running service({"--broken", broken});
        std::size_t received = 0;
        const httplib::Result result = service.client().Get(versionCheck, [&](const char*, std::size_t size) {
            received += size;
            return received <= huge;
        });
        if (broken == "huge") {
            EXPECT_EQ(received, huge);
            EXPECT_TRUE(service.logs("200 100000000"));
        } else {
            EXPECT_EQ(result.error(), httplib::Error::Canceled);
        }
    }
}

TEST(Certificate, IsForTheNamesOfLoopbackOnlyAndNoAuthority) {
    const join::tools::Certificate certificate;
    X509* const x509 = certificate.certificate();
    EXPECT_EQ(X509_check_host(x509, "localhost", 0, 0, nullptr), 1);
    EXPECT_EQ(X509_check_ip_asc(x509, "127.0.0.1", 0), 1);
    EXPECT_EQ(X509_check_ip_asc(x509, "::1", 0), 1);
    EXPECT_EQ(X509_check_host(x509, "example.org", 0, 0, nullptr), 0);
    EXPECT_EQ(X509_check_ca(x509), 0);
}

TEST(Service, LogsHostileTargetsOnOneLine) {
    Running service;
    service.client().set_url_encode(false);
    EXPECT_EQ(service.get("/a\x1b[2J\\\xc3\xa9")->status, 404);
    EXPECT_TRUE(service.logs(R"(GET /a\x1b[2J\\\xc3\xa9 404 0)"));
}

TEST(Service, RefusesAPortThatIsTaken) {
    const Running first;
    EXPECT_THROW(Running({"--port", std::to_string(first.port())}), std::runtime_error);
}

TEST(Service, StopsWhileItDelaysAnAnswer) {
    std::optional<Running> service;
    service.emplace(Texts{"--delay", "3600000"});
    httplib::SSLClient client("127.0.0.1", service->port());
    client.enable_server_certificate_verification(false);
    client.set_read_timeout(std::chrono::minutes(5));
    auto answer = std::async(std::launch::async, [&] { return client.Get(versionCheck); });
    ASSERT_EQ(service->get("/elsewhere")->status, 404);
    service.reset();
    answer.wait();
}

} // namespace
