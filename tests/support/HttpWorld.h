#pragma once

#include "platform/linux/desktop/Policy.h"
#include "platform/linux/http/CurlHttpClient.h"
#include "support/Child.h"
#include "support/Environment.h"
#include "support/FakeTime.h"
#include "support/ScriptedHttpsServer.h"
#include "support/TemporaryFolder.h"

#include <functional>

namespace join::test {

using News = std::vector<std::string>;

/// Keeps what it is told of one download or connection.
struct RecordingDelegate final : platform::DownloadDelegate, platform::ConnectionDelegate {
    News news; ///< pieces of data are joined
    platform::HttpError error;
    std::uint64_t lastReceived = 0;
    std::uint64_t lastAnnounced = 0;
    std::function<void()> atResponse = [] {};

    void downloadDidBegin() override { news.emplace_back("begin"); }
    void downloadDidContinue(std::uint64_t kept) override { news.push_back(std::to_string(kept)); }
    void downloadDidReceive(std::uint64_t received, std::uint64_t announced) override {
        EXPECT_GE(received, std::exchange(lastReceived, received));
        lastAnnounced = announced;
    }
    void downloadDidFinish() override { news.emplace_back("finish"); }
    void downloadDidFail(const platform::HttpError& given) override { connectionDidFail(given); }
    void connectionDidReceiveResponse() override {
        news.emplace_back("response");
        atResponse();
    }
    void connectionDidReceiveData(std::string_view piece) override {
        (news.size() < 2 ? news.emplace_back() : news.back()) += piece;
    }
    void connectionDidFinishLoading() override { downloadDidFinish(); }
    void connectionDidFail(const platform::HttpError& given) override {
        news.emplace_back("fail");
        error = given;
    }
    bool hasEnd() const { return !news.empty() && (news.back() == "finish" || news.back() == "fail"); }
};

/// A server, and a client that trusts it through SSL_CERT_FILE.
struct HttpWorld {
    TemporaryFolder certificates;
    ScriptedHttpsServer server;
    EnvironmentVariable trust{"SSL_CERT_FILE",
                              writeFile(certificates / "server.pem", server.certificate()).c_str()};
    EnvironmentVariable cache{"XDG_CACHE_HOME", (certificates / "cache").c_str()};
    FakeMainQueue queue;
    RecordingDelegate delegate;
    platform::Policy policy;
    platform::CurlHttpClient client{queue, policy};

    /// Starts a download or connection to that URL. Checks what the delegate is told until it has ended, and
    /// shortly after.
    void expectNewsOf(const std::function<std::shared_ptr<void>()>& start, const std::string& url,
                      const News& news, const std::string& error) {
        delegate = {};
        std::shared_ptr<void> running = start();
        EXPECT_EQ(delegate.news, News{});
        EXPECT_TRUE(eventually([this] { return queue.turn(), delegate.hasEnd(); }));
        running.reset();
        queue.turn();
        EXPECT_TRUE(delegate.news == news) << delegate.news.size() << delegate.error.description;
        EXPECT_NE(delegate.error.description.find(error), std::string::npos) << delegate.error.description;
        EXPECT_EQ(delegate.error.failingUrl, news.back() == "fail" ? url : "");
    }
};

} // namespace join::test
