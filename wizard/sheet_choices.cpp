#include <array>

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QRadioButton>
#include <QSignalBlocker>

#include "batch/functions.h"
#include "batch/sheet_controls.h"
#include "wizard/sheet_panels.h"

// The special panels of choices: frBanks, FrmGlass and FrmCurtain.

namespace tessarine {

namespace {

QString textOf(std::string_view text) {
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

QWidget* makePanel(const StepContext& context, const char* name, const bool& visible,
                   QWidget* parent) {
    auto* panel = new QWidget(parent);
    panel->setObjectName(name);
    showAlways(context, name, [panel, &visible] { panel->setVisible(visible); });
    return panel;
}

/// One of several exclusive choices. A click on the one that is chosen counts too: it may show a
/// choice of an earlier visit, which is not in force.
QRadioButton* makeChoice(const StepContext& context, const std::string& name, std::string_view text,
                         const bool& member, std::function<void()> choose, QButtonGroup* group,
                         QWidget* panel) {
    auto* choice = new QRadioButton(textOf(text), panel);
    choice->setObjectName(QString::fromStdString(name));
    group->addButton(choice);
    QObject::connect(choice, &QRadioButton::clicked, panel,
                     [choose = std::move(choose)](bool) { choose(); });
    showAlways(context, name, [choice, &member] {
        // The group keeps one chosen, and the one to be chosen clears the others. The tab key
        // goes to the chosen one.
        if (member) choice->setChecked(true);
        choice->setFocusPolicy(member ? Qt::StrongFocus : Qt::ClickFocus);
    });
    return choice;
}

QLabel* makeHeading(const char* name, const QString& text, QWidget* panel) {
    auto* heading = new QLabel(text, panel);
    heading->setObjectName(name);
    return heading;
}

/// FrmGlass: four kinds in two columns, with the list of strengths beside the chosen one.
class GlassPanel : public QWidget {
  public:
    GlassPanel(const StepContext& context, QWidget* parent) : QWidget(parent), context_(context) {
        setObjectName("FrmGlass");
        cBatch& batch = context_.batch;
        auto* group = new QButtonGroup(this);
        for (int i = 0; i < 4; ++i) {
            const auto at = static_cast<size_t>(i);
            const std::string name = indexed("oo", i);
            oo_[at] = makeChoice(
                context_, name, glassStyles[at], batch.oo[at],
                [&batch, i] { batch.ChooseGlass(static_cast<int16_t>(i)); }, group, this);
            showAlways(context_, name, [this] { layOut(); });
        }
        cbo_ = new QComboBox(this);
        cbo_->setObjectName("cbo");
        cbo_->setAccessibleName(tr("Strength"));
        QObject::connect(cbo_, &QComboBox::currentIndexChanged, this,
                         [&batch](int index) { batch.ChooseGlassStrength(index); });
        showAlways(context_, "cbo", [this, &batch] {
            const QSignalBlocker silent(cbo_);
            QStringList items;
            for (const std::string& item : batch.cbo.items)
                items += QString::fromStdString(item);
            cbo_->clear();
            cbo_->addItems(items);
            cbo_->setCurrentIndex(batch.cbo.index);
        });
        showAlways(context_, "FrmGlass", [this, &batch] { setVisible(batch.FrmGlass); });
    }

  protected:
    void resizeEvent(QResizeEvent*) override { layOut(); }
    void changeEvent(QEvent* event) override {
        QWidget::changeEvent(event);
        if (event->type() == QEvent::FontChange) layOut();
    }

  private:
    void layOut() {
        if (cbo_ == nullptr) return;
        QFont bold = font();
        bold.setBold(true);
        const int box =
            oo_[0]->sizeHint().width() - oo_[0]->fontMetrics().horizontalAdvance(oo_[0]->text());
        int widest = 0;
        for (const std::string_view style : glassStyles) {
            widest = std::max(widest, QFontMetrics(bold).horizontalAdvance(textOf(style)));
        }
        constexpr int gap = 6;
        const int choiceWidth = widest + box + 4;
        const int listWidth = cbo_->sizeHint().width();
        const int cell = choiceWidth + listWidth + 2 * gap;
        const int rowHeight = std::max(SheetPanels::rowHeight, cbo_->sizeHint().height() + 2);
        for (int i = 0; i < 4; ++i) {
            QRadioButton* choice = oo_[static_cast<size_t>(i)];
            const bool chosen = context_.batch.oo[static_cast<size_t>(i)];
            choice->setFont(chosen ? bold : font());
            const int left = i % 2 * cell;
            const int top = i / 2 * rowHeight;
            choice->setGeometry(left, top, choiceWidth, rowHeight);
            if (!chosen) continue;
            const int height = cbo_->sizeHint().height();
            cbo_->setGeometry(left + choiceWidth, top + (rowHeight - height) / 2, listWidth,
                              height);
        }
    }

    StepContext context_;
    std::array<QRadioButton*, 4> oo_{};
    QComboBox* cbo_ = nullptr;
};

}  // namespace

QWidget* makeBanksPanel(const StepContext& context, QWidget* parent) {
    cBatch& batch = context.batch;
    QWidget* panel = makePanel(context, "frBanks", batch.frBanks, parent);
    auto* grid = new QGridLayout(panel);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(18);
    grid->setVerticalSpacing(0);
    grid->setColumnStretch(5, 1);
    grid->setRowStretch(4, 1);

    struct Column {
        const char* label;
        const char* heading;
        const char* boxes;
        const std::array<bool, 3>& members;
    };
    const std::array<Column, 3> columns{{{"lblRed", "Red", "optRChannel", batch.optRChannel},
                                         {"lblGreen", "Green", "optGChannel", batch.optGChannel},
                                         {"lblBlue", "Blue", "optBChannel", batch.optBChannel}}};
    for (int c = 0; c < 3; ++c) {
        const Column& column = columns[static_cast<size_t>(c)];
        grid->addWidget(makeHeading(column.label, column.heading, panel), 0, c);
        auto* group = new QButtonGroup(panel);
        // From top to bottom R, G, B, which are the indices 2, 1, 0.
        for (int i = 2; i >= 0; --i) {
            const auto at = static_cast<size_t>(i);
            QRadioButton* box = makeChoice(
                context, indexed(column.boxes, i), bankLabels[at], column.members[at],
                [&batch, c, i] {
                    batch.ChooseBank(static_cast<int16_t>(c), static_cast<int16_t>(i));
                },
                group, panel);
            box->setAccessibleName(QString(column.heading) + " " + textOf(bankLabels[at]));
            grid->addWidget(box, 3 - i, c);
        }
    }
    const std::array<QString, 3> rows{"Red", "Green", "Blue"};
    grid->addWidget(makeHeading("lblInvert", "Invert", panel), 0, 3);
    grid->addWidget(makeHeading("lblKill", "Kill", panel), 0, 4);
    for (int i = 0; i < 3; ++i) {
        const auto at = static_cast<size_t>(i);
        const auto index = static_cast<int16_t>(i);
        QCheckBox* invert = makeTick(
            context, indexed("chkInvt", i).c_str(), {}, batch.chkInvt[at],
            [&batch, index](int16_t ticked) { batch.ChangeInvert(index, ticked); }, panel);
        invert->setAccessibleName("Invert " + rows[at]);
        invert->setToolTip(invert->accessibleName());
        grid->addWidget(invert, 1 + i, 3, Qt::AlignHCenter);
        QCheckBox* kill = makeTick(
            context, indexed("chkKill", i).c_str(), {}, batch.chkKill[at],
            [&batch, index](int16_t ticked) { batch.ChangeKill(index, ticked); }, panel);
        kill->setAccessibleName("Kill " + rows[at]);
        kill->setToolTip(kill->accessibleName());
        grid->addWidget(kill, 1 + i, 4, Qt::AlignHCenter);
    }
    return panel;
}

QWidget* makeGlassPanel(const StepContext& context, QWidget* parent) {
    return new GlassPanel(context, parent);
}

QWidget* makeCurtainPanel(const StepContext& context, QWidget* parent) {
    cBatch& batch = context.batch;
    QWidget* panel = makePanel(context, "FrmCurtain", batch.FrmCurtain, parent);
    auto* grid = new QGridLayout(panel);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(30);
    grid->setVerticalSpacing(0);
    grid->setColumnStretch(2, 1);
    grid->setRowStretch(2, 1);
    auto* group = new QButtonGroup(panel);
    for (int i = 0; i < 4; ++i) {
        const auto at = static_cast<size_t>(i);
        QRadioButton* choice = makeChoice(
            context, indexed("Curt", i), curtainStyles[at], batch.Curt[at],
            [&batch, i] { batch.ChooseCurtain(static_cast<int16_t>(i)); }, group, panel);
        grid->addWidget(choice, i / 2, i % 2);
        grid->setRowMinimumHeight(i / 2, SheetPanels::rowHeight);
    }
    return panel;
}

}  // namespace tessarine
