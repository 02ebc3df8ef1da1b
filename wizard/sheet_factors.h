#pragma once

#include <array>

#include <QWidget>

#include "wizard/sheet_panels.h"

class QCheckBox;
class QLabel;

namespace tessarine {

class Swatch;

/// frFactors: up to three sliders, each with its label, value field and arrows, stacked by count.
class FactorsPanel : public QWidget {
  public:
    FactorsPanel(const StepContext& context, QWidget* parent);

  protected:
    void resizeEvent(QResizeEvent*) override { stack(); }

  private:
    QWidget* makeRow(int index);
    void stack();

    StepContext context_;
    std::array<QWidget*, 3> rows_{};
};

/// frOption: the one yes/no input, a box and its label.
class OptionPanel : public QWidget {
  public:
    OptionPanel(const StepContext& context, QWidget* parent);

    /// As wide as the label, the box and 10 pixels.
    QSize sizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent*) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

  private:
    QCheckBox* chkOption_;
    QLabel* lblOption_;
};

/// frColor: the two swatches.
class ColourPanel : public QWidget {
  public:
    ColourPanel(const StepContext& context, const PickColour& pickColour, QWidget* parent);

    QSize sizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent*) override;

  private:
    std::array<Swatch*, 2> Col_{};
};

}  // namespace tessarine
