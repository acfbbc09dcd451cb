#pragma once

#include <exception>
#include <string>

namespace join::platform {

/// Thrown by a platform service that cannot do what it was asked and has no result to report that. Carries a
/// description for the log, and the call stack of the place where it was created.
class Exception : public std::exception {
public:
    explicit Exception(std::string description);

    const char* what() const noexcept override { return description_.c_str(); }
    const std::string& callStack() const noexcept { return callStack_; }

    /// Returns the call stack of its caller as text.
    using CallStackSource = std::string (*)();

    /// Set once, by the platform's implementation, before the first service is used. Without it, exceptions
    /// have an empty call stack.
    static void setCallStackSource(CallStackSource source) noexcept;

private:
    std::string description_;
    std::string callStack_;
};

/// Returns the call stack of an exception, or an empty text if it carries none.
std::string callStackOf(const std::exception& exception);

} // namespace join::platform
