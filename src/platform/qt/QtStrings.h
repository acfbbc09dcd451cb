#pragma once

#include "platform/Windows.h"

#include <QTranslator>

namespace join::platform {

/// The strings tables, id-based Qt translations that are compiled in. The user's languages decide, in their
/// order; English where there is no table for any. The application is laid out in the table's direction, so
/// this comes before the first window. Needs the QApplication; main thread only.
class QtStrings final : public Strings {
public:
    QtStrings();
    std::string localized(const std::string& key) override;

private:
    QTranslator translator_;
};

} // namespace join::platform
