#pragma once

#include "platform/Exception.h"
#include "platform/Log.h"
#include "support/FakeFileManager.h"

#include <functional>

namespace join::test {

/// Keeps the lines. The streams point at a file of the fake file manager, into which nothing is written.
class FakeLog final : public platform::Log {
public:
    FakeLog(Journal& journal, FakeFileManager& files) : journal_(journal), files_(files) {}

    Journal lines;
    std::string throwsOnceOn; ///< a line with this text, or "redirect", raises an exception, once
    std::function<void()> atWrite = [] {};

    void write(std::string_view message) override {
        failOn(message);
        atWrite();
        journal_.push_back("log: " + lines.emplace_back(message));
    }

    std::uint64_t redirectStandardStreams(const std::string& path) override {
        failOn("redirect");
        journal_.emplace_back("redirect");
        if (!files_.exists(path))
            files_.put(path, "");
        return files_.read(path).value_or("").size();
    }

private:
    void failOn(std::string_view message) {
        if (throwsOnceOn.empty() || message.find(throwsOnceOn) == std::string_view::npos)
            return;
        throwsOnceOn.clear();
        throw platform::Exception("the log is full");
    }

    Journal& journal_;
    FakeFileManager& files_;
};

} // namespace join::test
