#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QTabBar>

#include "support/window_fixture.h"

namespace tessarine::tests {
namespace {

/// What holds for every control of the window. Each test lists all that break the rule.
class Controls : public WindowTest {
  protected:
    Controls() { start(); }

    /// What a person acts on, whatever kind it is; the inner parts of a control are not its own.
    static bool isActedOn(const QWidget& one) {
        const bool kind =
            qobject_cast<const QAbstractButton*>(&one) || qobject_cast<const QLineEdit*>(&one) ||
            qobject_cast<const QComboBox*>(&one) || qobject_cast<const QPlainTextEdit*>(&one) ||
            qobject_cast<const QAbstractItemView*>(&one) || qobject_cast<const QTabBar*>(&one) ||
            one.inherits("QAbstractSpinBox") || one.inherits("QAbstractSlider") ||
            one.inherits("tessarine::cpvSlider");
        return kind && !isInner(one);
    }
    static bool isInner(const QWidget& one) {
        if (one.objectName().startsWith("qt_") || one.inherits("QScrollBar")) return true;
        for (const QWidget* above = one.parentWidget(); above != nullptr;
             above = above->parentWidget())
            if (qobject_cast<const QComboBox*>(above) || above->inherits("QAbstractSpinBox") ||
                qobject_cast<const QAbstractItemView*>(above) ||
                qobject_cast<const QLineEdit*>(above))
                return true;
        return one.inherits("QHeaderView");
    }
    static std::string nameOf(const QWidget& one) {
        const QString own = one.objectName();
        return (own.isEmpty() ? one.metaObject()->className() : own).toStdString();
    }
    static QString accessibleName(QWidget& one) {
        QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&one);
        return interface == nullptr ? QString() : interface->text(QAccessible::Name);
    }
    /// The width of a button's picture and text. A style may want a push button wider.
    static int leastWidth(const QAbstractButton& button) {
        if (qobject_cast<const QPushButton*>(&button) == nullptr)
            return button.minimumSizeHint().width();
        const int icon = button.icon().isNull() ? 0 : button.iconSize().width() + 4;
        constexpr int edges = 6;
        return button.fontMetrics().size(Qt::TextShowMnemonic, button.text()).width() + icon +
               edges;
    }
    /// Calls `look` with every control that is acted on and can be seen, step by step.
    template <class Look>
    void inEveryStep(Look look) {
        for (int step = 1; step <= 4; ++step) {
            goToStep(step);
            for (QWidget* one : window.findChildren<QWidget*>())
                if (one->isVisible() && isActedOn(*one)) look(step, *one);
        }
    }
};

TEST_F(Controls, EachHasAnAccessibleName) {
    inEveryStep([](int step, QWidget& one) {
        EXPECT_FALSE(accessibleName(one).isEmpty()) << "step " << step << ": " << nameOf(one);
    });
}

TEST_F(Controls, EachHasAPlaceInTheTabOrder) {
    inEveryStep([](int step, QWidget& one) {
        if (one.inherits("tessarine::cpvSlider") || !one.isEnabled()) return;
        EXPECT_TRUE(one.focusPolicy() & Qt::TabFocus) << "step " << step << ": " << nameOf(one);
    });
}

TEST_F(Controls, EachButtonHasAMnemonicAShortcutOrAToolTip) {
    inEveryStep([](int step, QWidget& one) {
        const auto* button = qobject_cast<QAbstractButton*>(&one);
        if (button == nullptr) return;
        EXPECT_TRUE(!button->shortcut().isEmpty() || !button->toolTip().isEmpty() ||
                    !QKeySequence::mnemonic(button->text()).isEmpty())
            << "step " << step << ": " << nameOf(one);
    });
}

TEST_F(Controls, NoTwoThatCanBeSeenAnswerToTheSameKey) {
    for (int step = 1; step <= 4; ++step) {
        goToStep(step);
        std::map<std::string, std::string> owners;
        const auto claim = [&](const QKeySequence& key, const std::string& owner) {
            if (key.isEmpty()) return;
            const auto [at, isNew] = owners.emplace(key.toString().toStdString(), owner);
            EXPECT_TRUE(isNew) << "step " << step << ": " << at->first << " of " << at->second
                               << " and " << owner;
        };
        for (QWidget* one : window.findChildren<QWidget*>()) {
            if (!one->isVisible()) continue;
            if (const auto* button = qobject_cast<QAbstractButton*>(one)) {
                // A mnemonic is the shortcut of a button that was given no other.
                claim(button->shortcut(), nameOf(*one));
            } else if (const auto* label = qobject_cast<QLabel*>(one)) {
                if (label->buddy() != nullptr)
                    claim(QKeySequence::mnemonic(label->text()), nameOf(*one));
            } else if (const auto* captions = qobject_cast<QTabBar*>(one)) {
                for (int i = 0; i < captions->count(); ++i)
                    claim(QKeySequence::mnemonic(captions->tabText(i)), nameOf(*one));
            }
        }
        for (const auto* shortcut : window.findChildren<QShortcut*>()) {
            const auto* where = qobject_cast<QWidget*>(shortcut->parent());
            if (where == nullptr || !where->isVisible() || !shortcut->isEnabled() ||
                shortcut->context() == Qt::WidgetShortcut ||
                shortcut->context() == Qt::WidgetWithChildrenShortcut)
                continue;
            claim(shortcut->key(), nameOf(*where));
        }
    }
}

TEST_F(Controls, EachHasItsOwnName) {
    inEveryStep([&](int step, QWidget& one) {
        if (qobject_cast<QTabBar*>(&one)) return;
        EXPECT_FALSE(one.objectName().isEmpty()) << "step " << step << ": " << nameOf(one);
        EXPECT_EQ(window.findChildren<QWidget*>(one.objectName()).size(), 1) << nameOf(one);
    });
}

TEST_F(Controls, NoTextOfALabelOrButtonIsCutOffAtTheDefaultSize) {
    const QFont before = QApplication::font();
    for (const double points : {9.0, 11.0}) {
        QFont font("DejaVu Sans");
        font.setPointSizeF(points);
        QApplication::setFont(font);
        settle();
        for (int step = 1; step <= 4; ++step) {
            goToStep(step);
            for (const QWidget* one : window.findChildren<QWidget*>()) {
                if (!one->isVisible() || isInner(*one)) continue;
                const auto* button = qobject_cast<const QAbstractButton*>(one);
                if (button == nullptr) continue;
                EXPECT_GE(button->width(), leastWidth(*button))
                    << "step " << step << ", " << points << ": " << nameOf(*one);
            }
        }
    }
    QApplication::setFont(before);
}

}  // namespace
}  // namespace tessarine::tests
