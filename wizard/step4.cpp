#include "wizard/step4.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

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
    CmdKeepFailures_ =
        new QPushButton(programIcon("save-list"), "&Keep list of failures...", Frame_command_);
    CmdKeepFailures_->setObjectName("CmdKeepFailures");
    CmdKeepFailures_->setAccessibleName(tr("Keep list of failures"));
    CmdKeepFailures_->setToolTip(
        tr("Save the pictures that failed in the careful run as a picture list"));
    CmdKeepFailures_->setEnabled(false);
    chkShowDestination_ = new QCheckBox("Show &destination folder when Finished", Frame_command_);
    chkShowDestination_->setObjectName("chkShowDestination");
    chkCareful_ = new QCheckBox("&Careful run", Frame_command_);
    chkCareful_->setObjectName("chkCareful");
    chkCareful_->setAccessibleName(tr("Careful run"));
    chkCareful_->setToolTip(
        tr("Process each picture by itself, several at a time,\n"
           "leave out what cannot be read, and tell at the end what failed"));
}

void Frame_step4::connectControls() {
    cBatch& batch = context_.batch;
    connect(CmdBatchAll_, &QPushButton::clicked, this, &Frame_step4::runAll);
    connect(CmdStop_, &QPushButton::clicked, this, [&batch] { batch.CmdStop(); });
    connect(chkShowDestination_, &QCheckBox::toggled, this,
            [&batch](bool ticked) { batch.chkShowDestination = ticked ? 1 : 0; });

    connect(CmdKeepFailures_, &QPushButton::clicked, this, [&batch] { batch.KeepFailures(); });
    connect(chkCareful_, &QCheckBox::toggled, this, [this](bool ticked) {
        context_.batch.chkCareful = ticked ? 1 : 0;
        showWhatCanBePressed();
    });

    context_.repaints.on("chkCareful", [this] {
        const QSignalBlocker blocked(chkCareful_);
        chkCareful_->setChecked(context_.batch.chkCareful != 0);
        showWhatCanBePressed();
    });
    context_.repaints.on("failedPictures", [this] {
        CmdKeepFailures_->setEnabled(!context_.batch.failedPictures.empty());
    });
    context_.repaints.on("chkShowDestination", [this] {
        const QSignalBlocker blocked(chkShowDestination_);
        chkShowDestination_->setChecked(context_.batch.chkShowDestination != 0);
    });
    context_.repaints.on("RTF", [this] { overviewHasChanged(); });
    context_.repaints.on("pb", [this] {
        runHasBegun();
        showWhatCanBePressed();
    });

    overviewTimer_.setSingleShot(true);
    connect(&overviewTimer_, &QTimer::timeout, this, &Frame_step4::showOverview);
}

void Frame_step4::overviewHasChanged() {
    constexpr int milliseconds = 40;
    if (!context_.batch.runsCarefully()) return showOverview();
    if (!overviewTimer_.isActive()) overviewTimer_.start(milliseconds);
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
    showWhatCanBePressed();
}

void Frame_step4::showWhatCanBePressed() {
    const bool may = context_.batch.mayBeginRun();
    if (may == CmdBatchAll_->isEnabled()) return;
    // The keyboard is not to land on "Stop", where the second of two hasty presses would end the
    // run that the first has begun.
    if (!may && window()->focusWidget() == CmdBatchAll_) {
        focusReturns_ = true;
        RTF_->setFocus();
    }
    CmdBatchAll_->setEnabled(may);
    if (may && std::exchange(focusReturns_, false) && window()->focusWidget() == RTF_)
        CmdBatchAll_->setFocus();
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
    const size_t count = context_.batch.report.entries().size();
    const size_t failed = context_.batch.failedPictures.size();
    QString text = count == 1 ? tr("1 picture processed") : tr("%1 pictures processed").arg(count);
    if (failed > 0) text += tr(", %1 failed").arg(failed);
    context_.desktop.notify(window()->windowTitle(), text);
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

    struct Control {
        QWidget* widget;
        QSize size;
    };
    const std::vector<Control> buttons{
        {CmdBatchAll_, {buttonWidth, buttonHeight}},
        {CmdStop_, {buttonWidth, buttonHeight}},
        {CmdKeepFailures_, {CmdKeepFailures_->sizeHint().width() + 16, buttonHeight}}};
    std::vector<Control> ticks{{chkShowDestination_, chkShowDestination_->sizeHint()},
                               {chkCareful_, chkCareful_->sizeHint()}};
    const auto widthOf = [](const std::vector<Control>& controls) {
        return std::accumulate(
            controls.begin(), controls.end(), 0,
            [](int sum, const Control& one) { return sum + one.size.width() + largeGap; });
    };
    QPoint at(margin, top);
    int rowHeight = 0;
    const auto beginRow = [&] {
        at = {margin, at.y() + rowHeight + gap};
        rowHeight = 0;
    };
    const auto place = [&](const std::vector<Control>& controls) {
        for (const auto& [widget, size] : controls) {
            const int taken = std::min(size.width(), inner);
            if (at.x() > margin && at.x() + taken > margin + inner) beginRow();
            widget->setGeometry(at.x(), at.y(), taken, size.height());
            at.rx() += taken + largeGap;
            rowHeight = std::max(rowHeight, size.height());
        }
    };
    place(buttons);
    if (widthOf(buttons) + widthOf(ticks) - largeGap <= inner)
        for (Control& tick : ticks)
            tick.size.setHeight(buttonHeight);
    else
        beginRow();
    place(ticks);
    Frame_command_->resize(outer, at.y() + rowHeight + bottom);
}

}  // namespace tessarine
