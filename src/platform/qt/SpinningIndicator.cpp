#include "platform/qt/SpinningIndicator.h"

#include <QPaintEvent>
#include <QPainter>

#include <algorithm>

namespace join::platform {

namespace {
constexpr int spokes = 12;
constexpr int stepMilliseconds = 90; // a turn in about a second; quicker looks no better and costs more
} // namespace

SpinningIndicator::SpinningIndicator(QWidget* parent) : QWidget(parent) {
    setAccessibleName(qtTrId("JOIN_PROGRESS"));
    hide();
}

void SpinningIndicator::startAnimation() { show(); }

void SpinningIndicator::stopAnimation() { hide(); }

QSize SpinningIndicator::sizeHint() const { return {32, 32}; }

void SpinningIndicator::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(rect()).center());
    const double radius = std::min(width(), height()) / 2.0;
    QColor color = palette().color(QPalette::WindowText);
    for (int spoke = 0; spoke < spokes; ++spoke) {
        const int age = (step_ - spoke + spokes) % spokes;
        color.setAlphaF(std::max(0.15F, 1.0F - static_cast<float>(age) / spokes));
        painter.save();
        painter.rotate(spoke * 360.0 / spokes);
        painter.setPen(QPen(color, radius * 0.18, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -radius * 0.5), QPointF(0, -radius * 0.88));
        painter.restore();
    }
}

void SpinningIndicator::timerEvent(QTimerEvent* /*event*/) {
    step_ = (step_ + 1) % spokes;
    update();
}

void SpinningIndicator::showEvent(QShowEvent* /*event*/) { timer_.start(stepMilliseconds, this); }

void SpinningIndicator::hideEvent(QHideEvent* /*event*/) { timer_.stop(); }

} // namespace join::platform
