#include "platform/linux/system/CallStack.h"

#include <execinfo.h>

#include <array>
#include <cstdlib>
#include <memory>

namespace join::platform {

std::string callStack() {
    std::array<void*, 48> frames{};
    const int count = ::backtrace(frames.data(), static_cast<int>(frames.size()));
    const std::unique_ptr<char*, decltype(&std::free)> names(::backtrace_symbols(frames.data(), count),
                                                             &std::free);
    std::string text;
    for (int i = 0; names && i < count; ++i)
        text.append(text.empty() ? "" : "\n").append(names.get()[i]);
    return text;
}

} // namespace join::platform
