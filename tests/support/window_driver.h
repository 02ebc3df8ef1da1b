#pragma once

#include <stdexcept>
#include <string>

#include <QApplication>
#include <QTest>
#include <QWidget>

namespace tessarine::tests {

/// The control of a name below a window, hidden or not.
/// \throws std::runtime_error where there is none of that kind and name
template <class Control = QWidget>
Control& control(const QWidget& window, const char* name) {
    if (auto* found = window.findChild<Control*>(QLatin1String(name))) return *found;
    throw std::runtime_error(std::string("no such control: ") + name);
}

/// Presses and releases the left button in the middle of a control.
inline void click(QWidget& target) { QTest::mouseClick(&target, Qt::LeftButton); }

/// Lets everything that waits happen, deletions included.
inline void settle() {
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::processEvents();
}

}  // namespace tessarine::tests
