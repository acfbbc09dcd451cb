#include "platform/qt/QtStrings.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QLocale>
#include <QtGlobal>

namespace join::platform {

QtStrings::QtStrings() {
    if (translator_.load(QLocale(), "join", "_", ":/strings") || translator_.load(":/strings/join_en.qm"))
        QCoreApplication::installTranslator(&translator_);
    QGuiApplication::setLayoutDirection(QLocale(translator_.language()).textDirection());
}

std::string QtStrings::localized(const std::string& key) { return qtTrId(key.c_str()).toStdString(); }

} // namespace join::platform
