#include "wizard/step3.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>

#include "imagefiles/format_table.h"
#include "widgets/folder_dialog.h"
#include "wizard/icons.h"

namespace tessarine {

namespace {

constexpr int margin = 10;
constexpr int gap = 4;        ///< between a label and its control
constexpr int largeGap = 10;  ///< between groups of controls
constexpr int textInset = 3;  ///< from a field's edge to its text, as far as in the lists

/// Beyond it the two columns of controls grow no wider: long lines read badly.
constexpr int greatestWidth = 1220;

/// A picture at the largest size that its place holds, in its own proportions.
class Banner : public QWidget {
  public:
    Banner(QIcon picture, QWidget* parent) : QWidget(parent), picture_(std::move(picture)) {}

    QSize sizeWithin(QSize room) const {
        return picture_.actualSize(QSize(3000, 3000)).scaled(room, Qt::KeepAspectRatio);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        picture_.paint(&painter, rect());
    }

  private:
    QIcon picture_;
};

QLabel* label(const char* name, const QString& text, QWidget* parent) {
    auto* made = new QLabel(text, parent);
    made->setObjectName(name);
    made->setTextFormat(Qt::PlainText);
    made->setWordWrap(true);
    made->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    return made;
}

/// The note of the format rows, one to a line.
QString formatNote() {
    QStringList rows;
    for (const FormatRow& row : formatTable())
        rows << QString::fromUtf8(row.text.data(), qsizetype(row.text.size()));
    return rows.join('\n');
}

void showText(QLineEdit& field, const std::string& text) {
    const QString shown = QFile::decodeName(text.c_str());
    if (field.text() == shown) return;
    const QSignalBlocker blocked(field);
    field.setText(shown);
}

}  // namespace

Frame_step3::Frame_step3(const StepContext& context, QWidget* parent)
    : Step(parent), context_(context) {
    setObjectName("Frame_step3");
    addControls();
    connectControls();
    showValues();
}

void Frame_step3::addControls() {
    // In the order in which the Tab key goes from one to the next.
    Label3_ = label("Label3", "&Destination Folder", this);
    txtDestination_ = new QLineEdit(this);
    txtDestination_->setObjectName("txtDestination");
    txtDestination_->setTextMargins(textInset, 0, textInset, 0);
    Label3_->setBuddy(txtDestination_);
    cmdBrowse_ = new QPushButton(programIcon("browse"), tr("&Browse..."), this);
    cmdBrowse_->setObjectName("cmdBrowse");

    Label9_ = label("Label9",
                    "You can save the processed Images to any of the following Formats with "
                    "different quality arrangements.",
                    this);
    Text1_ = new QPlainTextEdit(formatNote(), this);
    Text1_->setObjectName("Text1");
    Text1_->setReadOnly(true);
    Text1_->setTabChangesFocus(true);
    Text1_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    Text1_->setAccessibleName(tr("File formats"));

    Label2_ = label("Label2", "Choose a file &format to save all the processed file(s).", this);
    cboFormat_ = new QComboBox(this);
    cboFormat_->setObjectName("cboFormat");
    cboFormat_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    for (const std::string& row : context_.batch.cboFormat.items)
        cboFormat_->addItem(QString::fromStdString(row));
    cboFormat_->setMaxVisibleItems(cboFormat_->count());
    Label2_->setBuddy(cboFormat_);

    Label1_ = label("Label1", "&Generic Name", this);
    txtName_ = new QLineEdit(this);
    txtName_->setObjectName("txtName");
    txtName_->setTextMargins(textInset, 0, textInset, 0);
    Label1_->setBuddy(txtName_);
    Label8_ = label("Label8",
                    "Generic Name will be applicable to all processed Images, but each image will "
                    "be differentiated with an iterative number system.. i.e, if you type Generic "
                    "Name as 'Sample', then first image will be named as 'Sample1','Sample2', "
                    "'Sample3'..........'SampleN' where N is the Total Images Processed.",
                    this);
    chkOverwrite_ = new QCheckBox("&Overwrite if file(s) exist", this);
    chkOverwrite_->setObjectName("chkOverwrite");

    iB_ = new Banner(programPicture("banner"), this);
    iB_->setObjectName("iB");
    iB_->setAccessibleName("Tessarine");
}

void Frame_step3::connectControls() {
    cBatch& batch = context_.batch;
    connect(txtDestination_, &QLineEdit::textChanged, this, [&batch](const QString& text) {
        batch.txtDestination = QFile::encodeName(text).toStdString();
    });
    connect(txtName_, &QLineEdit::textChanged, this, [&batch](const QString& text) {
        batch.txtName = QFile::encodeName(text).toStdString();
    });
    connect(cboFormat_, &QComboBox::currentIndexChanged, this,
            [&batch](int row) { batch.cboFormat.index = row; });
    connect(chkOverwrite_, &QCheckBox::toggled, this,
            [&batch](bool ticked) { batch.chkOverwrite = ticked ? 1 : 0; });
    connect(cmdBrowse_, &QPushButton::clicked, this, &Frame_step3::browse);

    for (const char* name : {"txtDestination", "txtName", "cboFormat", "chkOverwrite"})
        context_.repaints.on(name, [this] { showValues(); });
}

void Frame_step3::showValues() {
    const cBatch& batch = context_.batch;
    showText(*txtDestination_, batch.txtDestination);
    showText(*txtName_, batch.txtName);
    const QSignalBlocker formatBlocked(cboFormat_);
    cboFormat_->setCurrentIndex(batch.cboFormat.index);
    const QSignalBlocker overwriteBlocked(chkOverwrite_);
    chkOverwrite_->setChecked(batch.chkOverwrite != 0);
}

void Frame_step3::browse() {
    cBatch& batch = context_.batch;
    QString selected = QFile::decodeName(batch.selectedFolder.c_str());
    fBrowse dialog(
        QFile::decodeName(batch.txtDestination.c_str()), selected,
        [this](const QString& text) {
            context_.desktop.messageBox(window(), text, Icon::information,
                                        QString::fromUtf8(programName.data()));
        },
        this);
    dialog.exec();
    batch.selectedFolder = QFile::encodeName(selected).toStdString();
    batch.TakeSelectedFolder();
}

int Frame_step3::rightColumnHeight(int width) const {
    return Label2_->heightForWidth(width) + gap + cboFormat_->sizeHint().height() + largeGap +
           Label1_->heightForWidth(width) + gap + txtName_->sizeHint().height() + gap +
           Label8_->heightForWidth(width) + largeGap + chkOverwrite_->sizeHint().height();
}

void Frame_step3::writeTexts(double scale) {
    QFont written = font();
    if (scale < 1) written.setPointSizeF(QFontInfo(written).pointSizeF() * scale);
    Label8_->setFont(written);
    Label9_->setFont(written);
}

void Frame_step3::layOut() {
    const int inner = std::min(width() - 2 * margin, greatestWidth);
    int y = margin;
    Label3_->setGeometry(margin, y, inner, Label3_->heightForWidth(inner));
    y = Label3_->geometry().bottom() + 1 + gap;
    const int fieldHeight =
        std::max(txtDestination_->sizeHint().height(), cmdBrowse_->sizeHint().height());
    const int browseWidth = cmdBrowse_->sizeHint().width();
    txtDestination_->setGeometry(margin, y, inner - browseWidth - gap, fieldHeight);
    cmdBrowse_->setGeometry(margin + inner - browseWidth, y, browseWidth, fieldHeight);
    y += fieldHeight + largeGap;

    // In a narrow frame the column of the texts takes from that of the list of formats.
    const int columns = inner - 2 * largeGap;
    const int room = height() - margin - y;
    int right = columns / 2;
    // Where that is not enough the two long texts are written smaller.
    for (double scale = 1; scale > 0.65; scale -= 0.05) {
        writeTexts(scale);
        right = columns / 2;
        while (right < columns * 2 / 3 && rightColumnHeight(right) > room)
            right += 4;
        if (rightColumnHeight(right) <= room) break;
    }
    const int left = columns - right;
    layOutRightColumn({margin + inner - right, y, right, room});

    Label9_->setGeometry(margin, y, left, Label9_->heightForWidth(left));
    y = Label9_->geometry().bottom() + 1 + gap;
    Text1_->setGeometry(margin, y, left, height() - margin - y);
}

void Frame_step3::layOutRightColumn(QRect column) {
    int y = column.top();
    const auto place = [&](QWidget* control, int height, int gapBelow) {
        control->setGeometry(column.left(), y, column.width(), height);
        y += height + gapBelow;
    };
    const auto placeLabel = [&](QLabel* text, int gapBelow) {
        place(text, text->heightForWidth(column.width()), gapBelow);
    };
    placeLabel(Label2_, gap);
    place(cboFormat_, cboFormat_->sizeHint().height(), largeGap);
    placeLabel(Label1_, gap);
    place(txtName_, txtName_->sizeHint().height(), gap);
    placeLabel(Label8_, largeGap);
    place(chkOverwrite_, chkOverwrite_->sizeHint().height(), largeGap);

    // The banner stands in the corner, in what is left; a shred of it would be no banner.
    const QRect rest(column.left(), y, width() - margin - column.left(), column.bottom() + 1 - y);
    constexpr int leastHeight = 30;
    const int tallest = std::max(150, height() / 5);
    const QSize size =
        static_cast<Banner*>(iB_)->sizeWithin({rest.width(), std::min(rest.height(), tallest)});
    iB_->setVisible(size.height() >= leastHeight);
    iB_->setGeometry(
        QRect(QPoint(rest.right() + 1 - size.width(), rest.bottom() + 1 - size.height()), size));
}

}  // namespace tessarine
