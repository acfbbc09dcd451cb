#pragma once

#include <exception>
#include <string>

namespace join::platform {

/// What a platform service raises when it cannot do what it was asked and has no result to say so with.
/// Carries a description for the log and the call stack of the place where it was made.
class Exception : public std::exception {
public:
    explicit Exception(std::string description);

    const char* what() const noexcept override { return description_.c_str(); }
    const std::string& callStack() const noexcept { return callStack_; }

    /// Gives the call stack of its caller as text.
    using CallStackSource = std::string (*)();

    /// Installed once, by the realisation of the platform, before the first service is used. Without one the
    /// call stack of an exception is empty.
    static void setCallStackSource(CallStackSource source) noexcept;

private:
    std::string description_;
    std::string callStack_;
};

/// The call stack of an exception, empty when it does not carry one.
std::string callStackOf(const std::exception& exception);

} // namespace join::platform
