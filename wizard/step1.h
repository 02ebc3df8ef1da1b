#pragma once

#include <cstdint>

#include "wizard/step.h"

namespace tessarine {

class BasketModel;
class BasketView;
class DescriptionFrame;
class FolderModel;
class FolderTree;
class FolderView;
class ListToolbar;
class PreviewImage;
class PreviewPanel;
class Splitter;

/// "Step 1 : Select Images": the folder tree, the folder's pictures above the Image Basket, and
/// the preview of the file last clicked.
class Frame_step1 : public Step {
    Q_OBJECT

  public:
    Frame_step1(const StepContext& context, QWidget* parent);

    /// To be called when the window is about to be shown: without a folder from the settings the
    /// tree starts at the person's home folder.
    void start();
    void layOut() override;

  protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void buildPanes();
    void fillFolderTools();
    void fillBasketTools();
    void removeSelected();
    void connectLists();
    void connectSplitters();
    void connectTree();
    void showWhatChanges();
    /// Keeps a splitter and its member together.
    void follow(Splitter& splitter, const char* name, int32_t cBatch::*position);
    void layOutLists();
    void refitPreview();
    /// How much of a pane is inside the frame: what stands right of a bar reaches past it.
    int visibleWidth(const QWidget& pane) const;

    StepContext context_;
    Splitter* bs11_ = nullptr;
    Splitter* bs12_ = nullptr;
    Splitter* bs13_ = nullptr;
    Splitter* bs14_ = nullptr;
    FolderTree* tree_ = nullptr;
    QWidget* folderPane_ = nullptr;
    QWidget* basketPane_ = nullptr;
    ListToolbar* folderTools_ = nullptr;
    ListToolbar* basketTools_ = nullptr;
    FolderModel* folderModel_ = nullptr;
    BasketModel* basketModel_ = nullptr;
    FolderView* folderView_ = nullptr;
    BasketView* basketView_ = nullptr;
    PreviewPanel* preview_ = nullptr;
    PreviewImage* image_ = nullptr;
    DescriptionFrame* description_ = nullptr;
};

}  // namespace tessarine
