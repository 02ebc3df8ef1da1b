#include "widgets/about.h"

#include <QPushButton>
#include <QVBoxLayout>

#include "widgets/picture_box.h"

namespace tessarine {

fAbout::fAbout(const QIcon& picture, QSize size, const QString& text, QWidget* parent)
    : QDialog(parent) {
    setObjectName("fAbout");
    setWindowTitle("About Ombrel Tessarine");

    auto* Image1 = new PictureBox(picture, size, this);
    Image1->setObjectName("Image1");
    Image1->setAccessibleName(text);
    connect(Image1, &PictureBox::clicked, this, &QDialog::accept);
    auto* cmdOK = new QPushButton("&OK", this);
    cmdOK->setObjectName("cmdOK");
    cmdOK->setDefault(true);
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Image1, 0, Qt::AlignCenter);
    layout->addWidget(cmdOK, 0, Qt::AlignRight);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    cmdOK->setFocus();
}

}  // namespace tessarine

#include "moc_about.cpp"
