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

/// A server, a client that trusts it through SSL_CERT_FILE, a download and an upload.
struct HttpWorld {
    TemporaryFolder certificates;
    TemporaryFolder folder;
    ScriptedHttpsServer server;
    EnvironmentVariable trust{"SSL_CERT_FILE",
                              writeFile(certificates / "server.pem", server.certificate()).c_str()};
    EnvironmentVariable cache{"XDG_CACHE_HOME", (certificates / "cache").c_str()};
    FakeMainQueue queue;
    RecordingDelegate delegate;
    platform::Policy policy;
    std::unique_ptr<platform::HttpClient> client = std::make_unique<platform::CurlHttpClient>(queue, policy);
    platform::DownloadRequest image{.url = server.url("/"),
                                    .userAgent = "Debian 12",
                                    .destination = folder / "Image.dmg",
                                    .stallTimeout = std::chrono::minutes(1)};
    platform::PostRequest report{
        .url = server.url("/"), .headers = {}, .body = "report", .file = {}, .bodyBehindFile = {}};

    void expectDownload(const News& news, const std::string& error = "") {
        expectNews(client->download(image, delegate), image.url, news, error);
    }
    void expectUpload(const News& news, const std::string& error = "") {
        expectNews(client->connect(report, delegate), report.url, news, error);
    }

private:
    /// Checks what the delegate is told until the transfer has ended, and shortly after.
    void expectNews(std::unique_ptr<platform::Transfer> running, const std::string& url, const News& news,
                    const std::string& error) {
        delegate = {}; // it must be told by the queue
        EXPECT_TRUE(eventually([this] { return queue.turn(), delegate.hasEnd(); }));
        running.reset();
        queue.turn();
        EXPECT_TRUE(delegate.news == news) << delegate.news.size() << delegate.error.description;
        EXPECT_NE(delegate.error.description.find(error), std::string::npos) << delegate.error.description;
        EXPECT_EQ(delegate.error.failingUrl, news.back() == "fail" ? url : "");
    }
};

} // namespace join::test
