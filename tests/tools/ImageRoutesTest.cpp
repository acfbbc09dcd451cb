#include "RunningService.h"

#include <gtest/gtest.h>

#include <future>
#include <optional>

namespace {

using join::test::Running;
using join::test::TemporaryFolder;
using join::test::writeFile;
using Texts = std::vector<std::string>;

const std::string cdnRoute = "/TavoMac.dmg";
const std::string webRoute = "/agent/TavoMac.dmg";
const std::string joinRoute = "/join-session?key=1&role=agent&email=ann%40example.org";

/// Two images of several blocks, the last of them not full.
class ImageRoutes : public testing::Test {
protected:
    static std::string image(std::size_t size, unsigned seed) {
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<char>((i * i + seed) >> 4U);
        return bytes;
    }

    Texts with(Texts options) const {
        options.insert(options.end(),
                       {"--agent-image", folder / "TavoMac.dmg", "--join-image", folder / "JoinMac.dmg"});
        return options;
    }

    TemporaryFolder folder;
    const std::string agent = image(1'000'001, 1);
    const std::string join = image(600'000, 2);
    const std::string agentPath = writeFile(folder / "TavoMac.dmg", agent);
    const std::string joinPath = writeFile(folder / "JoinMac.dmg", join);
};

TEST_F(ImageRoutes, DeliverTheImagesWithTheirLengthAndLogTheUserAgent) {
    Running service(with({}));
    for (const auto& [route, image] : {std::pair{cdnRoute, agent}, {webRoute, agent}, {joinRoute, join}}) {
        SCOPED_TRACE(route);
        const httplib::Result result = service.client().Get(route, {{"User-Agent", "Tavo\x1b 5"}});
        ASSERT_TRUE(result) << result.error();
        EXPECT_EQ(result->status, 200);
        EXPECT_TRUE(result->body == image);
        EXPECT_EQ(result->get_header_value("Content-Length"), std::to_string(image.size()));
        EXPECT_EQ(result->get_header_value("Content-Type"), "application/x-apple-diskimage");
        EXPECT_TRUE(
            service.logs(" GET " + route + " 200 " + std::to_string(image.size()) + R"( Tavo\x1b 5)"));
    }
    writeFile(agentPath, "");
    EXPECT_EQ(service.get(webRoute)->get_header_value("Content-Length"), "0");
}

TEST_F(ImageRoutes, AreNotThereWithoutAnImageAndNeedTheirQuery) {
    Running bare;
    for (const std::string& route : {cdnRoute, webRoute, joinRoute})
        EXPECT_EQ(bare.get(route)->status, 404) << route;
    Running service(with({"--image-fail", "1"}));
    for (const char* query :
         {"", "?role=agent&email=a", "?key=1&email=a", "?key=1&role=agent", "?key=1&role=guest&email=a"})
        EXPECT_EQ(service.get(std::string("/join-session") + query)->status, 400) << query;
    EXPECT_EQ(service.get(joinRoute)->status, 500); // the first that counts
    EXPECT_THROW(Running({"--join-image", folder / "missing"}), std::runtime_error);
    EXPECT_THROW(Running({"--agent-image", folder.path()}), std::runtime_error);
}

TEST_F(ImageRoutes, FailTheFirstRequestsOfTheRunOnly) {
    Running service(with({"--image-fail", "2"}));
    EXPECT_EQ(service.get(cdnRoute)->status, 500);
    EXPECT_EQ(service.get("/elsewhere")->status, 404);
    EXPECT_EQ(service.get(joinRoute)->status, 500);
    EXPECT_TRUE(service.get(webRoute)->body == agent);
    Running failing(with({"--image-fail", "all"}));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(failing.get(cdnRoute)->status, 500);
}

TEST_F(ImageRoutes, FailInTheWayThatIsTold) {
    const auto ask = [&](const std::string& fault, auto check) {
        SCOPED_TRACE(fault);
        Running service(with({"--image-fail", "all", "--image-fault", fault}));
        std::string body;
        const httplib::Result result =
            service.client().Get(cdnRoute, [&](const char* bytes, std::size_t size) {
                body.append(bytes, size);
                return fault != "stall" || body.size() < agent.size() / 2;
            });
        check(service, result, body);
    };
    ask("cut", [&](Running& service, const httplib::Result& result, const std::string& body) {
        EXPECT_EQ(result.error(), httplib::Error::Read);
        EXPECT_TRUE(body == agent.substr(0, 500'000));
        EXPECT_TRUE(
            join::test::eventually([&] { return service.log().find(" 200 500000 ") != std::string::npos; }));
    });
    ask("stall", [&](Running& service, const httplib::Result& result, const std::string& body) {
        EXPECT_EQ(result.error(), httplib::Error::Canceled);
        EXPECT_TRUE(body == agent.substr(0, 500'000));
        service.client().stop();
        EXPECT_TRUE(
            join::test::eventually([&] { return service.log().find(" 200 500000 ") != std::string::npos; }));
    });
    ask("reset", [&](Running& service, const httplib::Result& result, const std::string&) {
        EXPECT_EQ(result.error(), httplib::Error::Read);
        EXPECT_TRUE(join::test::eventually([&] { return service.log().find(" - 0 ") != std::string::npos; }));
    });
    ask("redirect", [&](Running& service, const httplib::Result& result, const std::string&) {
        EXPECT_EQ(result->status, 302);
        EXPECT_EQ(result->get_header_value("Location"),
                  "http://127.0.0.1:" + std::to_string(service.port()) + cdnRoute);
    });
    ask("html", [&](Running&, const httplib::Result& result, const std::string& body) {
        EXPECT_EQ(result->status, 200);
        EXPECT_EQ(result->get_header_value("Content-Type"), "text/html");
        EXPECT_NE(body.find("<html>"), std::string::npos);
    });
}

TEST_F(ImageRoutes, StallUntilTheServiceStops) {
    std::optional<Running> service;
    service.emplace(with({"--image-fail", "all", "--image-fault", "stall"}));
    httplib::SSLClient client("127.0.0.1", service->port());
    client.enable_server_certificate_verification(false);
    client.set_read_timeout(std::chrono::minutes(5));
    std::promise<void> half;
    auto answer = std::async(std::launch::async, [&] {
        std::size_t received = 0;
        return client.Get(webRoute, [&](const char*, std::size_t size) {
            if ((received += size) == agent.size() / 2)
                half.set_value();
            return true;
        });
    });
    half.get_future().wait();
    service.reset();
    EXPECT_EQ(answer.get().error(), httplib::Error::Read);
}

TEST(Service, NamesItselfAsTheDeliveryHostOnceItListens) {
    Running service({"--update-needed", "absent", "--cdn-link", "self"});
    EXPECT_EQ(service.get("/api/public/json/meetings/checkSessionID?key=1&installed-version=5&os=mac")->body,
              R"({"response":{"result":{"meeting":{"cdn_link":"localhost:)" + std::to_string(service.port()) +
                  R"("}}}})");
}

} // namespace
