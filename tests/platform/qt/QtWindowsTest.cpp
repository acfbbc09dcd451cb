#include "platform/qt/QtWindows.h"
#include "base/ServiceSettings.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtStrings.h"
#include "platform/qt/QtTimers.h"
#include "platform/qt/QtWaiting.h"
#include "platform/qt/SpinningIndicator.h"
#include "support/LogicTest.h"

#include <QtTest>
#include <QtWidgets>

#include <future>

namespace join::platform {
namespace {

using namespace std::chrono_literals;
using test::Journal;

/// The logic on doubles, but with real windows.
class QtWindowsTest : public test::LogicTest {
protected:
    QtWindowsTest() {
        services().windows = &qtWindows;
        application.staysWhenItEnds = true;
        session().webServerName.set("host");
    }

    static QWidget& window(const QString& name) {
        for (QWidget* candidate : QApplication::topLevelWidgets())
            if (candidate->objectName() == name)
                return *candidate;
        throw std::runtime_error("no window " + name.toStdString());
    }

    /// The user hits a key, wherever the keyboard is.
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QApplication::activeWindow()->windowHandle(), key, modifiers);
    }
    static void type(const QString& text) { QTest::keyClicks(QApplication::focusWidget(), text); }
    static void paste(const QString& text) {
        QApplication::clipboard()->setText(text);
        press(Qt::Key_V, Qt::ControlModifier);
    }
    static QString focused() { return QApplication::focusWidget()->objectName(); }

    /// Runs the loop until something holds, for at most half a minute.
    static bool turnUntil(const std::function<bool()>& holds) { return QTest::qWaitFor(holds, 30'000); }

    /// How often the program was to end.
    auto ends() const {
        return std::ranges::count(journal, "terminate") + std::ranges::count(journal, "exit");
    }

    QtMainQueue queue;
    QtTimers qtTimers{queue};
    QtWindows qtWindows{queue};
    TavoJoinWindowHandler progress;
    TavoJoinMainWindowHandler entry{progress};
};

TEST_F(QtWindowsTest, TheirIconIsTheDesktopsInEverySize) {
    progress.showWindow();
    ASSERT_TRUE(turnUntil([] { return !QApplication::windowIcon().isNull(); }));
    EXPECT_EQ(QApplication::applicationName() + " " + QApplication::desktopFileName(), "Join com.tavo.join");
    for (const int size : {16, 24, 32, 48, 64, 128}) {
        const auto format = QImage::Format_ARGB32_Premultiplied;
        const QImage shown = QApplication::windowIcon().pixmap(size).toImage().convertToFormat(format);
        const QString file = QString(JOIN_ICONS "/com.tavo.join-%1.png").arg(size);
        const QImage installed = QImage(file).convertToFormat(format);
        ASSERT_TRUE(shown.size() == QSize(size, size) && installed.size() == shown.size()) << size;
        double difference = 0; // of all channels of all pixels
        for (qsizetype i = 0; i < shown.sizeInBytes(); ++i)
            difference += std::abs(int{shown.constBits()[i]} - int{installed.constBits()[i]});
        EXPECT_LT(difference / static_cast<double>(shown.sizeInBytes()), 1.5) << size;
    }
}

TEST_F(QtWindowsTest, HaveNoControlsButTheirOwn) {
    EXPECT_THROW(qtWindows.load("NoSuchWindow"), Exception);
    EXPECT_THROW(qtWindows.load("ErrorWindow")->textField("errorText"), Exception);
    EXPECT_THROW(qtWindows.load("ErrorWindow")->progressIndicator("errorText"), Exception);
}

/// What a user finds with assistive technology: role, name, description and text of all that is seen and has a
/// name, with a star at the focus; and how fields look.
Journal found(QAccessibleInterface& item) {
    if (item.state().invisible)
        return {};
    Journal lines;
    if (const QString name = item.text(QAccessible::Name); !name.isEmpty()) {
        QString line = QMetaEnum::fromType<QAccessible::Role>().valueToKey(item.role()) + (": " + name);
        for (const auto part : {QAccessible::Description, QAccessible::Value})
            line += item.text(part).isEmpty() ? "" : " " + item.text(part);
        if (const auto* const edit = dynamic_cast<QLineEdit*>(item.object())) {
            const auto role = edit->text().isEmpty() ? QPalette::PlaceholderText : QPalette::Text;
            line += edit->palette().color(role) == QColor(Qt::red) ? ", red" : "";
            line += edit->font().pointSize() == 13 ? ", 13 points" : "";
        }
        line += item.state().disabled ? ", disabled" : "";
        lines = {(item.state().focused ? "* " + line : line).toStdString()};
    }
    for (int i = 0; i < item.childCount(); ++i)
        std::ranges::copy(found(*item.child(i)), std::back_inserter(lines));
    return lines;
}

Journal found(QWidget& window) {
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    return found(*QAccessible::queryAccessibleInterface(&window));
}

TEST_F(QtWindowsTest, AreInTheMiddleAndPaintedAsSoonAsTheyAreShownWhileQueuedWorkWaits) {
    int worksRun = 0;
    for (int work = 0; work < 2; ++work)
        queue.enqueue([&] { ++worksRun; });
    progress.showProblem();
    EXPECT_FALSE(progress.isVisible() || QtWindows::bringToFront(""));
    progress.showWindow();
    EXPECT_EQ(worksRun, 0);
    QWidget& shown = window("TavoJoinWindow");
    EXPECT_FALSE(shown.testAttribute(Qt::WA_PendingUpdate));
    QScreen& screen = *QApplication::primaryScreen();
    const auto picture = [&] { return screen.grabWindow(shown.winId()).toImage(); };
    EXPECT_EQ(picture().pixelColor(2, 2), QColor(Qt::white));
    const QPoint distance = shown.geometry().center() - screen.geometry().center();
    EXPECT_LE(distance.manhattanLength(), 8); // the desktop adds a frame
    EXPECT_EQ(found(shown), (Journal{"Dialog: [JOIN]", "* StaticText: [PROBLEM_OCCURED]"}));
    progress.showProgress();
    const QImage drawn = picture();
    QApplication::processEvents();
    EXPECT_EQ(picture(), drawn);
    EXPECT_EQ(worksRun, 2);
    strings.texts["DOWNLOADED"] = "%1 of %2";
    progress.showDownload(this, 3'000'000, 5'000'000);
    QApplication::processEvents();
    EXPECT_NE(picture(), drawn);
    EXPECT_EQ(found(shown).back(), "ProgressBar: JOIN_PROGRESS 3 of 5");
    progress.endDownload(this);
    EXPECT_EQ(found(shown),
              (Journal{"Dialog: [JOIN]", "* StaticText: [JOIN_PROGRESS]", "ProgressBar: JOIN_PROGRESS"}));
    shown.showMinimized();
    EXPECT_TRUE(QtWindows::bringToFront(""));
    EXPECT_FALSE(shown.isMinimized());
    entry.showWindow();
    progress.showWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&shown));
}

TEST_F(QtWindowsTest, TheErrorsMessageIsTextWithOneLinkThatTheKeyboardOpens) {
    strings.texts = {{"ERROR_MESSAGE", "<img src=x> & <b>ü</b>\n<a href='file:///'>here</a> or here: 5%%"},
                     {"CLICK_HERE", "here"}};
    ErrorWindow error;
    error.showWindow();
    EXPECT_EQ(found(window("ErrorWindow")),
              (Journal{"Dialog: [JOIN]",
                       "StaticText: <img src=x> & <b>ü</b>\n<a href='file:///'>here</a> or here: 5%",
                       "* Button: [OK]"}));
    const QLabel& label = *window("ErrorWindow").findChild<QLabel*>("errorText");
    const QString address = QString::fromStdString(std::string(systemRequirementsAddress));
    EXPECT_TRUE(label.text().contains("href=\"" + address + "\" style=\"color: blue\">here</a>"))
        << label.text().toStdString();
    EXPECT_EQ(label.font().toString(), QFont("Helvetica", 14).toString());
    QTextBrowser browser;
    QDesktopServices::setUrlHandler("https", &browser, "setSource");
    for (const Qt::Key way : {Qt::Key_Tab, Qt::Key_Backtab}) {
        press(way);
        EXPECT_EQ(focused(), "errorText");
        press(Qt::Key_Return);
        EXPECT_EQ(browser.source(), address);
        browser.setSource({});
        press(way);
        EXPECT_EQ(focused(), "ok");
    }
    QDesktopServices::unsetUrlHandler("https");
    EXPECT_EQ(ends(), 0);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape, Qt::Key_Space})
        press(key);
    EXPECT_EQ(ends(), 3);
}

TEST_F(QtWindowsTest, TheirLoopRunsWorkOfAnyThreadInItsOrderAndATimerUntilItIsDestroyed) {
    const std::string letters = "abcdefghijklmnopqrstuvwxyz";
    std::string done;
    std::thread([&] {
        for (const char letter : letters)
            queue.enqueue([&, letter] { done += letter; });
    }).join();
    EXPECT_EQ(done, "");
    EXPECT_TRUE(turnUntil([&] { return done == letters; })) << done;

    const auto fired = std::make_shared<int>(0);
    auto timer = qtTimers.repeating(1ms, [fired] { ++*fired; });
    EXPECT_TRUE(turnUntil([&] { return *fired == 3; }));
    timer.reset();
    EXPECT_EQ(fired.use_count(), 1);
}

TEST_F(QtWindowsTest, TheirIndicatorTurnsOnlyWhileItIsAnimatedAndHasNoValue) {
    SpinningIndicator indicator;
    indicator.resize(36, 36);
    const auto turns = [&] {
        int times = 0;
        const auto clock = qtTimers.repeating(50ms, [&] { ++times; });
        const QImage before = indicator.grab().toImage();
        turnUntil([&] { return times == 8 || indicator.grab().toImage() != before; });
        return times < 8;
    };
    indicator.startAnimation();
    indicator.setValue(ProgressValue{0.25, "1 of 4 MB"});
    const QImage quarter = indicator.grab().toImage();
    EXPECT_FALSE(turns());
    EXPECT_EQ(indicator.toolTip(), "1 of 4 MB");
    indicator.setValue(ProgressValue{0.5, "2 of 4 MB"});
    EXPECT_NE(indicator.grab().toImage(), quarter);
    indicator.setValue(std::nullopt);
    EXPECT_TRUE(turns());
    indicator.stopAnimation();
    EXPECT_FALSE(turns());
}

TEST_F(QtWindowsTest, LiveWhileTheLogicWaitsAndNoLogicRuns) {
    QtWaiting waiting(queue);
    bool hasRun = false;
    const auto timer = qtTimers.repeating(1ms, [&] { hasRun = true; });
    queue.enqueue([&] { hasRun = true; });
    SpinningIndicator indicator;
    indicator.startAnimation();
    std::promise<void> end;
    QTimer::singleShot(0, &indicator, [&] {
        const QImage before = indicator.grab().toImage();
        EXPECT_TRUE(turnUntil([&] { return indicator.grab().toImage() != before; }));
        waiting.during([&] { end.set_value(); }); // what leaving does must not wait for the wait
    });
    const auto thread = waiting.during([&] {
        end.get_future().wait();
        return std::this_thread::get_id();
    });
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_FALSE(hasRun);
    EXPECT_TRUE(turnUntil([&] { return hasRun; }));
    EXPECT_THROW(waiting.during([] { throw std::out_of_range("the work's"); }), std::out_of_range);
}

class QtEntryWindow : public QtWindowsTest {
protected:
    QtEntryWindow() {
        entry.showWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&shown()));
        notifications.addObserver("ReadJoinParameters", [this](const Text&) {
            ++joins;
            whileItJoins();
        });
    }

    static QWidget& shown() { return window("TavoJoinMainWindow"); }
    static QLineEdit& keyField() { return *shown().findChild<QLineEdit*>("keyInputTextfield"); }
    static QLineEdit& emailField() { return *shown().findChild<QLineEdit*>("emailInputTextfield"); }

    static void expectFields(const std::string& key, const std::string& email) {
        EXPECT_EQ(found(shown()),
                  (Journal{"Dialog: [JOIN]", "StaticText: [SESSION_KEY]", key, "StaticText: [EMAIL_ADDRESS]",
                           email, "Button: [JOIN]", "Button: [CANCEL]"}));
    }

    void expectQuestion(const std::string& key, const std::string& answer) {
        http.expect("https://host/api/public/xml/meetings/checkSessionID?key=" + key +
                        "&role=agent&sessionType=Meeting",
                    {200, answer, {}});
    }

    int joins = 0;
    std::function<void()> whileItJoins = [] {};
};

TEST_F(QtEntryWindow, IsUsedWithTheKeyboardAloneAndSaysInRedWhatIsMissing) {
    const std::string noKey = "EditableText: [SESSION_KEY] [ENTER_KEY]";
    const std::string noEmail = "EditableText: [EMAIL_ADDRESS] [ENTER_EMAIL]";
    expectFields("* " + noKey, noEmail);
    press(Qt::Key_Return);
    expectFields("* " + noKey + ", red, 13 points", noEmail + ", red, 13 points");
    type("123");
    press(Qt::Key_Return);
    expectFields("EditableText: [SESSION_KEY] 123 123", "* " + noEmail + ", red, 13 points");
    type("ann");
    expectFields("EditableText: [SESSION_KEY] 123 123", "* " + noEmail + " ann");
    for (const char* next : {"joinButton", "cancelButton", "keyInputTextfield", "emailInputTextfield",
                             "joinButton", "cancelButton"}) {
        press(Qt::Key_Tab);
        EXPECT_EQ(focused(), next);
    }
    Journal asked; // what is seen while the server is asked
    logSink.atWrite = [&] {
        asked = found(shown());
        EXPECT_EQ(shown().cursor().shape(), keyField().isEnabled() ? Qt::ArrowCursor : Qt::BusyCursor);
    };
    expectQuestion("123", "<is-valid>false");
    press(Qt::Key_Return);
    EXPECT_EQ(
        asked,
        (Journal{"Dialog: [JOIN]", "StaticText: [SESSION_KEY]", "EditableText: [SESSION_KEY] 123, disabled",
                 "StaticText: [EMAIL_ADDRESS]", "EditableText: [EMAIL_ADDRESS] [ENTER_EMAIL] ann, disabled",
                 "ProgressBar: JOIN_PROGRESS", "Button: [JOIN], disabled", "* Button: [CANCEL]"}));
    expectFields("* EditableText: [SESSION_KEY] [ENTER_VALID_KEY], red, 13 points", noEmail + " ann");
    expectQuestion("456", "<is-valid>true");
    type("456");
    press(Qt::Key_Enter);
    EXPECT_TRUE(progress.isVisible() && !shown().isVisible());
    EXPECT_EQ(ends(), 0);
}

TEST_F(QtEntryWindow, TypedTextIsTakenAndShownAsItIs) {
    const QString email = "<img src=x> & &lt;b&gt; \"שלום\"";
    emailField().setText(email);
    press(Qt::Key_Return); // it becomes a prompt
    EXPECT_TRUE(Qt::mightBeRichText(emailField().toolTip()));
    QTextDocument toolTip;
    toolTip.setHtml(emailField().toolTip());
    EXPECT_EQ(emailField().placeholderText() + toolTip.toPlainText(), email + email);
    emailField().clear();
    const std::string key(100'000, '7');
    const QSize size = shown().size();
    paste(QString::fromStdString(key));
    press(Qt::Key_Return);
    EXPECT_EQ(keyField().placeholderText().size(), 100'000);
    EXPECT_LT(keyField().toolTip().size(), 10'000);
    QApplication::processEvents();
    EXPECT_EQ(shown().height(), size.height());
    EXPECT_LT(shown().width(), 1000);
    paste("\nשלום ‏مرحبا\r\n日本\u2028😀\n");
    expectQuestion(key, "<is-valid>false");
    press(Qt::Key_Return);
    EXPECT_EQ(session().key(), key);
    EXPECT_EQ(session().emailID(), "שלום ‏مرحبا  日本 😀") << "line breaks become spaces";
}

class Leaving : public QtEntryWindow, public testing::WithParamInterface<void (*)(QWidget&)> {};

TEST_P(Leaving, IsAlwaysPossibleAndAllThatTheUserCanDoWhileTheLogicWaits) {
    QtWaiting waiting(queue);
    auto& joinButton = *shown().findChild<QPushButton*>("joinButton");
    whileItJoins = [&] {
        std::promise<void> end;
        QTimer::singleShot(0, &shown(), [&] {
            type("7");
            for (const Qt::Key key : {Qt::Key_7, Qt::Key_Space, Qt::Key_Return, Qt::Key_Tab})
                press(key);
            EXPECT_EQ(focused() + keyField().text(), "keyInputTextfield");
            QTest::mouseClick(&joinButton, Qt::LeftButton);
            EXPECT_EQ(ends(), 0);
            GetParam()(shown());
            end.set_value();
        });
        waiting.during([&] { end.get_future().wait(); });
        joinButton.click(); // is lost as well, and so is a click that waits
        QMetaObject::invokeMethod(&joinButton, &QPushButton::click, Qt::QueuedConnection);
    };
    press(Qt::Key_Return);
    EXPECT_TRUE(ends() == 1 && !shown().isVisible());
    entry.showWindow();
    EXPECT_EQ(joins, 1);
    QTest::keyClick(&keyField(), Qt::Key_7);
    EXPECT_EQ(keyField().text(), "7");
    GetParam()(shown());
    EXPECT_TRUE(ends() == 2 && !shown().isVisible());
}

INSTANTIATE_TEST_SUITE_P(
    QtEntryWindow, Leaving,
    testing::Values([](QWidget& window) { QTest::keyClick(window.focusWidget(), Qt::Key_Escape); },
                    [](QWidget& window) { QTest::keyClick(&window, Qt::Key_W, Qt::ControlModifier); },
                    [](QWidget& window) { QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier); },
                    [](QWidget& window) {
                        QTest::mouseClick(window.findChild<QPushButton*>("cancelButton"), Qt::LeftButton);
                    },
                    [](QWidget& window) { window.windowHandle()->close(); }));

bool isWhole(const QWidget& widget) {
    if (const auto* edit = dynamic_cast<const QLineEdit*>(&widget)) {
        constexpr int frame = 8;
        return edit->fontMetrics().horizontalAdvance(edit->placeholderText()) + frame <= edit->width();
    }
    if (widget.hasHeightForWidth())
        return widget.heightForWidth(widget.width()) <= widget.height();
    return widget.sizeHint().width() <= widget.width() && widget.sizeHint().height() <= widget.height();
}

TEST_F(QtWindowsTest, SpeakTheUsersLanguageOrEnglishAndCutNothingOffEvenAtTwiceTheLength) {
    const std::pair<std::string, std::string> cases[]{
        {"en_GB", "Cancel"},   {"ar_EG", "إلغاء"},      {"de_AT", "Abbrechen"}, {"fr", "Annuler"},
        {"es_MX", "Cancelar"}, {"ja_JP", "キャンセル"}, {"he_IL", "Cancel"},    {"C", "Cancel"}};
    for (const auto& [locale, cancel] : cases) {
        const auto direction = locale == "ar_EG" ? Qt::RightToLeft : Qt::LeftToRight;
        SCOPED_TRACE(locale);
        QLocale::setDefault(QLocale(QString::fromStdString(locale)));
        QtStrings table;
        for (const std::string id :
             {"JOIN", "CANCEL", "SESSION_KEY", "ENTER_KEY", "EMAIL_ADDRESS", "ENTER_EMAIL", "ENTER_VALID_KEY",
              "JOIN_PROGRESS", "INSTALL_PROGRESS", "DOWNLOADED", "PROBLEM_OCCURED", "LINK_NOT_ALLOWED", "OK",
              "ERROR_MESSAGE", "CLICK_HERE"}) {
            const std::string text = table.localized(id);
            EXPECT_TRUE(!text.empty() && (text != id || id == "OK")) << id; // which is "OK" in many languages
            strings.texts[id] = text + " " + text;
        }
        EXPECT_EQ(table.localized("CANCEL"), cancel);
        EXPECT_EQ(table.localized("NO_SUCH_KEY"), "NO_SUCH_KEY");
        EXPECT_EQ(QApplication::layoutDirection(), direction);
        const auto text = [&](const char* id) { return QString::fromStdString(table.localized(id)); };
        EXPECT_TRUE(text("DOWNLOADED").contains("%1") && text("DOWNLOADED").contains("%2"));
        EXPECT_EQ(text("ERROR_MESSAGE").count(text("CLICK_HERE")), 1) << "is made a link";
        EXPECT_FALSE(text("ERROR_MESSAGE").remove("%%").contains('%')) << "a percent sign stands doubled";

        ErrorWindow error;
        TavoJoinWindowHandler information;
        TavoJoinMainWindowHandler form(information);
        error.showWindow();
        information.showWindow();
        information.showProblem();
        form.showWindow();
        form.joinButtonAction();
        form.showWindowAskingForValidKey();
        QApplication::processEvents();
        for (const char* name : {"ErrorWindow", "TavoJoinWindow", "TavoJoinMainWindow"})
            for (QWidget* widget : window(name).findChildren<QWidget*>()) {
                const QString said = QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
                EXPECT_TRUE(!widget->isVisible() || (isWhole(*widget) && !said.contains('[')))
                    << said.toStdString();
            }
        EXPECT_EQ(window("TavoJoinMainWindow").findChild<QLineEdit*>()->alignment(), // as of the prompt
                  Qt::AlignAbsolute | (direction == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft));
    }
    EXPECT_EQ(QDir(":/strings").entryList(QDir::Files).size(), 6);
}

} // namespace
} // namespace join::platform
