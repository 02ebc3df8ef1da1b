#include "wizard/step2.h"

#include <algorithm>

#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QTimer>

#include "pixels/numbers.h"
#include "widgets/colour_picker.h"
#include "widgets/splitter.h"
#include "wizard/function_basket.h"
#include "wizard/function_tree.h"
#include "wizard/picture_view.h"

namespace tessarine {

namespace {

constexpr int margin = 4;
constexpr int gap = 6;
constexpr int greatestScale = 8;
/// The catalogue is never narrower: the controls scroll beside it.
constexpr int leastCatalogue = 150;
/// For larger pictures the catalogue gives up what lies above this width.
constexpr int enoughCatalogue = 190;

}  // namespace

Frame_step2::Frame_step2(const StepContext& context, QWidget* parent)
    : Step(parent), context_(context) {
    setObjectName("Frame_step2");
    pickColour = [this](int32_t in, int32_t& out) {
        fGradient picker(this);
        return picker.Init(in, out);
    };
    // Made in the order in which the Tab key goes through them.
    makeCatalogue();
    controlsArea_ = new QScrollArea(this);
    controlsArea_->setFrameShape(QFrame::NoFrame);
    controlsArea_->setFocusPolicy(Qt::NoFocus);
    Frame_controls_ = new QWidget;
    Frame_controls_->setObjectName("Frame_controls");
    controlsArea_->setWidget(Frame_controls_);
    // The ground is the tab's, as in the other steps and around the catalogue.
    controlsArea_->viewport()->setAutoFillBackground(false);
    Frame_controls_->setAutoFillBackground(false);
    makePictures();
    sheet_ = new SheetPanels(context_, pickColour, Frame_controls_);
    makeButtons();
}

void Frame_step2::makeCatalogue() {
    cBatch& batch = context_.batch;
    bs21_ = new Splitter(this);
    bs21_->setObjectName("bs21");
    bs21_->Orientation(1);
    Lfunctions_ = new FunctionTree(bs21_);
    Lfunctions_->onSelect = [&batch](int16_t treeIndex) { batch.SelectNode(treeIndex); };
    Lfunctions_->onAdd = [&batch] { batch.CmdAdd(); };
    Lfunctions_->expandGroups();
    pLSelectedFunctions_ = new FunctionBasket(context_, bs21_);
    bs21_->LeftOrTopControl(Lfunctions_);
    bs21_->RightOrBottomControl(pLSelectedFunctions_);
    connect(bs21_, &Splitter::Refreshed, this, [this, &batch] {
        batch.bs21 = bs21_->SplitterPosition();
        pLSelectedFunctions_->layOut();
    });
    context_.repaints.on("bs21", [this, &batch] { bs21_->SplitterPosition(batch.bs21); });
}

void Frame_step2::makePictures() {
    cBatch& batch = context_.batch;
    const std::array<QString, 2> captions{"Original", "Live Preview"};
    const std::array<const char*, 2> names{"iOri", "iDst"};
    const std::array<const PictureHolder*, 2> holders{&batch.iOri, &batch.iDst};
    const std::array<PictureView**, 2> views{&iOri_, &iDst_};
    for (size_t i = 0; i < views.size(); ++i) {
        captions_[i] = new QLabel(captions[i], Frame_controls_);
        auto* view = *views[i] = new PictureView(Frame_controls_);
        view->setObjectName(names[i]);
        view->setAccessibleName(captions[i]);
        view->onPick = [&batch](int x, int y) {
            batch.PickPoint(static_cast<float>(x), static_cast<float>(y));
        };
        view->onNudge = [&batch](int dx, int dy) {
            const auto moved = [](float place, int32_t side, int by) {
                return static_cast<float>(roundToInteger(double{place} * side) + by);
            };
            batch.PickPoint(moved(batch.pickRelX, batch.workWidth, dx),
                            moved(batch.pickRelY, batch.workHeight, dy));
        };
        showAlways(context_, names[i],
                   [view, holder = holders[i]] { view->repaintPicture(*holder); });
        context_.repaints.on("pickMark", [view, &batch] {
            // Another function may have been chosen while the pick gave way.
            if (batch.pickEnabled) view->drawMark(batch.pickMark);
        });
    }

    tmrSelect_ = new QTimer(this);
    tmrSelect_->setObjectName("tmrSelect");
    tmrSelect_->setInterval(500);
    connect(tmrSelect_, &QTimer::timeout, this, [&batch] { batch.TickSelect(); });
    showAlways(context_, "tmrSelect", [this, &batch] {
        if (batch.tmrSelect)
            tmrSelect_->start();
        else
            tmrSelect_->stop();
        for (PictureView* view : {iOri_, iDst_}) {
            view->setPicking(batch.tmrSelect);
            view->eraseMark();
        }
    });
}

void Frame_step2::makeButtons() {
    cBatch& batch = context_.batch;
    // The letter A belongs to boxes of the sheet.
    makeButton("CmdAdd", "<< A&dd Function", [&batch] { batch.CmdAdd(); });
    makeButton("cmdRemove", "&Remove Function", [&batch] { batch.TBTray(2); });
    makeButton("cmdStart", "&Start Over", [&batch] { batch.TBTray(3); });
    QPushButton* refresh = makeButton("cmdRefresh", "Re&fresh", [&batch] { batch.RebuildChain(); });
    auto* key = new QShortcut(QKeySequence(Qt::Key_F5), refresh);
    connect(key, &QShortcut::activated, refresh, &QPushButton::click);
}

QPushButton* Frame_step2::makeButton(const char* name, const QString& text,
                                     std::function<void()> press) {
    auto* button = new QPushButton(text, Frame_controls_);
    button->setObjectName(name);
    connect(button, &QPushButton::clicked, this, [press = std::move(press)] { press(); });
    buttons_.push_back(button);
    return button;
}

QSize Frame_step2::controlsFor(int scale) const {
    const QSize original = PictureView::sizeFor(context_.batch.iOri, scale);
    const QSize preview = PictureView::sizeFor(context_.batch.iDst, scale);
    const int width = std::max(original.width() + gap + preview.width(), SheetPanels::leastWidth);
    const int height = captions_[0]->sizeHint().height() + 2 +
                       std::max(original.height(), preview.height()) + gap +
                       SheetPanels::sheetHeight + gap + layOutButtons(0, width, false);
    return {width + 2 * margin, height + margin + 2};
}

int Frame_step2::layOutButtons(int top, int width, bool place) const {
    constexpr int padding = 16;
    const auto widthOf = [](const QPushButton* button) {
        return button->fontMetrics().horizontalAdvance(button->text().remove('&')) + padding;
    };
    int all = gap * (static_cast<int>(buttons_.size()) - 1);
    int widest = 0;
    for (const QPushButton* button : buttons_) {
        all += widthOf(button);
        widest = std::max(widest, widthOf(button));
    }
    const bool oneRow = all <= width;
    const int height = buttons_[0]->sizeHint().height();
    int left = margin;
    for (size_t i = 0; place && i < buttons_.size(); ++i) {
        const int buttonWidth = oneRow ? widthOf(buttons_[i]) : widest;
        if (!oneRow && i == buttons_.size() / 2) {
            left = margin;
            top += height + 4;
        }
        buttons_[i]->setGeometry(left, top, buttonWidth, height);
        left += buttonWidth + gap;
    }
    return oneRow ? height : 2 * height + 4;
}

void Frame_step2::layOut() {
    const int catalogue = std::min(Lfunctions_->fullWidth(), enoughCatalogue);
    int scale = greatestScale;
    while (scale > 1 && (controlsFor(scale).width() + catalogue > width() ||
                         controlsFor(scale).height() > height()))
        --scale;
    const int room = width() - controlsFor(scale).width();
    // What the pictures leave free goes to the catalogue, up to a third of the whole.
    const int left = std::clamp(room, leastCatalogue, std::max(width() / 3, leastCatalogue));
    bs21_->setGeometry(0, 0, left, height());
    controlsArea_->setGeometry(left, 0, std::max(width() - left, 0), height());
    Frame_controls_->resize(controlsFor(scale).expandedTo(controlsArea_->size()));
    layOutControls(scale);
}

void Frame_step2::layOutControls(int scale) {
    const QSize original = PictureView::sizeFor(context_.batch.iOri, scale);
    const QSize preview = PictureView::sizeFor(context_.batch.iDst, scale);
    const int caption = captions_[0]->sizeHint().height();
    const int second = margin + original.width() + gap;
    int top = 2;
    captions_[0]->setGeometry(margin, top, original.width(), caption);
    captions_[1]->setGeometry(second, top, preview.width(), caption);
    top += caption + 2;
    iOri_->setScale(scale);
    iOri_->setGeometry(QRect(QPoint(margin, top), original));
    iDst_->setScale(scale);
    iDst_->setGeometry(QRect(QPoint(second, top), preview));
    top += std::max(original.height(), preview.height()) + gap;
    const int room = Frame_controls_->width() - 2 * margin;
    sheet_->setGeometry(margin, top, std::min(room, SheetPanels::greatestWidth),
                        SheetPanels::sheetHeight);
    top += SheetPanels::sheetHeight + gap;
    layOutButtons(top, room, true);
}

}  // namespace tessarine
