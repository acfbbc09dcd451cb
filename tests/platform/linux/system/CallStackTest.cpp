#include "platform/linux/system/CallStack.h"

#include "platform/Exception.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace join::platform {

TEST(CallStack, GoesWithAnExceptionALineForEachFrame) {
    Exception::setCallStackSource(callStack);
    const std::string frames = callStackOf(Exception("no reason"));
    Exception::setCallStackSource(nullptr);
    EXPECT_GT(std::ranges::count(frames, '\n'), 2);
    EXPECT_NE(frames.find("linux_tests"), std::string::npos) << frames;
}

} // namespace join::platform
