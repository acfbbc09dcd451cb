#pragma once

#include "platform/HttpClient.h"
#include "support/Journal.h"

#include <map>
#include <utility>

namespace join::test {

/// Answers each expected request once. A request that was not expected, or that never came, fails the test.
class ScriptedHttpClient final : public platform::HttpClient, Recorder {
public:
    using Recorder::Recorder;
    bool refusesConnections = false; ///< and downloads, and requests that were not expected
    /// What was started, for the test to carry on with.
    std::vector<std::pair<platform::DownloadRequest, platform::DownloadDelegate*>> downloads;
    std::vector<std::pair<platform::PostRequest, platform::ConnectionDelegate*>> connections;
    std::size_t livingConnections = 0;

    ~ScriptedHttpClient() override {
        for (const auto& [url, reply] : expected_)
            ADD_FAILURE() << "never asked for: " << url;
    }

    void expect(const std::string& url, platform::HttpReply reply) {
        expected_.emplace(url, std::move(reply));
    }

    platform::HttpReply get(const platform::HttpRequest& request) override {
        record("get " + request.url);
        EXPECT_EQ(request.timeout, std::chrono::seconds(60));
        if (const auto found = expected_.find(request.url); found != expected_.end())
            return expected_.extract(found).mapped();
        EXPECT_TRUE(refusesConnections) << "unexpected request: " << request.url;
        return {{}, {}, platform::HttpError{"refused", request.url}};
    }

    std::unique_ptr<platform::Download> download(const platform::DownloadRequest& request,
                                                 platform::DownloadDelegate& delegate) override {
        record("download " + request.url);
        if (refusesConnections)
            return nullptr;
        downloads.emplace_back(request, &delegate);
        return std::make_unique<platform::Download>();
    }

    std::unique_ptr<platform::Connection> connect(platform::PostRequest request,
                                                  platform::ConnectionDelegate& delegate) override {
        record("post " + request.url);
        if (refusesConnections)
            return nullptr;
        connections.emplace_back(std::move(request), &delegate);
        return std::make_unique<Counted<platform::Connection>>(livingConnections);
    }

private:
    std::multimap<std::string, platform::HttpReply> expected_;
};

} // namespace join::test
