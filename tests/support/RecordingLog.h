#pragma once

#include "platform/Exception.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Services.h"
#include "support/Journal.h"

#include <functional>

namespace join::test {

/// Keeps the lines, also in a journal if it is given one. Points no stream anywhere.
class RecordingLog final : public platform::Log {
public:
    explicit RecordingLog(Journal* journal = nullptr) : journal_(journal) {}

    Journal lines;
    std::string throwsOnceOn; ///< a line with this text, or "redirect", raises an exception, once
    std::function<void()> atWrite = [] {};

    void write(std::string_view message) override {
        failOn(message);
        atWrite();
        note("log: " + lines.emplace_back(message));
    }

    std::uint64_t redirectStandardStreams(const std::string& path) override {
        failOn("redirect");
        note("redirect");
        note(path);
        return platform::services().fileManager->read(path).value_or("").size();
    }

private:
    void note(const std::string& entry) {
        if (journal_)
            journal_->push_back(entry);
    }
    void failOn(std::string_view message) {
        if (throwsOnceOn.empty() || message.find(throwsOnceOn) == std::string_view::npos)
            return;
        throwsOnceOn.clear();
        throw platform::Exception("the log is full");
    }

    Journal* journal_;
};

} // namespace join::test
