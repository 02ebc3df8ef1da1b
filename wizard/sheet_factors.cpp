#include "wizard/sheet_factors.h"

#include <algorithm>

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QSignalBlocker>

#include "batch/functions.h"
#include "batch/sheet_controls.h"
#include "widgets/slider.h"
#include "wizard/sheet_fields.h"

namespace tessarine {

namespace {

QString nameOf(std::string_view array, int index) {
    return QString::fromStdString(indexed(array, index));
}

QString textOf(std::string_view text) {
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

/// Labels of all sheets in one column, so that no sheet's sliders stand elsewhere.
int widestLabel(const QFontMetrics& metrics) {
    int widest = 0;
    for (const FunctionDef& function : functionTable()) {
        for (const SliderDef& slider : function.sliders)
            widest = std::max(widest, metrics.horizontalAdvance(textOf(slider.label)));
    }
    return widest;
}

}  // namespace

FactorsPanel::FactorsPanel(const StepContext& context, QWidget* parent)
    : QWidget(parent), context_(context) {
    setObjectName("frFactors");
    for (int i = 0; i < 3; ++i)
        rows_[static_cast<size_t>(i)] = makeRow(i);
    for (int i = 0; i < 3; ++i) {
        showAlways(context_, indexed("frFilter", i), [this, i] {
            const auto at = static_cast<size_t>(i);
            rows_[at]->setVisible(context_.batch.sbFilter[at].visible);
            stack();
        });
    }
    showAlways(context_, "frFactors", [this] { setVisible(context_.batch.frFactors); });
}

QWidget* FactorsPanel::makeRow(int index) {
    cBatch& batch = context_.batch;
    const SheetSlider& member = batch.sbFilter[static_cast<size_t>(index)];
    const auto index16 = static_cast<int16_t>(index);

    auto* row = new QWidget(this);
    row->setObjectName(nameOf("frFilter", index));
    auto* label = new QLabel(row);
    label->setObjectName(nameOf("lblFInfo", index));
    label->setTextFormat(Qt::PlainText);
    label->setFixedWidth(widestLabel(label->fontMetrics()) + 4);
    auto* slider = new cpvSlider(row);
    slider->setObjectName(nameOf("sbFilter", index));
    slider->Orientation(0);
    slider->setMinimumWidth(90);
    slider->setFixedHeight(slider->sizeHint().height());
    auto* field = new DigitsField(row);
    field->setObjectName(nameOf("lblFilterV", index));
    field->setAlignment(Qt::AlignRight);
    field->setFixedWidth(field->fontMetrics().horizontalAdvance("-0000") + 14);
    auto* spin = new SpinArrows(row);
    spin->setObjectName(nameOf("sbFilterV", index));
    spin->setFixedHeight(field->sizeHint().height());

    auto* places = new QHBoxLayout(row);
    places->setContentsMargins(0, 0, 0, 0);
    places->setSpacing(4);
    places->addWidget(label);
    places->addWidget(slider, 1);
    places->addWidget(field);
    places->addWidget(spin);

    QObject::connect(slider, &cpvSlider::ValueChanged, this,
                     [&batch, slider, index16] { batch.MoveSlider(index16, slider->Value()); });
    QObject::connect(spin, &QSpinBox::valueChanged, this,
                     [&batch, index16](int value) { batch.SpinSlider(index16, value); });
    QObject::connect(field, &QLineEdit::textEdited, this,
                     [&batch, field, index16](const QString& text) {
                         batch.TypeSliderValue(index16, text.toStdString());
                         // The lowest value took the place of what was removed; the next digit
                         // takes its place in turn.
                         if (text.isEmpty()) field->selectAll();
                     });

    showAlways(context_, indexed("lblFInfo", index), [&member, label, slider, field, spin] {
        const QString text = QString::fromStdString(member.label);
        label->setText(text);
        slider->setAccessibleName(text);
        field->setAccessibleName(text);
        spin->setAccessibleName(text);
    });
    // Before its first sheet a slider has no range to show.
    showAlways(context_, indexed("sbFilter", index), [&member, slider] {
        if (member.min >= member.max) return;
        if (slider->Min() == member.min && slider->Max() == member.max &&
            slider->Value() == member.value)
            return;
        slider->show(member.min, member.max, member.value);
    });
    showAlways(context_, indexed("sbFilterV", index), [&member, spin] {
        const QSignalBlocker silent(spin);
        spin->setRange(member.spinMax, member.spinMin);
        spin->setValue(member.spinValue);
    });
    showAlways(context_, indexed("lblFilterV", index),
               [&member, field] { field->showText(member.valueText); });
    return row;
}

void FactorsPanel::stack() {
    constexpr int tops[3][3] = {{720}, {495, 1020}, {360, 840, 1320}};
    const auto& sliders = context_.batch.sbFilter;
    const auto count =
        std::count_if(sliders.begin(), sliders.end(), [](const auto& s) { return s.visible; });
    for (int i = 0; i < count; ++i) {
        rows_[static_cast<size_t>(i)]->setGeometry(0, tops[count - 1][i] / twipsPerPixel, width(),
                                                   SheetPanels::rowHeight);
    }
}

OptionPanel::OptionPanel(const StepContext& context, QWidget* parent) : QWidget(parent) {
    setObjectName("frOption");
    cBatch& batch = context.batch;
    chkOption_ = makeTick(
        context, "chkOption", {}, batch.chkOption,
        [&batch](int16_t ticked) { batch.ChangeOption(ticked); }, this);
    const QKeySequence key("Alt+P");
    chkOption_->setShortcut(key);
    lblOption_ = new QLabel(this);
    lblOption_->setObjectName("lblOption");
    lblOption_->setTextFormat(Qt::PlainText);
    showAlways(context, "lblOption", [this, &batch, key] {
        const QString text = QString::fromStdString(batch.lblOption);
        lblOption_->setText(text);
        setToolTip(text + " (" + key.toString(QKeySequence::NativeText) + ")");
        chkOption_->setAccessibleName(text);
        resize(sizeHint());
    });
    showAlways(context, "frOption", [this, &batch] { setVisible(batch.frOption); });
}

QSize OptionPanel::sizeHint() const {
    constexpr int besides = 150 / twipsPerPixel;
    return {lblOption_->sizeHint().width() + chkOption_->sizeHint().width() + besides,
            SheetPanels::headerHeight};
}

void OptionPanel::resizeEvent(QResizeEvent*) {
    const int box = chkOption_->sizeHint().width();
    constexpr int gap = 5;
    chkOption_->setGeometry(0, 0, box, height());
    lblOption_->setGeometry(box + gap, 0, lblOption_->sizeHint().width(), height());
}

// The label belongs to the box: a click on it is a click on the box.
void OptionPanel::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        chkOption_->click();
}

ColourPanel::ColourPanel(const StepContext& context, const PickColour& pickColour, QWidget* parent)
    : QWidget(parent) {
    setObjectName("frColor");
    cBatch& batch = context.batch;
    const std::array<QString, 2> names{tr("First color"), tr("Second color")};
    const std::array<QKeySequence, 2> keys{QKeySequence("Alt+C"), QKeySequence("Alt+O")};
    for (int i = 0; i < 2; ++i) {
        const auto at = static_cast<size_t>(i);
        Swatch* swatch = Col_[at] = new Swatch(this);
        swatch->setObjectName(nameOf("Col", i));
        swatch->setAccessibleName(names[at]);
        swatch->setShortcut(keys[at]);
        swatch->setToolTip(names[at] + " (" + keys[at].toString(QKeySequence::NativeText) + ")");
        QObject::connect(swatch, &QAbstractButton::clicked, this, [&batch, &pickColour, i] {
            int32_t picked = 0;
            if (pickColour(static_cast<int32_t>(batch.Col[static_cast<size_t>(i)]), picked))
                batch.ChangeSwatch(static_cast<int16_t>(i), static_cast<uint32_t>(picked));
            else
                batch.PreviewFunction(batch.functionId);
        });
        showAlways(context, indexed("Col", i), [swatch, &batch, at] {
            swatch->setColour(batch.Col[at]);
            swatch->setVisible(batch.ColVisible[at]);
        });
    }
    showAlways(context, "frColor", [this, &batch] { setVisible(batch.frColor); });
}

QSize ColourPanel::sizeHint() const {
    const QSize swatch = Col_[0]->sizeHint();
    constexpr int gap = 6;
    return {2 * swatch.width() + gap, SheetPanels::headerHeight};
}

void ColourPanel::resizeEvent(QResizeEvent*) {
    const QSize swatch = Col_[0]->sizeHint();
    const int top = (height() - swatch.height()) / 2;
    Col_[0]->setGeometry(QRect(QPoint(0, top), swatch));
    Col_[1]->setGeometry(QRect(QPoint(width() - swatch.width(), top), swatch));
}

}  // namespace tessarine
