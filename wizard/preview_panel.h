#pragma once

#include <vector>

#include <QLabel>
#include <QPixmap>
#include <QWidget>

#include "batch/batch.h"

namespace tessarine {

/// PPreview: the fitted picture.
class PreviewImage : public QWidget {
  public:
    explicit PreviewImage(QWidget* parent);
    /// Takes the picture's place, or hides.
    void show(const PreviewPicture& preview);

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    QPixmap picture_;
};

/// The panel Preview around the picture. Only a part of its width may be seen.
class PreviewPanel : public QWidget {
  public:
    explicit PreviewPanel(QWidget* parent);
    void setVisibleWidth(int width);

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    int visibleWidth_ = 0;
};

/// A text that breaks wherever it has to, and ends in dots where its room does.
class ValueLabel : public QLabel {
  public:
    using QLabel::QLabel;
    int linesAt(int width) const;
    int heightAt(int width) const { return linesAt(width) * fontMetrics().lineSpacing(); }

  protected:
    void paintEvent(QPaintEvent*) override;
};

/// Frame_Preview: what is told about the picture. Only a part of its width may be seen.
class DescriptionFrame : public QWidget {
  public:
    explicit DescriptionFrame(QWidget* parent);
    /// Gives title and entries their places in a width.
    void layOut(int visibleWidth);
    void layOut() { layOut(visibleWidth_); }
    /// The label of a name ("LFileName").
    void tell(const char* name, const QString& text);

  protected:
    void paintEvent(QPaintEvent*) override;
    void changeEvent(QEvent* event) override;

  private:
    struct Entry {
        QLabel* caption;
        ValueLabel* value;
    };
    void add(const char* name, const QString& caption);
    void placeBeside(int left, int top, int captionWidth, int width);
    void placeBelow(int left, int top, int width);
    /// Lines of each value, so that all of them have at most `lines` together.
    std::vector<int> linesWithin(int lines, int width) const;
    void hideWhatDoesNotFit();

    void placeTitle(int width);

    ValueLabel* title_;
    std::vector<Entry> entries_;
    int visibleWidth_ = 0;
};

}  // namespace tessarine
