#pragma once

#include "platform/Windows.h"

#include <QTranslator>

namespace join::platform {

/// The strings tables: id-based Qt translations, compiled in. The user's languages are tried in order, then
/// English. Also sets the application's layout direction, so create it before the first window. Needs the
/// QApplication; main thread only.
class QtStrings final : public Strings {
public:
    QtStrings();
    std::string localized(const std::string& key) override;

private:
    QTranslator translator_;
};

} // namespace join::platform
