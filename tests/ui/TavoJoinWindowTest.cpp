#include "ui/TavoJoinWindowHandler.h"

#include "support/LogicTest.h"

namespace join::test {

class ProgressWindow : public LogicTest {};

TEST_F(ProgressWindow, QuitsByTheUsersHandOrTheDelegates) {
    prepared();
    EXPECT_THROW(progressWindow().close(), Terminated);
    EXPECT_EQ(journal, (Journal{"TavoJoinWindow: out", "progress: stop",
                                "log: -[TavoJoinWindowHandler windowShouldClose:] : Terminating tavo join",
                                sessionEnd, "terminate"}));
    journal.clear();
    EXPECT_THROW(delegate.terminate(), Terminated);
    EXPECT_EQ(journal, (Journal{"TavoJoinWindow: out",
                                "log: -[TavoJoinWindowHandler close] : Agent invoked successfully",
                                sessionEnd, "terminate"}));
}

TEST_F(ProgressWindow, AMissingInterfaceFileIsLogged) {
    windows.failsOnce = true;
    delegate.awakeFromNib();
    EXPECT_EQ(logSink.lines.back(),
              "Exception in -[AppDelegate awakeFromNib] : no interface file TavoJoinWindow");
}

} // namespace join::test
