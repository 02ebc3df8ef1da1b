#pragma once

#include <array>

#include <QIcon>
#include <QLabel>
#include <QProgressBar>
#include <QStatusBar>

#include "batch/batch.h"
#include "wizard/frame_layout.h"

namespace tessarine {

/// A panel of the status bar: an icon, if there is one, and a text, which loses its middle where
/// it does not fit. The whole text is then told by the tooltip.
class StatusPanelLabel : public QLabel {
    Q_OBJECT

  public:
    explicit StatusPanelLabel(QWidget* parent);

    void show(const QString& text, const QIcon& icon);
    using QLabel::show;
    /// The width in which nothing is cut off.
    int32_t wantedWidth() const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    int32_t textLeft() const;
    QString shownText() const;
    void updateToolTip();

    QIcon icon_;
};

/// SB: five panels side by side, and pb over the second of them.
class StatusBar : public QStatusBar {
    Q_OBJECT

  public:
    explicit StatusBar(QWidget* parent);

    void showPanel(size_t index, const StatusPanel& panel);
    void showProgress(const ProgressBar& progress);
    /// Height in pixels that the bar wants.
    int32_t wantedHeight() const;

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void layOut();

    std::array<StatusPanelLabel*, panelCount> panels_{};
    QProgressBar* pb_;
};

}  // namespace tessarine
