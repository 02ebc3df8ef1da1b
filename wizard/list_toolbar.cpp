#include "wizard/list_toolbar.h"

#include <algorithm>

#include <QEvent>

#include "wizard/icons.h"

namespace tessarine {

namespace {

constexpr int gap = 2;          ///< pixels between buttons and between rows
constexpr int afterTitle = 10;  ///< pixels from the title to the first button
constexpr int iconSize = 16;

QString withoutMnemonic(QString text) { return text.remove('&'); }

}  // namespace

ListToolbar::ListToolbar(const QString& name, const QString& title, QWidget* parent)
    : QWidget(parent), title_(new QLabel(title, this)) {
    setObjectName(name);
    setAccessibleName(title);
    title_->setAlignment(Qt::AlignLeading | Qt::AlignVCenter);
    title_->setWordWrap(true);
    QFont bold = font();
    bold.setBold(true);
    title_->setFont(bold);
}

QToolButton& ListToolbar::add(const char* icon, const QString& caption, const QString& purpose,
                              const QKeySequence& shortcut) {
    auto* button = new QToolButton(this);
    buttons_.push_back(button);
    captioned_.push_back(!caption.isEmpty());
    button->setObjectName(QString("%1(%2)").arg(objectName()).arg(buttons_.size()));
    button->setIcon(programIcon(icon));
    button->setIconSize(QSize(iconSize, iconSize));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    button->setText(caption);
    if (!shortcut.isEmpty()) button->setShortcut(shortcut);
    const QString told = caption.isEmpty() ? purpose : withoutMnemonic(caption);
    button->setAccessibleName(told);
    button->setToolTip(
        QString("%1 (%2)").arg(told, button->shortcut().toString(QKeySequence::NativeText)));
    return *button;
}

void ListToolbar::showCaptions(bool shown) {
    for (size_t i = 0; i < buttons_.size(); ++i)
        buttons_[i]->setToolButtonStyle(shown && captioned_[i] ? Qt::ToolButtonTextBesideIcon
                                                               : Qt::ToolButtonIconOnly);
}

int ListToolbar::widthOfButtons(bool captions) const {
    const_cast<ListToolbar*>(this)->showCaptions(captions);
    int width = -gap;
    for (const QToolButton* button : buttons_)
        width += button->sizeHint().width() + gap;
    return width;
}

int ListToolbar::rowOf(int left, int top) {
    int bottom = top;
    int x = left;
    for (QToolButton* button : buttons_) {
        const QSize size = button->sizeHint();
        if (x > left && x + size.width() > width()) {
            x = left;
            top = bottom + gap;
        }
        button->setGeometry(x, top, size.width(), size.height());
        x += size.width() + gap;
        bottom = std::max(bottom, top + size.height());
    }
    return bottom;
}

void ListToolbar::layOut(int width) {
    resize(width, height());
    const int titleWidth = title_->fontMetrics().horizontalAdvance(title_->text()) + 2;
    const int besideTitle = titleWidth + afterTitle;
    const int withCaptions = widthOfButtons(true);
    const int iconsOnly = widthOfButtons(false);
    const bool captions = withCaptions <= width;
    const bool oneRow = besideTitle + (captions ? withCaptions : iconsOnly) <= width;
    showCaptions(captions);
    int bottom = 0;
    if (oneRow) {
        bottom = rowOf(besideTitle, 0);
        title_->setGeometry(0, 0, titleWidth, bottom);
    } else {
        const int lines = title_->heightForWidth(std::max(width, 1));
        title_->setGeometry(0, 0, width, lines);
        bottom = rowOf(0, lines + gap);
    }
    setGeometry(0, 0, width, bottom + gap);
}

void ListToolbar::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() != QEvent::FontChange && event->type() != QEvent::StyleChange) return;
    QFont bold = font();
    bold.setBold(true);
    title_->setFont(bold);
}

}  // namespace tessarine
