#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace join::test {

/// What the doubles of a test were asked, in order, across all of them.
using Journal = std::vector<std::string>;

/// Whether the journal holds the entries in this order, possibly with others between them.
inline ::testing::AssertionResult happenedInOrder(const Journal& journal, const Journal& entries) {
    auto from = journal.begin();
    for (const std::string& entry : entries) {
        from = std::find(from, journal.end(), entry);
        if (from == journal.end())
            return ::testing::AssertionFailure() << "not found, or not behind its predecessor: " << entry
                                                 << "\nin " << ::testing::PrintToString(journal);
        ++from;
    }
    return ::testing::AssertionSuccess();
}

/// The part of a double that writes the journal.
class Recorder {
public:
    explicit Recorder(Journal& journal, std::string prefix = "")
        : journal_(&journal), prefix_(std::move(prefix)) {}

protected:
    void record(std::string entry, const std::vector<std::string>& arguments = {}) {
        for (const std::string& argument : arguments)
            entry += " " + argument;
        journal_->push_back(prefix_ + entry);
    }

private:
    Journal* journal_;
    std::string prefix_;
};

/// Something of the platform that the test counts as long as it lives.
template <class Base>
struct Counted final : Base {
    explicit Counted(std::size_t& living) : count(living) { ++count; }
    ~Counted() override { --count; }
    std::size_t& count;
};

inline auto countBeginningWith(const Journal& journal, const std::string& beginning) {
    return std::ranges::count_if(journal, [&](const auto& entry) { return entry.starts_with(beginning); });
}

} // namespace join::test
