#include "ui/TavoJoinWindowHandler.h"

#include "support/LogicTest.h"

namespace join::test {

class ProgressWindow : public LogicTest {};

TEST_F(ProgressWindow, IsSetUpOnceInOrderBeforeItIsShown) {
    TavoJoinWindowHandler window;
    window.showWindow();
    EXPECT_EQ(journal,
              (Journal{"load TavoJoinWindow", "TavoJoinWindow: origin 760,465", "TavoJoinWindow: display",
                       "TavoJoinWindow: level 3", "TavoJoinWindow: background 255,255,255", "progress: start",
                       "infoLabel: [JOIN_PROGRESS]", "TavoJoinWindow: title [JOIN]",
                       "TavoJoinWindow: no zoom", "TavoJoinWindow: no minimise", "TavoJoinWindow: front"}));
    window.showWindow();
    EXPECT_EQ(journal.size(), 12U);
}

TEST_F(ProgressWindow, QuitsByTheUsersHandOrTheDelegates) {
    prepared();
    EXPECT_THROW(progressWindow().shouldClose(), Terminated);
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
    windows.fails = true;
    delegate.awakeFromNib();
    EXPECT_EQ(logSink.lines.back(),
              "Exception in -[AppDelegate awakeFromNib] : no interface file TavoJoinWindow");
}

} // namespace join::test
