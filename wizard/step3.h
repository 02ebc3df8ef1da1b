#pragma once

#include "wizard/step.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRect;

namespace tessarine {

/// "Step 3 : Save Settings": where, under which name and in which format the results are saved.
class Frame_step3 : public Step {
    Q_OBJECT

  public:
    Frame_step3(const StepContext& context, QWidget* parent);

    void layOut() override;

  private:
    void addControls();
    void connectControls();
    void showValues();
    void browse();
    /// Writes the two long texts in a font of this scale.
    void writeTexts(double scale);
    /// Height that the right column needs at a width, without the banner.
    int rightColumnHeight(int width) const;
    void layOutRightColumn(QRect column);

    StepContext context_;
    QLabel* Label3_;
    QLineEdit* txtDestination_;
    QPushButton* cmdBrowse_;
    QLabel* Label9_;
    QPlainTextEdit* Text1_;
    QLabel* Label2_;
    QComboBox* cboFormat_;
    QLabel* Label1_;
    QLineEdit* txtName_;
    QLabel* Label8_;
    QCheckBox* chkOverwrite_;
    QWidget* iB_;
};

}  // namespace tessarine
