#include "platform/qt/QtToolkit.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    testing::InitGoogleTest(&argc, argv);
    const join::platform::QtToolkit toolkit(argv);
    return RUN_ALL_TESTS();
}
