#pragma once

#include <string>

#include <QTimer>

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
    /// During a careful run many pictures may end at once: what has come is shown now and then.
    void overviewHasChanged();
    void showWhatCanBePressed();
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
    QCheckBox* chkCareful_;
    QPushButton* CmdKeepFailures_;
    QTimer overviewTimer_;
    std::string shownHead_;   ///< what RTF shows begins with this
    size_t shownLength_ = 0;  ///< bytes of the overview that RTF shows
    int runsUnderWay_ = 0;
    bool focusReturns_ = false;  ///< to CmdBatchAll, once it can be pressed again
    bool awake_ = false;         ///< the system is kept from sleeping
};

}  // namespace tessarine
