#pragma once

#include <QProxyStyle>

namespace tessarine {

/// The style of the program where the desktop brings none: Fusion, with boxes that can be seen on
/// a dark ground as well, with a ring around whatever has the focus, and with the program's own
/// folder where there is no icon theme.
class ProgramStyle : public QProxyStyle {
    Q_OBJECT

  public:
    ProgramStyle() : QProxyStyle("fusion") {}

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;
    QIcon standardIcon(StandardPixmap icon, const QStyleOption* option,
                       const QWidget* widget) const override;
    /// No pictures on the buttons of message boxes: no other button that says "OK" has one.
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override;
    using QProxyStyle::polish;
    void polish(QWidget* widget) override;
    using QProxyStyle::unpolish;
    void unpolish(QWidget* widget) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace tessarine
