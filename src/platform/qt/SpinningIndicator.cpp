#include "platform/qt/SpinningIndicator.h"

#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace join::platform {

namespace {
constexpr int spokes = 12;
constexpr int stepMilliseconds = 90; // a turn in about a second; quicker looks no better and costs more
constexpr int parts = 180;           // of the ring: a step is less than a pixel
constexpr double thickness = 0.18;   // in radii
constexpr float faintest = 0.15F;    // opacity
} // namespace

SpinningIndicator::SpinningIndicator(QWidget* parent) : QWidget(parent) {
    setAccessibleName(qtTrId("JOIN_PROGRESS"));
    hide();
}

void SpinningIndicator::startAnimation() { show(); }

void SpinningIndicator::stopAnimation() { hide(); }

void SpinningIndicator::setValue(const std::optional<ProgressValue>& value) {
    const QString text = value ? QString::fromStdString(value->text) : QString();
    if (text != toolTip()) {
        setToolTip(text);
        setAccessibleDescription(text);
    }
    const auto filled = value ? std::optional(static_cast<int>(value->part * parts)) : std::nullopt;
    if (std::exchange(filled_, filled) != filled) {
        turnOrStand();
        update();
    }
}

void SpinningIndicator::turnOrStand() {
    if (filled_ || !isVisible())
        timer_.stop();
    else
        timer_.start(stepMilliseconds, this);
}

QSize SpinningIndicator::sizeHint() const { return {32, 32}; }

void SpinningIndicator::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(rect()).center());
    const double radius = std::min(width(), height()) / 2.0;
    filled_ ? paintRing(painter, radius) : paintSpokes(painter, radius);
}

void SpinningIndicator::paintSpokes(QPainter& painter, double radius) const {
    QColor color = palette().color(QPalette::WindowText);
    for (int spoke = 0; spoke < spokes; ++spoke) {
        const int age = (step_ - spoke + spokes) % spokes;
        color.setAlphaF(std::max(faintest, 1.0F - static_cast<float>(age) / spokes));
        painter.save();
        painter.rotate(spoke * 360.0 / spokes);
        painter.setPen(QPen(color, radius * thickness, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -radius * 0.5), QPointF(0, -radius * 0.88));
        painter.restore();
    }
}

void SpinningIndicator::paintRing(QPainter& painter, double radius) const {
    const double middle = radius * 0.8;
    const QRectF ring(-middle, -middle, 2 * middle, 2 * middle);
    QColor color = palette().color(QPalette::WindowText);
    color.setAlphaF(faintest);
    painter.setPen(QPen(color, radius * thickness));
    painter.drawEllipse(ring);
    color.setAlphaF(1);
    painter.setPen(QPen(color, radius * thickness, Qt::SolidLine, Qt::FlatCap));
    constexpr int degree = 16; // the toolkit counts in sixteenths, and against the clock
    painter.drawArc(ring, 90 * degree, -*filled_ * 360 * degree / parts);
}

void SpinningIndicator::timerEvent(QTimerEvent* /*event*/) {
    step_ = (step_ + 1) % spokes;
    update();
}

void SpinningIndicator::showEvent(QShowEvent* /*event*/) { turnOrStand(); }

void SpinningIndicator::hideEvent(QHideEvent* /*event*/) { timer_.stop(); }

} // namespace join::platform
