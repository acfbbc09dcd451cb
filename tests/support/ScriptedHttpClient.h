#pragma once

#include "platform/HttpClient.h"
#include "support/Journal.h"

#include <map>
#include <utility>

namespace join::test {

/// Answers each expected request once. One that was not expected, or that never came, fails the test.
class ScriptedHttpClient final : public platform::HttpClient, Recorder {
public:
    using Recorder::Recorder;
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
        ADD_FAILURE() << "unexpected request: " << request.url;
        return {{}, {}, platform::HttpError{"unexpected", request.url}};
    }

private:
    std::multimap<std::string, platform::HttpReply> expected_;
};

} // namespace join::test
