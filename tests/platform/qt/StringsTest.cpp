#include "platform/qt/QtStrings.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QGuiApplication>
#include <QLocale>
#include <QTranslator>

namespace join::platform {
namespace {

const QStringList languages{"ar", "de", "en", "es", "fr", "ja"};

constexpr const char* ids[]{
    "JOIN",          "CANCEL",          "ENTER_KEY", "ENTER_EMAIL",   "ENTER_VALID_KEY",
    "JOIN_PROGRESS", "PROBLEM_OCCURED", "OK",        "ERROR_MESSAGE", "CLICK_HERE"};

/// One compiled table, without fallbacks.
class Table {
public:
    explicit Table(const QString& language) {
        EXPECT_TRUE(translator_.load(":/strings/join_" + language + ".qm"));
        EXPECT_EQ(translator_.language(), language) << "the table says it is another language's";
    }

    QString text(const char* id) const { return translator_.translate(nullptr, id); }

private:
    QTranslator translator_;
};

TEST(StringsTables, ThereIsOneForEachKnownLanguageAndNoOther) {
    QStringList files;
    for (const QString& language : languages)
        files << "join_" + language + ".qm";
    EXPECT_EQ(QDir(":/strings").entryList(QDir::Files, QDir::Name), files);
}

TEST(StringsTables, EachHasAllTexts) {
    for (const QString& language : languages) {
        const Table table(language);
        for (const char* id : ids) {
            SCOPED_TRACE(language.toStdString() + " " + id);
            const QString text = table.text(id);
            EXPECT_FALSE(text.trimmed().isEmpty());
            EXPECT_TRUE(text != id || text == "OK"); // the one id that is its own text in many languages
        }
    }
}

TEST(StringsTables, TheErrorMessageHoldsTheTextOfItsLinkOnce) {
    for (const QString& language : languages) {
        SCOPED_TRACE(language.toStdString());
        const Table table(language);
        QString message = table.text("ERROR_MESSAGE");
        EXPECT_EQ(message.count(table.text("CLICK_HERE")), 1);
        EXPECT_FALSE(message.remove("%%").contains('%')) << "a percent sign stands doubled";
    }
}

class QtStringsTest : public testing::Test {
protected:
    ~QtStringsTest() override {
        QLocale::setDefault(locale_);
        QGuiApplication::setLayoutDirection(direction_);
    }

private:
    QLocale locale_;
    Qt::LayoutDirection direction_ = QGuiApplication::layoutDirection();
};

TEST_F(QtStringsTest, TheUsersLanguageDecidesTextsAndDirectionAndEnglishStandsIn) {
    struct Case {
        const char* locale;
        const char* language;
        Qt::LayoutDirection direction;
    };
    constexpr Case cases[]{
        {"en_GB", "en", Qt::LeftToRight}, {"ar_EG", "ar", Qt::RightToLeft}, {"de_AT", "de", Qt::LeftToRight},
        {"fr", "fr", Qt::LeftToRight},    {"es_MX", "es", Qt::LeftToRight}, {"ja_JP", "ja", Qt::LeftToRight},
        {"pl_PL", "en", Qt::LeftToRight}, {"he_IL", "en", Qt::LeftToRight}, {"C", "en", Qt::LeftToRight},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.locale);
        QLocale::setDefault(QLocale(c.locale));
        QtStrings strings;
        EXPECT_EQ(strings.localized("CANCEL"), Table(c.language).text("CANCEL").toStdString());
        EXPECT_EQ(QGuiApplication::layoutDirection(), c.direction);
    }
}

} // namespace
} // namespace join::platform
