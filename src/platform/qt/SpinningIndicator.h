#pragma once

#include "platform/Windows.h"

#include <QBasicTimer>
#include <QWidget>

namespace join::platform {

/// A ring of spokes that turns while work is in progress. Costs nothing while it is not on the screen.
class SpinningIndicator final : public QWidget, public ProgressIndicator {
public:
    explicit SpinningIndicator(QWidget* parent = nullptr);

    void startAnimation() override;
    void stopAnimation() override;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QBasicTimer timer_;
    int step_ = 0;
};

} // namespace join::platform
