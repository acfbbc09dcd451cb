#include "platform/Exception.h"

#include <utility>

namespace join::platform {

namespace {
Exception::CallStackSource callStackSource = nullptr;
} // namespace

Exception::Exception(std::string description)
    : description_(std::move(description)), callStack_(callStackSource ? callStackSource() : std::string()) {}

void Exception::setCallStackSource(CallStackSource source) noexcept { callStackSource = source; }

std::string callStackOf(const std::exception& exception) {
    const auto* own = dynamic_cast<const Exception*>(&exception);
    return own ? own->callStack() : std::string();
}

} // namespace join::platform
