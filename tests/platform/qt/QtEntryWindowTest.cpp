#include "platform/Services.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/QtStrings.h"
#include "platform/qt/QtWaiting.h"
#include "platform/qt/QtWindows.h"
#include "support/LogicTest.h"
#include "ui/ErrorWindow.h"
#include "ui/TavoJoinMainWindowHandler.h"
#include "ui/TavoJoinWindowHandler.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QMetaEnum>
#include <QPushButton>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTimer>

#include <future>

namespace join::platform {
namespace {

/// The logic on doubles, but with real windows.
class RealWindows : public test::LogicTest {
protected:
    RealWindows() {
        services().windows = &qtWindows;
        application.staysWhenItEnds = true;
        JoinSessionDetails::setDefaultValues();
        session().webServerName.set("host");
        session().sessionType.set(SessionType::meeting);
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

    static QString focused() {
        return QApplication::focusWidget() ? QApplication::focusWidget()->objectName() : QString();
    }

    /// How often the program was to end.
    auto ends() const {
        return std::ranges::count(journal, "terminate") + std::ranges::count(journal, "exit");
    }

    QtMainQueue queue;
    QtWindows qtWindows{queue};
    TavoJoinWindowHandler progress;
};

class QtEntryWindow : public RealWindows {
protected:
    QtEntryWindow() {
        entry.showWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&shown()));
        notifications.addObserver("ReadJoinParameters", [this](const Text&) { ++joins; });
    }

    static QWidget& shown() { return window("TavoJoinMainWindow"); }
    static QLineEdit& field(const char* name) { return *shown().findChild<QLineEdit*>(name); }
    static QLineEdit& keyField() { return field("keyInputTextfield"); }
    static QLineEdit& emailField() { return field("emailInputTextfield"); }
    static QPushButton& joinButton() { return *shown().findChild<QPushButton*>("joinButton"); }

    void expectQuestion(const std::string& key, const std::string& answer) {
        http.expect("https://host/api/public/xml/meetings/checkSessionID?key=" + key +
                        "&role=agent&sessionType=Meeting",
                    {200, answer, {}});
    }

    TavoJoinMainWindowHandler entry{progress};
    int joins = 0;
};

bool isRed(const QLineEdit& edit) {
    return edit.palette().color(QPalette::PlaceholderText) == QColor(255, 0, 0);
}

TEST_F(QtEntryWindow, IsUsedWithTheKeyboardAlone) {
    EXPECT_EQ(focused(), "keyInputTextfield");
    type("123");
    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), "emailInputTextfield");
    type("ann@example.org");
    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), "joinButton");
    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), "cancelButton");
    expectQuestion("123", "<is-valid>false");
    press(Qt::Key_Return);
    EXPECT_EQ(focused(), "keyInputTextfield");
    EXPECT_EQ(keyField().text(), "");
    EXPECT_EQ(emailField().text(), "ann@example.org");
    EXPECT_EQ(keyField().placeholderText(), "[ENTER_VALID_KEY]");
    EXPECT_TRUE(isRed(keyField()));

    expectQuestion("456", "<is-valid>true");
    type("456");
    press(Qt::Key_Enter);
    EXPECT_FALSE(shown().isVisible());
    EXPECT_TRUE(progress.isVisible());
    EXPECT_EQ(ends(), 0);
}

TEST_F(QtEntryWindow, PromptsAreRedOnlyWhereSomethingIsMissing) {
    EXPECT_FALSE(isRed(keyField()) || isRed(emailField()));
    press(Qt::Key_Return);
    for (const QLineEdit* edit : {&keyField(), &emailField()}) {
        EXPECT_TRUE(isRed(*edit));
        EXPECT_EQ(edit->font().pointSize(), 13);
        EXPECT_NE(edit->palette().color(QPalette::Text), QColor(255, 0, 0));
    }
    EXPECT_EQ(focused(), "keyInputTextfield");
    keyField().setText("123");
    press(Qt::Key_Return);
    EXPECT_EQ(focused(), "emailInputTextfield");
    keyField().clear();
    type("ann");
    EXPECT_NE(emailField().font().pointSize(), 13) << "what is typed is as large as other text";
    press(Qt::Key_Return);
    EXPECT_EQ(focused(), "keyInputTextfield");
    emailField().clear();
    EXPECT_TRUE(isRed(keyField()));
    EXPECT_FALSE(isRed(emailField()));
    EXPECT_EQ(emailField().placeholderText(), "ann");
}

/// What a tool tip shows: it takes its text for rich text if it looks like it.
QString shownByToolTip(const QString& text) {
    QTextDocument document;
    Qt::mightBeRichText(text) ? document.setHtml(text) : document.setPlainText(text);
    return document.toPlainText();
}

TEST_F(QtEntryWindow, TypedTextIsShownAsTheCharactersItIs) {
    for (const char* email : {"<img src=x>", "a & b", "&lt;b&gt;", "\"q\" <b>", "שלום"}) {
        emailField().setText(email);
        press(Qt::Key_Return);
        EXPECT_EQ(emailField().placeholderText(), email);
        EXPECT_EQ(shownByToolTip(emailField().toolTip()), email);
    }
}

TEST_F(QtEntryWindow, TextOfAnyLengthAndScriptIsTaken) {
    const std::string key(100'000, '7');
    const QWidget& entryWindow = shown();
    const QSize size = entryWindow.size();
    paste(QString::fromStdString(key));
    press(Qt::Key_Return); // the key becomes a prompt
    EXPECT_EQ(keyField().placeholderText().size(), 100'000);
    EXPECT_LT(keyField().toolTip().size(), 10'000);
    QApplication::processEvents();
    EXPECT_EQ(entryWindow.height(), size.height());
    EXPECT_LT(entryWindow.width(), 1000);
    paste("\nשלום ‏مرحبا\r\n日本\u2028😀\n");
    expectQuestion(key, "<is-valid>false");
    press(Qt::Key_Return);
    EXPECT_EQ(session().key(), key);
    EXPECT_EQ(session().emailID(), "שלום ‏مرحبا  日本 😀") << "line breaks become spaces";
}

TEST_F(QtEntryWindow, ClicksWhileItJoinsAreLost) {
    const QPointF middle = joinButton().rect().center();
    notifications.addObserver("ReadJoinParameters", [&](const Text&) {
        QTest::mouseClick(&joinButton(), Qt::LeftButton);
        press(Qt::Key_Return);
        for (const auto kind : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease})
            QCoreApplication::postEvent(&joinButton(),
                                        new QMouseEvent(kind, middle, joinButton().mapToGlobal(middle),
                                                        Qt::LeftButton, Qt::LeftButton, Qt::NoModifier));
    });
    QTest::mouseClick(&joinButton(), Qt::LeftButton);
    QApplication::processEvents();
    EXPECT_EQ(joins, 1);
    QTest::mouseClick(&joinButton(), Qt::LeftButton);
    EXPECT_EQ(joins, 2);
}

class Leaving : public QtEntryWindow, public testing::WithParamInterface<void (*)(QWidget&)> {};

TEST_P(Leaving, IsAlwaysPossibleAndAllThatTheUserCanDoWhileTheLogicWaits) {
    QtWaiting waiting(queue);
    std::promise<void> end;
    notifications.addObserver("ReadJoinParameters", [&](const Text&) {
        QTimer::singleShot(0, &shown(), [&] {
            type("7");
            for (const Qt::Key key : {Qt::Key_7, Qt::Key_Space, Qt::Key_Return, Qt::Key_Tab})
                press(key);
            EXPECT_EQ(focused(), "keyInputTextfield");
            QTest::mouseClick(&joinButton(), Qt::LeftButton);
            EXPECT_EQ(ends(), 0);
            GetParam()(shown());
            end.set_value();
        });
        waiting.during([future = end.get_future().share()] { future.wait(); });
    });
    press(Qt::Key_Return);
    EXPECT_EQ(joins, 1);
    EXPECT_EQ(ends(), 1);
    EXPECT_FALSE(shown().isVisible());
    EXPECT_EQ(keyField().text(), "");
    entry.showWindow();
    GetParam()(shown());
    EXPECT_EQ(ends(), 2);
    EXPECT_FALSE(shown().isVisible());
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

class QtErrorWindow : public RealWindows {
protected:
    QtErrorWindow() {
        services().strings = &messages;
        error.showWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window("ErrorWindow")));
    }

    struct Messages final : Strings {
        std::string localized(const std::string& key) override {
            if (key == "ERROR_MESSAGE")
                return "<img src=x> & <b>ü</b>\n<a href='file:///'>here</a> or here: 5%%";
            return key == "CLICK_HERE" ? "here" : key;
        }
    } messages;
    ErrorWindow error;
};

TEST_F(QtErrorWindow, NothingOfItsMessageButTheLinkHasAMeaning) {
    const QLabel& label = *window("ErrorWindow").findChild<QLabel*>("errorText");
    QTextDocument document;
    document.setHtml(label.text());
    EXPECT_EQ(label.font().toString(), QFont("Helvetica", 14).toString());
    EXPECT_EQ(document.toPlainText(), "<img src=x> & <b>ü</b>\n<a href='file:///'>here</a> or here: 5%");
    QString linked;
    for (auto piece = document.begin().begin(); !piece.atEnd(); ++piece)
        if (piece.fragment().charFormat().isAnchor()) {
            linked += piece.fragment().text();
            EXPECT_EQ(piece.fragment().position(), document.toPlainText().indexOf("here"));
            EXPECT_TRUE(piece.fragment().charFormat().anchorHref().startsWith("https://"));
            EXPECT_EQ(piece.fragment().charFormat().foreground().color(), QColor(Qt::blue));
        }
    EXPECT_EQ(linked, "here");
}

class Browser : public QObject {
    Q_OBJECT
public:
    Browser() { QDesktopServices::setUrlHandler("https", this, "open"); }
    ~Browser() override { QDesktopServices::unsetUrlHandler("https"); }
    QList<QUrl> opened;
public Q_SLOTS:
    void open(const QUrl& url) { opened.append(url); }
};

TEST_F(QtErrorWindow, TheKeyboardOpensItsLinkAndEndsIt) {
    const Browser browser;
    EXPECT_EQ(focused(), "ok");
    for (int time = 1; time <= 2; ++time) {
        press(Qt::Key_Tab);
        EXPECT_EQ(focused(), "errorText");
        press(Qt::Key_Return);
        EXPECT_EQ(browser.opened.size(), time);
        EXPECT_EQ(ends(), 0);
        press(Qt::Key_Tab);
        EXPECT_EQ(focused(), "ok");
    }
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape, Qt::Key_Space})
        press(key);
    EXPECT_EQ(ends(), 3);
}

/// What assistive technology finds: role, name and description of all that is seen and has a name, with a star
/// at the focus.
test::Journal found(QAccessibleInterface& item) {
    if (item.state().invisible)
        return {};
    test::Journal lines;
    if (const QString name = item.text(QAccessible::Name); !name.isEmpty()) {
        const QString line = item.state().focused ? "* %1: %2 %3" : "%1: %2 %3";
        const auto* const role = QMetaEnum::fromType<QAccessible::Role>().valueToKey(item.role());
        lines = {line.arg(role, name, item.text(QAccessible::Description)).trimmed().toStdString()};
    }
    for (int i = 0; i < item.childCount(); ++i)
        std::ranges::copy(found(*item.child(i)), std::back_inserter(lines));
    return lines;
}

TEST_F(RealWindows, AssistiveTechnologyFindsWhatIsSeen) {
    const auto expectFound = [](const char* name, const test::Journal& expected) {
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window(name)));
        EXPECT_EQ(found(*QAccessible::queryAccessibleInterface(&window(name))), expected) << name;
    };
    ErrorWindow error;
    error.showWindow();
    expectFound("ErrorWindow", {"Dialog: [JOIN]", "StaticText: [ERROR_MESSAGE]", "* Button: [OK]"});
    error.orderOut();
    progress.showWindow();
    expectFound("TavoJoinWindow",
                {"Dialog: [JOIN]", "StaticText: [JOIN_PROGRESS]", "ProgressBar: JOIN_PROGRESS"});
    progress.showProblem();
    expectFound("TavoJoinWindow", {"Dialog: [JOIN]", "* StaticText: [PROBLEM_OCCURED]"});
    TavoJoinMainWindowHandler entry(progress);
    entry.showWindow();
    press(Qt::Key_Return);
    expectFound("TavoJoinMainWindow",
                {"Dialog: [JOIN]", "StaticText: [SESSION_KEY]", "* EditableText: [SESSION_KEY] [ENTER_KEY]",
                 "StaticText: [EMAIL_ADDRESS]", "EditableText: [EMAIL_ADDRESS] [ENTER_EMAIL]",
                 "Button: [JOIN]", "Button: [CANCEL]"});
}

/// Texts that are twice as long as those of the table.
struct DoubledStrings final : Strings {
    std::string localized(const std::string& key) override {
        const std::string text = table.localized(key);
        return text + " " + text;
    }
    QtStrings table;
};

bool isWhole(const QWidget& widget) {
    if (const auto* edit = dynamic_cast<const QLineEdit*>(&widget)) {
        constexpr int frame = 8;
        return edit->fontMetrics().horizontalAdvance(edit->placeholderText()) + frame <= edit->width();
    }
    if (widget.hasHeightForWidth())
        return widget.heightForWidth(widget.width()) <= widget.height();
    return widget.sizeHint().width() <= widget.width() && widget.sizeHint().height() <= widget.height();
}

TEST_F(RealWindows, NothingIsCutOffOrAstrayInAnyLanguageAndAtTwiceTheLength) {
    for (const char* language : {"en", "de", "fr", "es", "ja", "ar"}) {
        QLocale::setDefault(QLocale(language));
        DoubledStrings doubled;
        services().strings = &doubled;
        ErrorWindow error;
        TavoJoinWindowHandler information;
        TavoJoinMainWindowHandler entry(information);
        error.showWindow();
        information.showWindow();
        information.showProblem();
        entry.showWindow();
        entry.joinButtonAction();
        entry.showWindowAskingForValidKey();
        QApplication::processEvents();
        for (const char* name : {"ErrorWindow", "TavoJoinWindow", "TavoJoinMainWindow"})
            for (QWidget* widget : window(name).findChildren<QWidget*>()) {
                if (!dynamic_cast<QLineEdit*>(widget) && !dynamic_cast<QPushButton*>(widget) &&
                    !dynamic_cast<QLabel*>(widget))
                    continue;
                const std::string who = widget->objectName().toStdString() + " in " + language;
                EXPECT_TRUE(isWhole(*widget)) << who;
                const QString text = QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
                EXPECT_FALSE(text.isEmpty() || text.contains('_')) << who << " has no text but its key";
                if (const auto* const edit = dynamic_cast<QLineEdit*>(widget)) {
                    EXPECT_TRUE(edit->alignment() & Qt::AlignAbsolute)
                        << "cursor and prompt on the same side";
                    EXPECT_EQ(bool(edit->alignment() & Qt::AlignRight), language == std::string("ar"));
                }
            }
    }
    QLocale::setDefault(QLocale::c());
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

} // namespace
} // namespace join::platform

#include "QtEntryWindowTest.moc"
