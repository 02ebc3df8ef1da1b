#include "wizard/step4.h"

#include <algorithm>
#include <string_view>

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>

#include "wizard/icons.h"

namespace tessarine {

namespace {

constexpr int margin = 10;
constexpr int gap = 4;
constexpr int largeGap = 10;

/// Bytes of an overview by which it is told from another.
constexpr size_t headLength = 8192;

}  // namespace

Frame_step4::Frame_step4(const StepContext& context, QWidget* parent)
    : Step(parent), context_(context) {
    setObjectName("Frame_step4");
    addControls();
    connectControls();
    showOverview();
}

void Frame_step4::addControls() {
    Label4_ = new QLabel("Fuctions Processing Overview", this);
    Label4_->setObjectName("Label4");
    RTF_ = new QPlainTextEdit(this);
    RTF_->setObjectName("RTF");
    RTF_->setReadOnly(true);
    RTF_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    RTF_->setTabChangesFocus(true);
    RTF_->setUndoRedoEnabled(false);
    RTF_->setAccessibleName(Label4_->text());

    Frame_command_ = new QGroupBox("Command Center", this);
    Frame_command_->setObjectName("Frame_command");
    CmdBatchAll_ = new QPushButton(programIcon("run"), "&Batch All >>", Frame_command_);
    CmdBatchAll_->setObjectName("CmdBatchAll");
    CmdStop_ = new QPushButton(programIcon("stop"), "&Stop", Frame_command_);
    CmdStop_->setObjectName("CmdStop");
    chkShowDestination_ = new QCheckBox("Show &destination folder when Finished", Frame_command_);
    chkShowDestination_->setObjectName("chkShowDestination");
}

void Frame_step4::connectControls() {
    cBatch& batch = context_.batch;
    connect(CmdBatchAll_, &QPushButton::clicked, this, &Frame_step4::runAll);
    connect(CmdStop_, &QPushButton::clicked, this, [&batch] { batch.CmdStop(); });
    connect(chkShowDestination_, &QCheckBox::toggled, this,
            [&batch](bool ticked) { batch.chkShowDestination = ticked ? 1 : 0; });

    context_.repaints.on("chkShowDestination", [this] {
        const QSignalBlocker blocked(chkShowDestination_);
        chkShowDestination_->setChecked(context_.batch.chkShowDestination != 0);
    });
    context_.repaints.on("RTF", [this] { showOverview(); });
    context_.repaints.on("pb", [this] { runHasBegun(); });
}

void Frame_step4::showOverview() {
    // A run writes at the end only, so that only what is new is looked at; another run's overview
    // begins anew.
    const std::string& overview = context_.batch.RTF;
    if (overview.size() < shownLength_ || !overview.starts_with(shownHead_)) {
        RTF_->clear();
        shownHead_.clear();
        shownLength_ = 0;
    }
    // The caret stands at the end, and nothing is selected.
    QTextCursor caret(RTF_->document());
    caret.movePosition(QTextCursor::End);
    caret.insertText(QString::fromStdString(overview.substr(shownLength_)));
    RTF_->setTextCursor(caret);
    RTF_->ensureCursorVisible();
    shownLength_ = overview.size();
    if (shownHead_.size() < headLength) shownHead_ = overview.substr(0, headLength);
}

void Frame_step4::runAll() {
    ++runsUnderWay_;
    context_.batch.CmdBatchAll();
    --runsUnderWay_;
    if (runsUnderWay_ == 0) outermostRunHasEnded();
}

void Frame_step4::runHasBegun() {
    if (runsUnderWay_ == 0 || awake_ || !context_.batch.pb.visible) return;
    awake_ = true;
    context_.desktop.keepAwake(true);
}

void Frame_step4::outermostRunHasEnded() {
    // What was refused before it began is no run.
    if (!awake_) return;
    awake_ = false;
    context_.desktop.keepAwake(false);
    const bool inFront = QApplication::activeWindow() != nullptr;
    if (inFront || !window()->isVisible()) return;
    const auto count = static_cast<int>(context_.batch.report.entries().size());
    context_.desktop.notify(window()->windowTitle(), count == 1
                                                         ? tr("1 picture processed")
                                                         : tr("%1 pictures processed").arg(count));
}

void Frame_step4::layOut() {
    const int inner = width() - 2 * margin;
    layOutCommands();
    const int commands = Frame_command_->height();
    Frame_command_->move(margin, height() - margin - commands);

    Label4_->setGeometry(margin, margin, inner, Label4_->sizeHint().height());
    const int y = Label4_->geometry().bottom() + 1 + gap;
    RTF_->setGeometry(margin, y, inner, Frame_command_->y() - largeGap - y);
}

void Frame_step4::layOutCommands() {
    // The title and the edges of the group are the style's.
    const QMargins edges = Frame_command_->contentsMargins();
    constexpr int inset = 7;
    const int outer = width() - 2 * margin;
    const int inner = outer - 2 * margin;
    const int top = edges.top() + inset;
    const int bottom = edges.bottom() + inset;
    const int buttonHeight = CmdBatchAll_->sizeHint().height() + 4;
    const int buttonWidth =
        std::max({CmdBatchAll_->sizeHint().width() + 16, CmdStop_->sizeHint().width(), 110});
    CmdBatchAll_->setGeometry(margin, top, buttonWidth, buttonHeight);
    CmdStop_->setGeometry(margin + buttonWidth + largeGap, top, buttonWidth, buttonHeight);

    const QSize tick = chkShowDestination_->sizeHint();
    const int beside = 2 * (buttonWidth + largeGap);
    if (beside + tick.width() <= inner) {
        chkShowDestination_->setGeometry(margin + beside, top, tick.width(), buttonHeight);
        Frame_command_->resize(outer, top + buttonHeight + bottom);
    } else {
        const int below = top + buttonHeight + gap;
        chkShowDestination_->setGeometry(margin, below, inner, tick.height());
        Frame_command_->resize(outer, below + tick.height() + bottom);
    }
}

}  // namespace tessarine
