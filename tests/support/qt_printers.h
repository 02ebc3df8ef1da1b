#pragma once

#include <ostream>

#include <QColor>
#include <QRect>
#include <QString>

// How a failing test shows values of Qt's types.

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QColor& colour, std::ostream* out) {
    *out << colour.name(QColor::HexArgb).toStdString();
}

inline void PrintTo(const QSize& size, std::ostream* out) {
    *out << size.width() << "x" << size.height();
}

inline void PrintTo(const QRect& rectangle, std::ostream* out) {
    *out << rectangle.x() << "," << rectangle.y() << " ";
    PrintTo(rectangle.size(), out);
}
