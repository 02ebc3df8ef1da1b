#include "wizard/preview_panel.h"

#include <algorithm>
#include <numeric>

#include <QEvent>
#include <QPainter>
#include <QPainterPath>
#include <QTextLayout>

#include "wizard/file_names.h"

namespace tessarine {

namespace {

constexpr int margin = 6;          ///< pixels inside a panel's line
constexpr int betweenColumns = 8;  ///< pixels from a caption to its value
constexpr int leastForColumns = 240;

void drawPanel(QWidget& panel, int visibleWidth, QPalette::ColorRole ground) {
    QPainter painter(&panel);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF line = QRectF(0, 0, visibleWidth, panel.height()).adjusted(0.5, 0.5, -0.5, -0.5);
    if (line.width() < 1 || line.height() < 1) return;
    const QPalette& palette = panel.palette();
    // Between text and ground, so that the line is seen in light and in dark.
    QColor colour = palette.color(QPalette::WindowText);
    colour.setAlpha(70);
    painter.setPen(colour);
    painter.setBrush(palette.color(ground));
    painter.drawRoundedRect(line, 3, 3);
}

QTextOption breakingAnywhere() {
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    return option;
}

/// Breaks a text into lines of a width; gives the place where each begins.
std::vector<int> lineStarts(const QString& text, const QFont& font, int width) {
    std::vector<int> starts;
    QTextLayout layout(text, font);
    layout.setTextOption(breakingAnywhere());
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(std::max(width, 1));
        starts.push_back(line.textStart());
    }
    layout.endLayout();
    return starts;
}

QFont boldened(QFont font) {
    font.setBold(true);
    return font;
}

}  // namespace

// ---- The picture ----

PreviewImage::PreviewImage(QWidget* parent) : QWidget(parent) {
    setObjectName("PPreview");
    hide();
}

void PreviewImage::show(const PreviewPicture& preview) {
    if (!preview.visible) {
        picture_ = {};
        hide();
        return;
    }
    const Bitmap& bitmap = preview.picture;
    const QImage image(reinterpret_cast<const uchar*>(bitmap.row(0)), bitmap.width(),
                       bitmap.height(), bitmap.pixels().stride() * qsizetype(sizeof(Pixel)),
                       QImage::Format_RGB32);
    // The bitmap's fourth bytes are 0, which is no opacity to a picture of the screen.
    picture_ = QPixmap::fromImage(image.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    setGeometry(preview.left, preview.top, preview.width, preview.height);
    setVisible(true);
    update();
}

void PreviewImage::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(rect(), picture_);
}

PreviewPanel::PreviewPanel(QWidget* parent) : QWidget(parent) {
    setObjectName("Preview");
    setAccessibleName("Image Preview");
}

void PreviewPanel::setVisibleWidth(int width) {
    visibleWidth_ = width;
    update();
}

void PreviewPanel::paintEvent(QPaintEvent*) { drawPanel(*this, visibleWidth_, QPalette::Base); }

// ---- The description ----

int ValueLabel::linesAt(int width) const {
    return std::max(1, int(lineStarts(text(), font(), width).size()));
}

void ValueLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::WindowText));
    const std::vector<int> starts = lineStarts(text(), font(), width());
    const int height = fontMetrics().lineSpacing();
    const int shown = std::max(1, this->height() / height);
    for (int i = 0; i < std::min(shown, int(starts.size())); ++i) {
        const int begin = starts[size_t(i)];
        const bool isLast = i + 1 == int(starts.size());
        QString line =
            isLast ? text().mid(begin) : text().mid(begin, starts[size_t(i) + 1] - begin);
        if (i + 1 == shown && !isLast)
            line = fontMetrics().elidedText(text().mid(begin), Qt::ElideMiddle, width());
        painter.drawText(QRect(0, i * height, width(), height), int(Qt::AlignLeading), line);
    }
}

DescriptionFrame::DescriptionFrame(QWidget* parent)
    : QWidget(parent), title_(new ValueLabel("Image Preview & Description", this)) {
    setObjectName("Frame_Preview");
    setAccessibleName(title_->text());
    title_->setToolTip(title_->text());
    add("LFileName", "File Name:");
    add("LType", "Type:");
    add("LResolution", "Resolution:");
    add("LLocation", "Location:");
}

void DescriptionFrame::add(const char* name, const QString& caption) {
    auto* value = new ValueLabel(this);
    value->setObjectName(name);
    value->setTextFormat(Qt::PlainText);
    value->setAccessibleDescription(caption);
    auto* label = new QLabel(caption, this);
    label->setForegroundRole(QPalette::PlaceholderText);
    entries_.push_back({label, value});
}

void DescriptionFrame::tell(const char* name, const QString& text) {
    for (const Entry& entry : entries_) {
        if (entry.value->objectName() != QLatin1String(name)) continue;
        entry.value->setText(text);
        entry.value->setToolTip(plainToolTip(text));
    }
    layOut();
}

void DescriptionFrame::layOut(int visibleWidth) {
    visibleWidth_ = visibleWidth;
    const int width = std::max(visibleWidth - 2 * margin, 1);
    placeTitle(width);
    const int top = title_->geometry().bottom() + 1 + margin;
    int captionWidth = 0;
    for (const Entry& entry : entries_)
        captionWidth = std::max(captionWidth, entry.caption->sizeHint().width());
    if (width >= leastForColumns)
        placeBeside(margin, top, captionWidth, width);
    else
        placeBelow(margin, top, width);
    hideWhatDoesNotFit();
    update();
}

void DescriptionFrame::placeTitle(int width) {
    // Bold where its words fit, else as slim as other text.
    const QFont bold = boldened(font());
    const QFontMetrics metrics(bold);
    const QStringList words = title_->text().split(' ');
    const bool fits = std::all_of(words.begin(), words.end(), [&](const QString& word) {
        return metrics.horizontalAdvance(word) <= width;
    });
    title_->setFont(fits ? bold : font());
    title_->setGeometry(margin, margin, width, title_->heightAt(width));
}

std::vector<int> DescriptionFrame::linesWithin(int lines, int width) const {
    std::vector<int> counts;
    for (const Entry& entry : entries_)
        counts.push_back(entry.value->linesAt(width));
    while (std::accumulate(counts.begin(), counts.end(), 0) > lines) {
        const auto longest = std::max_element(counts.begin(), counts.end());
        if (*longest == 1) break;
        --*longest;
    }
    return counts;
}

void DescriptionFrame::placeBeside(int left, int top, int captionWidth, int width) {
    const int line = fontMetrics().lineSpacing();
    const int valueLeft = left + captionWidth + betweenColumns;
    const int valueWidth = left + width - valueLeft;
    const int room = height() - margin - top - int(entries_.size()) * 2;
    const std::vector<int> counts = linesWithin(room / line, valueWidth);
    for (size_t i = 0; i < entries_.size(); ++i) {
        const int high = counts[i] * line;
        entries_[i].caption->setGeometry(left, top, captionWidth, line);
        entries_[i].value->setGeometry(valueLeft, top, valueWidth, high);
        top += high + 2;
    }
}

void DescriptionFrame::placeBelow(int left, int top, int width) {
    const int line = fontMetrics().lineSpacing();
    const int count = int(entries_.size());
    const int room = height() - margin - top - count * (line + 4);
    const std::vector<int> counts = linesWithin(room / line, width);
    for (size_t i = 0; i < entries_.size(); ++i) {
        entries_[i].caption->setGeometry(left, top, width, line);
        entries_[i].value->setGeometry(left, top + line, width, counts[i] * line);
        top += line + counts[i] * line + 4;
    }
}

void DescriptionFrame::hideWhatDoesNotFit() {
    const int bottom = height() - margin / 2;
    const auto fits = [bottom](const QWidget& part) { return part.geometry().bottom() < bottom; };
    title_->setVisible(fits(*title_));
    for (const Entry& entry : entries_) {
        entry.caption->setVisible(fits(*entry.value));
        entry.value->setVisible(fits(*entry.value));
    }
}

void DescriptionFrame::paintEvent(QPaintEvent*) {
    drawPanel(*this, visibleWidth_, QPalette::Window);
}

void DescriptionFrame::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange && !entries_.empty()) layOut();
}

}  // namespace tessarine
