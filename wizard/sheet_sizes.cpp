#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "batch/functions.h"
#include "batch/sheet_controls.h"
#include "wizard/sheet_fields.h"
#include "wizard/sheet_panels.h"

// The special panels of the functions that change the picture's size: FrResize and FrRotate.

namespace tessarine {

namespace {

/// A field for a side of the picture: digits only, selected whole when it gains the focus.
DigitsField* makeSide(const StepContext& context, const char* name, const std::string& member,
                      std::function<void(const std::string&)> change, QWidget* panel) {
    auto* field = new DigitsField(panel, DigitsField::OnFocus::selectAll);
    field->setObjectName(name);
    field->setFixedWidth(field->fontMetrics().horizontalAdvance("0000000") + 16);
    QObject::connect(
        field, &QLineEdit::textEdited, panel,
        [change = std::move(change)](const QString& text) { change(text.toStdString()); });
    showAlways(context, name, [field, &member] { field->showText(member); });
    return field;
}

}  // namespace

QWidget* makeResizePanel(const StepContext& context, QWidget* parent) {
    cBatch& batch = context.batch;
    auto* panel = new QWidget(parent);
    panel->setObjectName("FrResize");

    auto* width = new QLabel("Width", panel);
    DigitsField* txtW = makeSide(
        context, "txtW", batch.txtW, [&batch](const std::string& text) { batch.ChangeWidth(text); },
        panel);
    txtW->setAccessibleName(width->text());
    auto* height = new QLabel("Height", panel);
    DigitsField* txtH = makeSide(
        context, "txtH", batch.txtH,
        [&batch](const std::string& text) { batch.ChangeHeight(text); }, panel);
    txtH->setAccessibleName(height->text());
    showAlways(context, "txtH", [txtH, &batch] { txtH->setVisible(batch.txtHVisible); });
    auto* txtHH = new QLabel("will be adjusted at runtime", panel);
    txtHH->setObjectName("txtHH");
    showAlways(context, "txtHH", [txtHH, &batch] { txtHH->setVisible(batch.txtHHVisible); });
    QCheckBox* keep = makeTick(
        context, "chkKeepProportions", "&Keep proportions", batch.chkKeepProportions,
        [&batch](int16_t ticked) { batch.ChangeKeepProportions(ticked); }, panel);
    QCheckBox* smooth = makeTick(
        context, "chkInterpolate", "&Anti-Alias", batch.chkInterpolate,
        [&batch](int16_t ticked) { batch.ChangeInterpolate(ticked); }, panel);

    auto* ticks = new QHBoxLayout;
    ticks->setSpacing(18);
    ticks->addWidget(keep);
    ticks->addWidget(smooth);
    ticks->addStretch(1);
    auto* heights = new QHBoxLayout;
    heights->addWidget(txtH);
    heights->addWidget(txtHH);
    heights->addStretch(1);
    auto* grid = new QGridLayout(panel);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(0);
    grid->addWidget(width, 0, 0);
    grid->addWidget(txtW, 0, 1, Qt::AlignLeft);
    grid->addWidget(height, 1, 0);
    grid->addLayout(heights, 1, 1);
    grid->addLayout(ticks, 2, 0, 1, 2);
    grid->setColumnStretch(1, 1);
    // A row keeps its height while its field is hidden.
    for (int row = 0; row < 3; ++row)
        grid->setRowMinimumHeight(row, SheetPanels::rowHeight);
    showAlways(context, "FrResize", [panel, &batch] { panel->setVisible(batch.FrResize); });
    return panel;
}

QWidget* makeRotatePanel(const StepContext& context, QWidget* parent) {
    cBatch& batch = context.batch;
    auto* panel = new QWidget(parent);
    panel->setObjectName("FrRotate");

    auto* sbDegrees = new QScrollBar(Qt::Horizontal, panel);
    sbDegrees->setObjectName("sbDegrees");
    sbDegrees->setAccessibleName("Degrees");
    sbDegrees->setRange(lowestDegrees, highestDegrees);
    sbDegrees->setPageStep(5);
    sbDegrees->setFocusPolicy(Qt::StrongFocus);
    // A bar that scrolls a text counts downwards; this one shows an amount.
    sbDegrees->setInvertedControls(false);
    QObject::connect(sbDegrees, &QScrollBar::valueChanged, panel,
                     [&batch](int value) { batch.ChangeDegrees(value); });
    showAlways(context, "sbDegrees", [sbDegrees, &batch] {
        const QSignalBlocker silent(sbDegrees);
        sbDegrees->setValue(batch.sbDegrees);
    });

    auto* lblDegrees = new QLabel("Degrees", panel);
    lblDegrees->setObjectName("lblDegrees");
    auto* txtDegrees = new QLineEdit(panel);
    txtDegrees->setObjectName("txtDegrees");
    txtDegrees->setAccessibleName("Degrees");
    txtDegrees->setFixedWidth(txtDegrees->fontMetrics().horizontalAdvance("-0000") + 16);
    QObject::connect(txtDegrees, &QLineEdit::textEdited, panel,
                     [&batch](const QString& text) { batch.TypeDegrees(text.toStdString()); });
    showAlways(context, "txtDegrees", [txtDegrees, &batch] {
        const QString text = QString::fromStdString(batch.txtDegrees);
        if (text != txtDegrees->text()) txtDegrees->setText(text);
    });
    QCheckBox* smooth = makeTick(
        context, "chkAntialiasing", "&Antialiasing", batch.chkAntialiasing,
        [&batch](int16_t ticked) { batch.ChangeAntialiasing(ticked); }, panel);

    struct Turn {
        const char* name;
        const char* text;
        int32_t step;
        const char* keys;
    };
    auto* turns = new QHBoxLayout;
    turns->setSpacing(6);
    for (const Turn& turn :
         {Turn{"cmd45(0)", "+ 45", 45, "Alt+Right"}, Turn{"cmd45(1)", "- 45", -45, "Alt+Left"},
          Turn{"cmd90(0)", "+ 90", 90, "Alt+Shift+Right"},
          Turn{"cmd90(1)", "- 90", -90, "Alt+Shift+Left"}}) {
        auto* button = new QPushButton(turn.text, panel);
        button->setObjectName(turn.name);
        button->setAccessibleName(QString("Degrees ") + turn.text);
        const QKeySequence keys(turn.keys);
        button->setShortcut(keys);
        button->setToolTip(keys.toString(QKeySequence::NativeText));
        QObject::connect(button, &QPushButton::clicked, panel,
                         [&batch, step = turn.step] { batch.StepDegrees(step); });
        turns->addWidget(button);
    }
    turns->addStretch(1);

    auto* line = new QHBoxLayout;
    line->setSpacing(10);
    line->addWidget(lblDegrees);
    line->addWidget(txtDegrees);
    line->addSpacing(8);
    line->addWidget(smooth);
    line->addStretch(1);
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(sbDegrees);
    column->addLayout(line);
    column->addLayout(turns);
    showAlways(context, "FrRotate", [panel, &batch] { panel->setVisible(batch.FrRotate); });
    return panel;
}

}  // namespace tessarine
