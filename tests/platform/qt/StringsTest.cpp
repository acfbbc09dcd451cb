#include "platform/qt/QtStrings.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QGuiApplication>
#include <QLocale>

namespace join::platform {
namespace {

const QStringList ids =
    QString("JOIN CANCEL SESSION_KEY ENTER_KEY EMAIL_ADDRESS ENTER_EMAIL ENTER_VALID_KEY JOIN_PROGRESS "
            "INSTALL_PROGRESS DOWNLOADED PROBLEM_OCCURED LINK_NOT_ALLOWED OK ERROR_MESSAGE CLICK_HERE")
        .split(' ');

TEST(QtStrings, AreAWholeTableInTheUsersLanguageOrInEnglish) {
    const std::tuple<const char*, const char*, Qt::LayoutDirection> cases[]{
        {"en_GB", "Cancel", Qt::LeftToRight},    {"ar_EG", "إلغاء", Qt::RightToLeft},
        {"de_AT", "Abbrechen", Qt::LeftToRight}, {"fr", "Annuler", Qt::LeftToRight},
        {"es_MX", "Cancelar", Qt::LeftToRight},  {"ja_JP", "キャンセル", Qt::LeftToRight},
        {"pl_PL", "Cancel", Qt::LeftToRight},    {"he_IL", "Cancel", Qt::LeftToRight},
        {"C", "Cancel", Qt::LeftToRight}, // as before
    };
    for (const auto& [locale, cancel, direction] : cases) {
        SCOPED_TRACE(locale);
        QLocale::setDefault(QLocale(locale));
        QtStrings strings;
        const auto text = [&](const QString& id) {
            return QString::fromStdString(strings.localized(id.toStdString()));
        };
        EXPECT_EQ(text("CANCEL"), cancel);
        EXPECT_EQ(QGuiApplication::layoutDirection(), direction);
        EXPECT_EQ(text("NO_SUCH_KEY"), "NO_SUCH_KEY");
        for (const QString& id : ids) // "OK" is its own text in many languages
            EXPECT_FALSE(text(id).trimmed().isEmpty() || (text(id) == id && id != "OK")) << id.toStdString();
        EXPECT_TRUE(text("DOWNLOADED").contains("%1") && text("DOWNLOADED").contains("%2"));
        EXPECT_EQ(text("ERROR_MESSAGE").count(text("CLICK_HERE")), 1) << "is made a link";
        EXPECT_FALSE(text("ERROR_MESSAGE").remove("%%").contains('%')) << "a percent sign stands doubled";
    }
    EXPECT_EQ(QDir(":/strings").entryList(QDir::Files).size(), 6);
}

} // namespace
} // namespace join::platform
