#pragma once

#include "platform/Windows.h"

#include <QTranslator>

namespace join::platform {

/// The strings tables, id-based Qt translations that are compiled in. The user's language decides; English
/// where there is no table for it.
class QtStrings final : public Strings {
public:
    QtStrings();
    std::string localized(const std::string& key) override;

private:
    QTranslator translator_;
};

} // namespace join::platform
