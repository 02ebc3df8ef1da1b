#include "wizard/sheet_panels.h"

#include <algorithm>

#include <QCheckBox>
#include <QLabel>

#include "wizard/sheet_factors.h"

namespace tessarine {

void showAlways(const StepContext& context, std::string_view control, std::function<void()> show) {
    show();
    context.repaints.on(control, std::move(show));
}

QCheckBox* makeTick(const StepContext& context, const char* name, const QString& text,
                    const int16_t& member, std::function<void(int16_t)> change, QWidget* parent) {
    auto* box = new QCheckBox(text, parent);
    box->setObjectName(name);
    // A click, not any change of the box: what the logic shows here calls for nothing.
    QObject::connect(box, &QCheckBox::clicked, parent, [change = std::move(change)](bool ticked) {
        change(static_cast<int16_t>(ticked));
    });
    showAlways(context, name, [box, &member] { box->setChecked(member != 0); });
    return box;
}

SheetPanels::SheetPanels(const StepContext& context, const PickColour& pickColour, QWidget* parent)
    : QWidget(parent) {
    caption_ = new QLabel("Current Function :", this);
    CLab_ = new QLabel(this);
    CLab_->setObjectName("CLab");
    CLab_->setTextFormat(Qt::PlainText);
    QFont bold = CLab_->font();
    bold.setBold(true);
    CLab_->setFont(bold);

    frFactors_ = new FactorsPanel(context, this);
    // The tops of the sliders count from the line with the header, beside which nothing of them
    // stands.
    frFactors_->lower();
    frOption_ = new OptionPanel(context, this);
    frColor_ = new ColourPanel(context, pickColour, this);
    specialPanels_ = {makeBanksPanel(context, this), makeGlassPanel(context, this),
                      makeCurtainPanel(context, this), makeResizePanel(context, this),
                      makeRotatePanel(context, this)};

    const cBatch& batch = context.batch;
    showAlways(context, "CLab", [this, &batch] {
        CLab_->setText(QString::fromStdString(batch.CLab));
        CLab_->setAccessibleName("Current Function : " + CLab_->text());
    });
    for (const char* control : {"lblOption", "frOption", "frColor"})
        showAlways(context, control, [this] { layOut(); });
}

void SheetPanels::layOut() {
    const QSize caption = caption_->sizeHint();
    constexpr int gap = 6;
    caption_->setGeometry(0, 0, caption.width(), headerHeight);
    const int left = caption.width() + gap;
    frFactors_->setGeometry(0, 0, width(), sheetHeight);
    // Swatches and option stand at the right end of the line.
    int right = width();
    if (!frColor_->isHidden()) {
        const QSize size = frColor_->sizeHint();
        frColor_->setGeometry(QRect(QPoint(right - size.width(), 0), size));
        right -= size.width() + gap;
    }
    if (!frOption_->isHidden()) {
        const QSize size = frOption_->sizeHint();
        frOption_->setGeometry(QRect(QPoint(right - size.width(), 0), size));
        right -= size.width() + gap;
    }
    CLab_->setGeometry(left, 0, std::max(right - left, 0), headerHeight);
    for (QWidget* panel : specialPanels_)
        panel->setGeometry(0, headerHeight, width(), sheetHeight - headerHeight);
}

}  // namespace tessarine
