#pragma once

#include "wizard/sheet_panels.h"
#include "wizard/step.h"

class QLabel;
class QPushButton;
class QScrollArea;
class QTimer;

namespace tessarine {

class FunctionBasket;
class FunctionTree;
class PictureView;
class Splitter;

/// "Step 2 : Select Functions": the catalogue over the Function Basket, and beside them the two
/// preview pictures with the sheet of the current function.
class Frame_step2 : public Step {
    Q_OBJECT

  public:
    Frame_step2(const StepContext& context, QWidget* parent);

    void layOut() override;

    /// How a swatch asks for its colour.
    PickColour pickColour;

  private:
    void makeCatalogue();
    void makePictures();
    void makeButtons();
    QPushButton* makeButton(const char* name, const QString& text, std::function<void()> press);
    /// The size that the controls need with the pictures at a multiple of their size.
    QSize controlsFor(int scale) const;
    void layOutControls(int scale);
    /// The buttons side by side, in as few rows as the width allows. \return the height taken
    int layOutButtons(int top, int width, bool place) const;

    StepContext context_;
    Splitter* bs21_;
    FunctionTree* Lfunctions_;
    FunctionBasket* pLSelectedFunctions_;
    QScrollArea* controlsArea_;
    QWidget* Frame_controls_;
    std::array<QLabel*, 2> captions_{};
    PictureView* iOri_;
    PictureView* iDst_;
    SheetPanels* sheet_;
    std::vector<QPushButton*> buttons_;
    QTimer* tmrSelect_;
};

}  // namespace tessarine
