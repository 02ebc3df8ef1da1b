#include <set>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAccessible>
#include <QButtonGroup>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QTabBar>

#include "batch/functions.h"
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
            one.inherits("tessarine::cpvSlider") ||
            (one.focusPolicy() & Qt::TabFocus && one.focusProxy() == nullptr);
        return kind && !isInner(one);
    }
    static bool isInner(const QWidget& one) {
        if (one.objectName().startsWith("qt_") ||
            (one.inherits("QScrollBar") && one.objectName().isEmpty()))
            return true;
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
    /// Calls `look` with the name of every place that the window can show: the four steps, the
    /// second one with the sheet of each function.
    template <class Look>
    void everywhere(Look look) {
        for (int step = 1; step <= 4; ++step) {
            goToStep(step);
            look("step " + std::to_string(step));
            if (step != 2) continue;
            int16_t treeIndex = 0;
            for (const TreeNode& node : catalogueTree()) {
                ++treeIndex;
                if (node.functionId < 0) continue;
                batch.SelectNode(treeIndex);
                settle();
                look(std::string(node.text));
            }
        }
    }
    /// Calls `look` with every control that is acted on and can be seen, place by place.
    template <class Look>
    void withEveryControl(Look look) {
        everywhere([&](const std::string& place) {
            for (QWidget* one : window.findChildren<QWidget*>())
                if (one->isVisible() && isActedOn(*one)) look(place, *one);
        });
    }
};

TEST_F(Controls, AreAllMetByTheseTests) {
    std::set<std::string> met;
    withEveryControl([&](const std::string&, QWidget& one) { met.insert(nameOf(one)); });
    for (const char* name : {"cmdOnline",
                             "cmdAbout",
                             "cmdHelp",
                             "FT",
                             "TBFolder(1)",
                             "lvFolder",
                             "TBSelected(1)",
                             "lvSelected",
                             "Lfunctions",
                             "TBTray(1)",
                             "LSelectedFunctions",
                             "CmdAdd",
                             "cmdRemove",
                             "cmdStart",
                             "cmdRefresh",
                             "iOri",
                             "iDst",
                             "sbFilter(0)",
                             "sbFilter(1)",
                             "sbFilter(2)",
                             "lblFilterV(0)",
                             "lblFilterV(2)",
                             "sbFilterV(0)",
                             "sbFilterV(2)",
                             "chkOption",
                             "Col(0)",
                             "Col(1)",
                             "optRChannel(0)",
                             "optGChannel(1)",
                             "optBChannel(2)",
                             "chkInvt(2)",
                             "chkKill(0)",
                             "oo(3)",
                             "cbo",
                             "Curt(3)",
                             "txtW",
                             "chkKeepProportions",
                             "chkInterpolate",
                             "sbDegrees",
                             "txtDegrees",
                             "cmd45(0)",
                             "cmd45(1)",
                             "cmd90(0)",
                             "cmd90(1)",
                             "chkAntialiasing",
                             "txtDestination",
                             "cmdBrowse",
                             "Text1",
                             "cboFormat",
                             "txtName",
                             "chkOverwrite",
                             "RTF",
                             "CmdBatchAll",
                             "CmdStop",
                             "chkShowDestination"})
        EXPECT_TRUE(met.contains(name)) << name;
}

TEST_F(Controls, EachHasAnAccessibleName) {
    withEveryControl([](const std::string& place, QWidget& one) {
        EXPECT_FALSE(accessibleName(one).isEmpty()) << place << ": " << nameOf(one);
    });
}

TEST_F(Controls, EachHasAPlaceInTheTabOrder) {
    withEveryControl([](const std::string& place, QWidget& one) {
        // The field and the arrows beside a slider do for the keys what it does for the mouse.
        if (one.inherits("tessarine::cpvSlider") || !one.isEnabled()) return;
        if (const auto* choice = qobject_cast<QRadioButton*>(&one)) {
            // The arrow keys walk from the chosen one to the others.
            const auto choices = choice->group()->buttons();
            EXPECT_TRUE(std::any_of(choices.begin(), choices.end(),
                                    [](const QAbstractButton* each) {
                                        return each->isChecked() &&
                                               (each->focusPolicy() & Qt::TabFocus);
                                    }))
                << place << ": " << nameOf(one);
            return;
        }
        EXPECT_TRUE(one.focusPolicy() & Qt::TabFocus) << place << ": " << nameOf(one);
    });
}

TEST_F(Controls, EachButtonHasAMnemonicAShortcutOrAToolTip) {
    withEveryControl([](const std::string& place, QWidget& one) {
        const auto* button = qobject_cast<QAbstractButton*>(&one);
        // The arrow keys walk through choices.
        if (button == nullptr || qobject_cast<QRadioButton*>(&one)) return;
        EXPECT_TRUE(!button->shortcut().isEmpty() || !button->toolTip().isEmpty() ||
                    !QKeySequence::mnemonic(button->text()).isEmpty())
            << place << ": " << nameOf(one);
    });
}

TEST_F(Controls, NoTwoThatCanBeSeenAnswerToTheSameKey) {
    everywhere([&](const std::string& place) {
        std::map<std::string, std::string> owners;
        const auto claim = [&](const QKeySequence& key, const std::string& owner) {
            if (key.isEmpty()) return;
            const auto [at, isNew] = owners.emplace(key.toString().toStdString(), owner);
            EXPECT_TRUE(isNew) << place << ": " << at->first << " of " << at->second << " and "
                               << owner;
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
    });
}

TEST_F(Controls, EachHasItsOwnName) {
    withEveryControl([&](const std::string& place, QWidget& one) {
        // The bar of a splitter is named within its splitter.
        if (qobject_cast<QTabBar*>(&one) || one.objectName() == "picSplitter") return;
        EXPECT_FALSE(one.objectName().isEmpty()) << place << ": " << nameOf(one);
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
        everywhere([&](const std::string& place) {
            for (const QWidget* one : window.findChildren<QWidget*>()) {
                if (!one->isVisible() || isInner(*one)) continue;
                const auto* button = qobject_cast<const QAbstractButton*>(one);
                if (button == nullptr) continue;
                EXPECT_GE(button->width(), leastWidth(*button))
                    << place << ", " << points << ": " << nameOf(*one);
            }
        });
    }
    QApplication::setFont(before);
}

}  // namespace
}  // namespace tessarine::tests
