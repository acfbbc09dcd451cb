#pragma once

#include <QIcon>
#include <QWidget>

namespace join::platform {

/// The program's icon as part of a window. It is the drawing of resources/icons/com.tavo.join.svg, made here
/// because the toolkit takes milliseconds to find out how to read its first picture.
class AppIcon final : public QWidget {
public:
    using QWidget::QWidget;

    /// Returns the icon in the sizes that desktops show.
    static QIcon inAllSizes();

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace join::platform
