#pragma once

#include <functional>
#include <string_view>

#include <QLabel>
#include <QWidget>

#include "wizard/step.h"

class QCheckBox;

namespace tessarine {

class FactorsPanel;
class ColourPanel;
class OptionPanel;

/// Asks a person for a colour, 0x00BBGGRR. \return false where none was chosen
using PickColour = std::function<bool(int32_t in, int32_t& out)>;

/// Shows a control now, and whenever the logic says that it has changed.
void showAlways(const StepContext& context, std::string_view control, std::function<void()> show);

/// A tick box of the sheet that shows a member of 0 or 1.
/// \param change  called when a person ticks or clears the box
QCheckBox* makeTick(const StepContext& context, const char* name, const QString& text,
                    const int16_t& member, std::function<void(int16_t)> change, QWidget* parent);

/// The parameter sheet: the line with the current function, and below it, in one place, the panels
/// of which those of the function are visible.
class SheetPanels : public QWidget {
  public:
    /// Room for a row of controls in a panel, in pixels.
    static constexpr int rowHeight = 32;
    /// The line with the header; panels other than frFactors begin below it.
    static constexpr int headerHeight = 24;
    static constexpr int sheetHeight = headerHeight + 3 * rowHeight;
    static constexpr int leastWidth = 410;
    static constexpr int greatestWidth = 560;

    SheetPanels(const StepContext& context, const PickColour& pickColour, QWidget* parent);

  protected:
    void resizeEvent(QResizeEvent*) override { layOut(); }

  private:
    void layOut();

    QLabel* caption_;
    QLabel* CLab_;
    FactorsPanel* frFactors_;
    OptionPanel* frOption_;
    ColourPanel* frColor_;
    std::vector<QWidget*> specialPanels_;
};

// The special panels, each shown by the function of the same panel.
QWidget* makeBanksPanel(const StepContext& context, QWidget* parent);
QWidget* makeGlassPanel(const StepContext& context, QWidget* parent);
QWidget* makeCurtainPanel(const StepContext& context, QWidget* parent);
QWidget* makeResizePanel(const StepContext& context, QWidget* parent);
QWidget* makeRotatePanel(const StepContext& context, QWidget* parent);

}  // namespace tessarine
