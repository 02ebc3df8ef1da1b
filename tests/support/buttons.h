#pragma once

#include <algorithm>

#include <QAbstractButton>
#include <QTest>

namespace tessarine::tests {

/// A button pressed by a key stays down for a moment before it acts. Waits until those of a window
/// have, however slow the machine.
/// \return whether they have in the time that a wait takes at most
inline bool buttonsRest(const QWidget& window) {
    return QTest::qWaitFor([&] {
        const auto buttons = window.findChildren<QAbstractButton*>();
        return std::none_of(buttons.begin(), buttons.end(),
                            [](const QAbstractButton* button) { return button->isDown(); });
    });
}

}  // namespace tessarine::tests
