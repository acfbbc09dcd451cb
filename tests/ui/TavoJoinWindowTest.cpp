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

TEST_F(ProgressWindow, TellsHowMuchOfADownloadHasArrived) {
    const struct {
        std::uint64_t received, announced;
        const char* words;
        const char* shown;
    } cases[] = {{42'400'000, 97'000'000, "%1 of %2 MB", "0.43 42 of 97 MB"},
                 {42'500'000, 97'000'000, "%2 MB 中 %1 MB", "0.43 97 MB 中 43 MB"},
                 {97'000'001, 97'000'000, "%1 of %2 MB", "1.00 97 of 97 MB"},
                 {1, 500'000, "%1 of %2 MB", "0.00 0 of 1 MB"},
                 {499'999, 499'999, "%1 of %2 MB", "1.00 "},
                 {0, 8ULL << 30, "no places", "0.00 no places"}};
    prepared();
    Journal shown;
    for (const auto& row : cases) {
        strings.texts["DOWNLOADED"] = row.words;
        delegate.tavoJoinWindow->showDownload(&row, row.received, row.announced);
        delegate.tavoJoinWindow->showDownload(this, 1, 2); // another at the same time
        delegate.tavoJoinWindow->endDownload(this);
        delegate.tavoJoinWindow->endDownload(&row);
        shown.insert(shown.end(), {std::string("progress: ") + row.shown, "progress: turn"});
    }
    EXPECT_EQ(journal, shown);
}

TEST_F(ProgressWindow, AMissingInterfaceFileIsLogged) {
    windows.failsOnce = true;
    delegate.awakeFromNib();
    EXPECT_EQ(logSink.lines.back(),
              "Exception in -[AppDelegate awakeFromNib] : no interface file TavoJoinWindow");
}

} // namespace join::test
