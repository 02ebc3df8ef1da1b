#pragma once

#include <QDialog>
#include <QIcon>

namespace tessarine {

/// The about box: a picture and a button; both close it.
class fAbout : public QDialog {
    Q_OBJECT

  public:
    /// \param picture  Image1, drawn at `size` in pixels
    /// \param text     what the picture says, for those who do not see it
    fAbout(const QIcon& picture, QSize size, const QString& text, QWidget* parent = nullptr);
};

}  // namespace tessarine
