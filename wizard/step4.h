#pragma once

#include <string>

#include "wizard/step.h"

class QCheckBox;
class QGroupBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace tessarine {

/// "Step 4 : Get Ready": starts and stops the run, and shows its overview.
class Frame_step4 : public Step {
    Q_OBJECT

  public:
    Frame_step4(const StepContext& context, QWidget* parent);

    void layOut() override;

  private:
    void addControls();
    void connectControls();
    void showOverview();
    /// A run, or one inside another.
    void runAll();
    void runHasBegun();
    void outermostRunHasEnded();
    void layOutCommands();

    StepContext context_;
    QLabel* Label4_;
    QPlainTextEdit* RTF_;
    QGroupBox* Frame_command_;
    QPushButton* CmdBatchAll_;
    QPushButton* CmdStop_;
    QCheckBox* chkShowDestination_;
    std::string shownHead_;   ///< what RTF shows begins with this
    size_t shownLength_ = 0;  ///< bytes of the overview that RTF shows
    int runsUnderWay_ = 0;
    bool awake_ = false;  ///< the system is kept from sleeping
};

}  // namespace tessarine
