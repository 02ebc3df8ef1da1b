#pragma once

#include <QWidget>

#include "batch/batch.h"
#include "wizard/desktop.h"
#include "wizard/repaints.h"

namespace tessarine {

/// What every step of the wizard is given: the program, the way to the desktop, and the place
/// where it says what it shows anew.
struct StepContext {
    cBatch& batch;
    Desktop& desktop;
    Repaints& repaints;
};

/// The frame of one step. It fills the client area of the tab strip.
class Step : public QWidget {
    Q_OBJECT

  public:
    explicit Step(QWidget* parent) : QWidget(parent) {}

    /// Gives every control its place after a change of size.
    virtual void layOut() = 0;

  protected:
    void resizeEvent(QResizeEvent*) override { layOut(); }
};

}  // namespace tessarine
