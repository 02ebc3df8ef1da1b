#include "wizard/step1.h"

#include <algorithm>

#include <QDir>
#include <QEvent>
#include <QFile>
#include <QHeaderView>

#include "widgets/folder_tree.h"
#include "widgets/splitter.h"
#include "wizard/file_models.h"
#include "wizard/file_names.h"
#include "wizard/file_views.h"
#include "wizard/list_toolbar.h"
#include "wizard/preview_panel.h"

namespace tessarine {

namespace {

/// Pixels that stay free at the right of a list.
constexpr int rightOfList = 17;

}  // namespace

Frame_step1::Frame_step1(const StepContext& context, QWidget* parent)
    : Step(parent), context_(context) {
    setObjectName("Frame_step1");
    buildPanes();
    connectTree();
    connectLists();
    connectSplitters();
    showWhatChanges();
}

void Frame_step1::buildPanes() {
    const auto splitter = [](const char* name, int orientation, QWidget* parent) {
        auto* made = new Splitter(parent);
        made->setObjectName(name);
        made->Orientation(orientation);
        return made;
    };
    const auto pane = [](const char* name, QWidget* parent) {
        auto* made = new QWidget(parent);
        made->setObjectName(name);
        return made;
    };
    bs11_ = splitter("bs11", 0, this);
    tree_ = new FolderTree(bs11_);
    tree_->setObjectName("FT");
    tree_->setAccessibleName("Folders");
    bs12_ = splitter("bs12", 0, bs11_);
    bs13_ = splitter("bs13", 1, bs12_);
    bs14_ = splitter("bs14", 1, bs12_);
    folderPane_ = pane("plvFolder", bs13_);
    folderTools_ = new ListToolbar("TBFolder", "Images in Folder", folderPane_);
    fillFolderTools();
    folderModel_ = new FolderModel(context_.batch);
    folderView_ = new FolderView(folderPane_);
    basketPane_ = pane("plvSelected", bs13_);
    basketTools_ = new ListToolbar("TBSelected", "Image Basket", basketPane_);
    fillBasketTools();
    basketModel_ = new BasketModel(context_.batch);
    basketView_ = new BasketView(basketPane_);
    preview_ = new PreviewPanel(bs14_);
    image_ = new PreviewImage(preview_);
    description_ = new DescriptionFrame(bs14_);

    bs11_->LeftOrTopControl(tree_);
    bs11_->RightOrBottomControl(bs12_);
    bs12_->LeftOrTopControl(bs13_);
    bs12_->RightOrBottomControl(bs14_);
    bs13_->LeftOrTopControl(folderPane_);
    bs13_->RightOrBottomControl(basketPane_);
    bs14_->LeftOrTopControl(preview_);
    bs14_->RightOrBottomControl(description_);
}

void Frame_step1::fillFolderTools() {
    cBatch& batch = context_.batch;
    ListToolbar& tools = *folderTools_;
    connect(&tools.add("check-all", "&Check All"), &QToolButton::clicked, this,
            [&batch] { batch.CheckAll(true); });
    connect(&tools.add("uncheck-all", "&Uncheck All"), &QToolButton::clicked, this,
            [&batch] { batch.CheckAll(false); });
    connect(&tools.add("add-checked", "Add Checked File(s) to &Tray"), &QToolButton::clicked, this,
            [&batch] { batch.AddCheckedToBasket(); });
}

void Frame_step1::fillBasketTools() {
    cBatch& batch = context_.batch;
    ListToolbar& tools = *basketTools_;
    connect(&tools.add("remove", "&Remove Selected File"), &QToolButton::clicked, this,
            &Frame_step1::removeSelected);
    connect(&tools.add("remove-all", "Re&move All"), &QToolButton::clicked, this,
            [&batch] { batch.RemoveAll(); });
    connect(&tools.add("open-list", {}, "Open a picture list", QKeySequence("Ctrl+O")),
            &QToolButton::clicked, this, [&batch] { batch.LoadPictureList(); });
    connect(
        &tools.add("save-list", {}, "Save the basket as a picture list", QKeySequence("Ctrl+S")),
        &QToolButton::clicked, this, [&batch] { batch.SavePictureList(); });
}

void Frame_step1::removeSelected() { context_.batch.RemoveSelected(basketView_->selectedRows()); }

void Frame_step1::connectTree() {
    connect(tree_, &FolderTree::pathChanged, this, [this](const QString& path) {
        context_.batch.ChangeFolder(QFile::encodeName(path).toStdString());
    });
}

void Frame_step1::connectLists() {
    cBatch& batch = context_.batch;
    folderModel_->setParent(this);
    basketModel_->setParent(this);
    folderView_->setModel(folderModel_);
    basketView_->setModel(basketModel_);
    folderView_->header()->setSortIndicator(
        batch.lvFolderColumn, batch.lvFolderDescending ? Qt::DescendingOrder : Qt::AscendingOrder);
    folderView_->setSortingEnabled(true);

    connect(folderView_, &FolderView::rowClicked, this,
            [this, &batch] { batch.ClickFolder(folderView_->selectedRows()); });
    connect(folderView_, &FolderView::enterPressed, this,
            [this, &batch] { batch.AddSelectedToBasket(folderView_->selectedRows()); });
    connect(folderView_, &FolderView::spacePressed, this, [this, &batch] {
        const auto current = size_t(folderView_->currentIndex().row());
        if (current >= batch.lvFolder.size()) return;
        batch.CheckRows(folderView_->selectedRows(), !batch.lvFolder[current].checked);
    });
    connect(folderView_, &FolderView::pathsDropped, this,
            [&batch](const std::vector<std::string>& paths) { batch.DropOnFolder(paths); });
    connect(basketView_, &BasketView::rowClicked, this,
            [this, &batch] { batch.ClickBasket(basketView_->selectedRows()); });
    connect(basketView_, &BasketView::deletePressed, this, &Frame_step1::removeSelected);
    connect(basketView_, &BasketView::rowsDropped, this,
            [&batch](const std::vector<int32_t>& rows) { batch.DropRowsOnBasket(rows); });
    connect(basketView_, &BasketView::pathsDropped, this,
            [&batch](const std::vector<std::string>& paths) { batch.DropOnBasket(paths); });
}

void Frame_step1::connectSplitters() {
    follow(*bs11_, "bs11", &cBatch::bs11);
    follow(*bs12_, "bs12", &cBatch::bs12);
    follow(*bs13_, "bs13", &cBatch::bs13);
    follow(*bs14_, "bs14", &cBatch::bs14);
    // A splitter's move gives the one inside it another size, and so its panes theirs. What the
    // size alone does not tell is where the frame's edge cuts the panes at the right.
    connect(bs11_, &Splitter::Refreshed, this, [this] { refitPreview(); });
    connect(bs12_, &Splitter::Refreshed, this, [this] {
        layOutLists();
        refitPreview();
    });
    connect(bs13_, &Splitter::Refreshed, this, [this] {
        layOutLists();
        refitPreview();
    });
    connect(bs14_, &Splitter::Refreshed, this, [this] { refitPreview(); });
}

void Frame_step1::follow(Splitter& splitter, const char* name, int32_t cBatch::*position) {
    cBatch& batch = context_.batch;
    context_.repaints.on(
        name, [&splitter, &batch, position] { splitter.SplitterPosition(batch.*position); });
    // Not what a pointer says that only passes over the bar: nobody chose that to be stored.
    connect(&splitter, &Splitter::Refreshed, this,
            [&splitter, &batch, position] { batch.*position = splitter.SplitterPosition(); });
}

void Frame_step1::showWhatChanges() {
    cBatch& batch = context_.batch;
    Repaints& repaints = context_.repaints;
    repaints.on("FT", [this, &batch] { tree_->setPath(QFile::decodeName(batch.FT.c_str())); });
    repaints.on("lvFolder", [this] { folderModel_->followFolder(); });
    repaints.on("lvSelected", [this] { basketModel_->follow(); });
    repaints.on("PPreview", [this, &batch] { image_->show(batch.PPreview); });
    repaints.on("LFileName", [this, &batch] {
        image_->setAccessibleName("Preview of " + shownName(batch.LFileName));
    });
    const auto label = [&](const char* name, std::string cBatch::*text) {
        repaints.on(
            name, [this, &batch, name, text] { description_->tell(name, shownName(batch.*text)); });
    };
    label("LFileName", &cBatch::LFileName);
    label("LType", &cBatch::LType);
    label("LResolution", &cBatch::LResolution);
    label("LLocation", &cBatch::LLocation);
    folderModel_->followFolder();
    basketModel_->follow();
}

void Frame_step1::start() {
    if (tree_->path().isEmpty()) tree_->setPath(QDir::homePath());
}

void Frame_step1::layOut() {
    bs11_->setGeometry(rect());
    layOutLists();
    refitPreview();
}

void Frame_step1::layOutLists() {
    const auto layOutPane = [](const QWidget& pane, ListToolbar& tools, QWidget& list) {
        const int width = std::max(pane.width() - rightOfList, 0);
        tools.layOut(width);
        const int top = tools.geometry().bottom() + 1;
        list.setGeometry(0, top, width, std::max(pane.height() - top, 0));
    };
    layOutPane(*folderPane_, *folderTools_, *folderView_);
    layOutPane(*basketPane_, *basketTools_, *basketView_);
}

void Frame_step1::refitPreview() {
    const int width = visibleWidth(*preview_);
    const int height = preview_->height();
    preview_->setVisibleWidth(width);
    description_->layOut(visibleWidth(*description_));
    cBatch& batch = context_.batch;
    const double density = devicePixelRatioF();
    if (width == batch.PreviewWidth && height == batch.PreviewHeight &&
        density == batch.previewDensity)
        return;
    batch.previewDensity = density;
    batch.FitPreview(width, height);
}

int Frame_step1::visibleWidth(const QWidget& pane) const {
    const int left = pane.mapTo(this, QPoint(0, 0)).x();
    return std::clamp(width() - left, 0, std::max(pane.width(), 0));
}

bool Frame_step1::event(QEvent* event) {
    const bool done = Step::event(event);
    // Another screen may be denser or less dense.
    if (event->type() == QEvent::ScreenChangeInternal && bs11_ != nullptr) refitPreview();
    return done;
}

void Frame_step1::changeEvent(QEvent* event) {
    Step::changeEvent(event);
    const bool changesSizes =
        event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange;
    if (changesSizes && bs11_ != nullptr) layOut();
}

}  // namespace tessarine
