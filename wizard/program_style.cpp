#include "wizard/program_style.h"

#include <QAbstractScrollArea>
#include <QEvent>
#include <QGroupBox>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>

#include "wizard/contrast.h"
#include "wizard/icons.h"

namespace tessarine {

namespace {

constexpr double outlineContrast = 3.0;  // what the parts of a control need to be told apart
constexpr double corner = 3.0;
constexpr double ringWidth = 2.0;

QColor ringOn(const QColor& ground, const QPalette& palette) {
    return readableOn(ground, palette.color(QPalette::Highlight), outlineContrast);
}

/// A ring just inside of `rect`.
void drawRing(QPainter& painter, const QRect& rect, const QColor& colour) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, ringWidth));
    painter.setBrush(Qt::NoBrush);
    constexpr double inset = ringWidth / 2;
    painter.drawRoundedRect(QRectF(rect).adjusted(inset, inset, -inset, -inset), corner, corner);
    painter.restore();
}

/// Around a whole control. Light is the lightest of the grounds that controls stand on at night,
/// and all of them are light by day.
void drawFocusRing(QPainter& painter, const QStyleOption& option) {
    if (option.state & QStyle::State_HasFocus)
        drawRing(painter, option.rect,
                 ringOn(option.palette.color(QPalette::Light), option.palette));
}

struct BoxColours {
    QColor ground, outline, mark;
};

BoxColours boxColours(const QStyleOption& option, bool filled) {
    const QPalette& palette = option.palette;
    const bool enabled = option.state & QStyle::State_Enabled;
    const auto group = enabled ? QPalette::Active : QPalette::Disabled;
    BoxColours colours;
    const QColor base = palette.color(group, QPalette::Base);
    colours.ground = filled ? palette.color(group, QPalette::Highlight) : base;
    colours.mark = enabled ? palette.color(group, QPalette::HighlightedText)
                           : palette.color(group, QPalette::Text);
    if (option.state & QStyle::State_Selected)
        colours.outline = palette.color(group, QPalette::HighlightedText);
    else if (option.state & (QStyle::State_MouseOver | QStyle::State_Sunken))
        colours.outline = ringOn(base, palette);
    else if (filled)
        colours.outline = colours.ground;
    else
        colours.outline = enabled ? readableOn(base, palette.color(QPalette::Mid), outlineContrast)
                                  : palette.color(group, QPalette::Text);
    return colours;
}

/// The square in the middle of `rect`, between the pixels of its outline.
QRectF squareIn(const QRect& rect) {
    const int side = qMin(rect.width(), rect.height());
    QRect square(0, 0, side, side);
    square.moveCenter(rect.center());
    return QRectF(square).adjusted(0.5, 0.5, -0.5, -0.5);
}

void drawCheckBox(QPainter& painter, const QStyleOption& option) {
    const bool partly = option.state & QStyle::State_NoChange;
    const bool filled = partly || option.state & QStyle::State_On;
    const BoxColours colours = boxColours(option, filled);
    const QRectF box = squareIn(option.rect);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colours.outline);
    painter.setBrush(colours.ground);
    painter.drawRoundedRect(box, corner, corner);
    if (filled) {
        painter.setPen(
            QPen(colours.mark, box.width() / 7, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(Qt::NoBrush);
        const auto at = [&box](double x, double y) {
            return QPointF(box.left() + x * box.width(), box.top() + y * box.height());
        };
        const QPolygonF tick{{at(0.24, 0.53), at(0.43, 0.72), at(0.77, 0.31)}};
        const QPolygonF dash{{at(0.28, 0.5), at(0.72, 0.5)}};
        painter.drawPolyline(partly ? dash : tick);
    }
    painter.restore();
}

void drawRadioButton(QPainter& painter, const QStyleOption& option) {
    const bool filled = option.state & QStyle::State_On;
    const BoxColours colours = boxColours(option, filled);
    const QRectF box = squareIn(option.rect);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colours.outline);
    painter.setBrush(colours.ground);
    painter.drawEllipse(box);
    if (filled) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colours.mark);
        painter.drawEllipse(box.center(), box.width() / 5, box.height() / 5);
    }
    painter.restore();
}

/// Fusion's own edge of a group can hardly be seen on a dark ground.
void drawGroup(QPainter& painter, const QStyleOption& option, const QWidget& group) {
    // The title stands above the edge.
    constexpr int edgeToContents = 3;
    const QRect box(QPoint(option.rect.left(), group.contentsRect().top() - edgeToContents),
                    option.rect.bottomRight());
    QColor line = option.palette.color(QPalette::WindowText);
    line.setAlpha(70);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(line);
    painter.setBrush(option.palette.color(QPalette::Window));
    painter.drawRoundedRect(QRectF(box).adjusted(0.5, 0.5, -0.5, -0.5), corner, corner);
    painter.restore();
}

}  // namespace

void ProgramStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                 QPainter* painter, const QWidget* widget) const {
    switch (element) {
        case PE_IndicatorCheckBox:
        case PE_IndicatorItemViewItemCheck:
            drawCheckBox(*painter, *option);
            return;
        case PE_IndicatorRadioButton:
            drawRadioButton(*painter, *option);
            return;
        case PE_FrameFocusRect: {
            const auto* focus = qstyleoption_cast<const QStyleOptionFocusRect*>(option);
            const QColor ground = focus && focus->backgroundColor.isValid()
                                      ? focus->backgroundColor
                                      : option->palette.color(QPalette::Light);
            drawRing(*painter, option->rect, ringOn(ground, option->palette));
            return;
        }
        case PE_FrameGroupBox:
            if (!qobject_cast<const QGroupBox*>(widget)) break;
            drawGroup(*painter, *option, *widget);
            return;
        case PE_FrameLineEdit:
            QProxyStyle::drawPrimitive(element, option, painter, widget);
            drawFocusRing(*painter, *option);
            return;
        default:
            break;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void ProgramStyle::drawControl(ControlElement element, const QStyleOption* option,
                               QPainter* painter, const QWidget* widget) const {
    QProxyStyle::drawControl(element, option, painter, widget);
    const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    const bool isFramed = element == CE_ShapedFrame && frame &&
                          frame->frameShape != QFrame::NoFrame &&
                          qobject_cast<const QAbstractScrollArea*>(widget);
    if (isFramed || element == CE_PushButton) drawFocusRing(*painter, *option);
    if (element == CE_TabBarTabLabel && option->state & State_Selected) {
        QStyleOption inside = *option;
        inside.rect.adjust(3, 3, -3, -3);
        drawFocusRing(*painter, inside);
    }
}

void ProgramStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                      QPainter* painter, const QWidget* widget) const {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control == CC_ComboBox || control == CC_SpinBox || control == CC_ToolButton)
        drawFocusRing(*painter, *option);
}

QIcon ProgramStyle::standardIcon(StandardPixmap icon, const QStyleOption* option,
                                 const QWidget* widget) const {
    if (icon == SP_DirIcon && !QIcon::hasThemeIcon("folder")) return programIcon("folder");
    return QProxyStyle::standardIcon(icon, option, widget);
}

int ProgramStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                            QStyleHintReturn* returned) const {
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
    return QProxyStyle::styleHint(hint, option, widget, returned);
}

void ProgramStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    // A list paints its rows anew when the focus comes and goes, but not its frame.
    if (qobject_cast<QAbstractScrollArea*>(widget)) widget->installEventFilter(this);
}

void ProgramStyle::unpolish(QWidget* widget) {
    widget->removeEventFilter(this);
    QProxyStyle::unpolish(widget);
}

bool ProgramStyle::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        if (auto* list = qobject_cast<QAbstractScrollArea*>(watched)) list->update();
    return QProxyStyle::eventFilter(watched, event);
}

}  // namespace tessarine
