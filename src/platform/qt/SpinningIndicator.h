#pragma once

#include "platform/Windows.h"

#include <QBasicTimer>
#include <QWidget>

#include <optional>

namespace join::platform {

/// A ring of spokes that turns while work is in progress, or a ring that fills as it goes. Costs nothing while
/// it is not on the screen.
class SpinningIndicator final : public QWidget, public ProgressIndicator {
public:
    explicit SpinningIndicator(QWidget* parent = nullptr);

    void startAnimation() override;
    void stopAnimation() override;
    void setValue(const std::optional<ProgressValue>& value) override;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void turnOrStand();
    void paintSpokes(QPainter& painter, double radius) const;
    void paintRing(QPainter& painter, double radius) const;

    QBasicTimer timer_;
    std::optional<int> filled_; ///< of the parts of the ring
    int step_ = 0;
};

} // namespace join::platform
