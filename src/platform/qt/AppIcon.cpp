#include "platform/qt/AppIcon.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QPolygonF>

#include <algorithm>

namespace join::platform {

namespace {

constexpr double side = 64; // of the drawing

void draw(QPaintDevice& device, int size) {
    QPainter painter(&device);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / side, size / side);

    QLinearGradient tile(0, 0, 0, side);
    tile.setStops({{0, QColor(0x2F, 0x9C, 0x94)}, {1, QColor(0x16, 0x5E, 0x6C)}});
    painter.setPen(Qt::NoPen);
    painter.setBrush(tile);
    painter.drawRoundedRect(QRectF(0, 0, side, side), 14, 14);

    QPainterPath frame({32, 16});
    frame.arcTo(44, 16, 8, 8, 90, -90);
    frame.arcTo(44, 40, 8, 8, 0, -90);
    frame.lineTo(32, 48);
    painter.strokePath(frame, QPen(Qt::white, 8, Qt::SolidLine, Qt::FlatCap));

    const QColor yellow(0xFF, 0xCB, 0x5C);
    painter.setPen(QPen(yellow, 4, Qt::SolidLine, Qt::SquareCap, Qt::RoundJoin));
    painter.setBrush(yellow);
    painter.drawPolygon(
        QPolygonF({{10, 30}, {22, 30}, {22, 21.5}, {37, 32}, {22, 42.5}, {22, 34}, {10, 34}}));
}

} // namespace

QIcon AppIcon::inAllSizes() {
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        draw(pixmap, size);
        icon.addPixmap(pixmap);
    }
    return icon;
}

void AppIcon::paintEvent(QPaintEvent* /*event*/) { draw(*this, std::min(width(), height())); }

} // namespace join::platform
