#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace join::test {

/// Sets an environment variable, or unsets it for nullptr, and restores it at the end.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name))
            before_ = before;
        set(value);
    }
    ~EnvironmentVariable() { set(before_ ? before_->c_str() : nullptr); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    int set(const char* value) const {
        return value ? ::setenv(name_.c_str(), value, 1) : ::unsetenv(name_.c_str());
    }

    std::string name_;
    std::optional<std::string> before_;
};

} // namespace join::test
