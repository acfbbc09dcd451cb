#pragma once

#include <QBasicTimer>
#include <QWidget>

namespace join::platform {

/// A ring of spokes that turns while work is in progress. Costs nothing while it is not on the screen.
class SpinningIndicator final : public QWidget {
public:
    explicit SpinningIndicator(QWidget* parent = nullptr);

    void setAnimated(bool animated);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void followState();

    QBasicTimer timer_;
    bool animated_ = false;
    int step_ = 0;
};

} // namespace join::platform
