#include "platform/qt/QtStrings.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QGuiApplication>
#include <QLocale>
#include <QTranslator>

namespace join::platform {
namespace {

const QByteArray ids =
    "JOIN CANCEL SESSION_KEY ENTER_KEY EMAIL_ADDRESS ENTER_EMAIL ENTER_VALID_KEY JOIN_PROGRESS "
    "INSTALL_PROGRESS DOWNLOADED PROBLEM_OCCURED LINK_NOT_ALLOWED OK ERROR_MESSAGE CLICK_HERE";

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

TEST(StringsTables, ThereIsAWholeOneForEachKnownLanguageAndNoOther) {
    QStringList files;
    for (const char* language : {"ar", "de", "en", "es", "fr", "ja"}) {
        SCOPED_TRACE(language);
        files << QString("join_") + language + ".qm";
        const Table table(language);
        for (const QByteArray& id : ids.split(' ')) {
            const QString text = table.text(id);
            // "OK" is its own text in many languages.
            EXPECT_FALSE(text.trimmed().isEmpty() || (text == id && id != "OK")) << id.toStdString();
        }
        EXPECT_TRUE(table.text("DOWNLOADED").contains("%1") && table.text("DOWNLOADED").contains("%2"));
        QString message = table.text("ERROR_MESSAGE");
        EXPECT_EQ(message.count(table.text("CLICK_HERE")), 1) << "is made a link";
        EXPECT_FALSE(message.remove("%%").contains('%')) << "a percent sign stands doubled";
    }
    EXPECT_EQ(QDir(":/strings").entryList(QDir::Files, QDir::Name), files);
}

TEST(QtStrings, TheUsersLanguageDecidesTextsAndDirectionAndEnglishStandsIn) {
    const std::tuple<const char*, const char*, Qt::LayoutDirection> cases[]{
        {"en_GB", "en", Qt::LeftToRight}, {"ar_EG", "ar", Qt::RightToLeft},
        {"de_AT", "de", Qt::LeftToRight}, {"fr", "fr", Qt::LeftToRight},
        {"es_MX", "es", Qt::LeftToRight}, {"ja_JP", "ja", Qt::LeftToRight},
        {"pl_PL", "en", Qt::LeftToRight}, {"he_IL", "en", Qt::LeftToRight},
        {"C", "en", Qt::LeftToRight}, // as before
    };
    for (const auto& [locale, language, direction] : cases) {
        SCOPED_TRACE(locale);
        QLocale::setDefault(QLocale(locale));
        QtStrings strings;
        EXPECT_EQ(strings.localized("CANCEL"), Table(language).text("CANCEL").toStdString());
        EXPECT_EQ(QGuiApplication::layoutDirection(), direction);
        EXPECT_EQ(strings.localized("NO_SUCH_KEY"), "NO_SUCH_KEY");
    }
}

} // namespace
} // namespace join::platform
