#include "widgets/folder_dialog.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "widgets/folder_tree.h"

namespace tessarine {

namespace {

/// A label that leaves out the middle of a path that is too long for it.
class PathLabel : public QLabel {
  public:
    explicit PathLabel(QWidget* parent) : QLabel(parent) {
        setTextFormat(Qt::PlainText);
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, width());
        style()->drawItemText(&painter, rect(), Qt::AlignVCenter | Qt::AlignLeft, palette(),
                              isEnabled(), shown, foregroundRole());
    }
};

}  // namespace

fBrowse::fBrowse(const QString& destination, QString& selectedFolder,
                 std::function<void(const QString& text)> invalidPath, QWidget* parent)
    : QDialog(parent),
      selectedFolder_(selectedFolder),
      invalidPath_(std::move(invalidPath)),
      FT_(new FolderTree(this)),
      FileName_(new PathLabel(this)),
      cmdOK_(new QPushButton("&Select", this)),
      cmdCancel_(new QPushButton("&Cancel", this)) {
    setObjectName("fBrowse");
    setWindowTitle("Select Folder");
    FT_->setObjectName("FT");
    FileName_->setObjectName("FileName");
    FileName_->setAccessibleDescription("The chosen folder");
    cmdOK_->setObjectName("cmdOK");
    cmdOK_->setDefault(true);
    cmdOK_->setEnabled(false);
    cmdCancel_->setObjectName("cmdCancel");

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdOK_);
    buttons->addWidget(cmdCancel_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(FT_);
    layout->addWidget(FileName_);
    layout->addLayout(buttons);
    resize(380, 400);

    connect(FT_, &FolderTree::pathChanged, this, &fBrowse::showFolder);
    connect(FT_, &FolderTree::folderActivated, cmdOK_, &QPushButton::click);
    connect(cmdOK_, &QPushButton::clicked, this, &fBrowse::select);
    connect(cmdCancel_, &QPushButton::clicked, this, &fBrowse::cancel);
    FT_->setPath(destination.trimmed());
}

void fBrowse::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel))
        cmdCancel_->click();
    else
        QDialog::keyPressEvent(event);
}

void fBrowse::showFolder(const QString& folder) {
    if (folder.isEmpty()) return;
    FileName_->setText(folder);
    FileName_->setToolTip(folder);
    cmdOK_->setEnabled(true);
}

void fBrowse::select() {
    const QString folder = FileName_->text();
    if (!QFileInfo(folder).isDir()) {
        invalidPath_("Invalid Path");
        return;
    }
    selectedFolder_ = folder;
    accept();
}

void fBrowse::cancel() {
    selectedFolder_.clear();
    reject();
}

}  // namespace tessarine

#include "moc_folder_dialog.cpp"
