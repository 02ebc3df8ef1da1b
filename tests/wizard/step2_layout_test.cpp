#include <set>

#include <QAbstractButton>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>

#include "step2_fixture.h"
#include "widgets/splitter.h"

// Where the controls of the second step stand.

namespace tessarine::tests {
namespace {

std::string describe(const QWidget& widget) {
    return widget.objectName().toStdString() + " (" + widget.metaObject()->className() + ")";
}

/// Every visible control lies within its parent and, if it stands beside others that are given a
/// place of their own, on none of them.
void expectAllWithin(const QWidget& frame) {
    for (const QWidget* child : frame.findChildren<QWidget*>()) {
        if (!child->isVisible() || child->parentWidget() == nullptr) continue;
        if (qobject_cast<const QAbstractButton*>(child) == nullptr &&
            qobject_cast<const QLineEdit*>(child) == nullptr &&
            qobject_cast<const QLabel*>(child) == nullptr)
            continue;
        EXPECT_TRUE(child->parentWidget()->rect().contains(child->geometry())) << describe(*child);
        EXPECT_GE(child->height(), std::min(child->minimumSizeHint().height(), 24))
            << describe(*child);
        if (qobject_cast<const QLabel*>(child) == nullptr) continue;
        EXPECT_GE(child->width(), child->minimumSizeHint().width()) << describe(*child);
    }
}

TEST_F(Step2, AtTheDefaultSizeEverySheetIsFullyVisible) {
    ASSERT_EQ(window.size(), QSize(640, 480));
    auto& area = *step.findChild<QScrollArea*>();
    for (int index = 1; index <= 73; ++index) {
        clickNode(index);
        settle();
        SCOPED_TRACE(text("CLab"));
        EXPECT_FALSE(area.horizontalScrollBar()->isVisible());
        EXPECT_FALSE(area.verticalScrollBar()->isVisible());
        expectAllWithin(at("Frame_controls"));
        EXPECT_FALSE(at("frOption").isVisible() && at("frColor").isVisible() &&
                     at("frOption").geometry().intersects(at("frColor").geometry()));
    }
    EXPECT_EQ(iOri.size(), QSize(202, 176));
    EXPECT_EQ(iDst.size(), QSize(202, 176));
}

TEST_F(Step2, TheButtonsLieBesideOneAnotherBelowTheSheet) {
    const char* buttons[] = {"CmdAdd", "cmdRemove", "cmdStart", "cmdRefresh"};
    for (const char* one : buttons) {
        EXPECT_GE(at(one).width(), at<QAbstractButton>(one).fontMetrics().horizontalAdvance(
                                       at<QAbstractButton>(one).text().remove('&')) +
                                       8);
        for (const char* other : buttons) {
            if (one == other) continue;
            EXPECT_FALSE(at(one).geometry().intersects(at(other).geometry()));
        }
    }
}

TEST_F(Step2, LargerWindowsShowThePicturesAtWholeMultiples) {
    struct Case {
        QSize window;
        int scale;
    };
    for (const Case& c : {Case{{640, 480}, 1}, Case{{1024, 768}, 2}, Case{{1920, 1080}, 4}}) {
        window.resize(c.window);
        settle();
        EXPECT_EQ(iOri.scale(), c.scale);
        EXPECT_EQ(iDst.size(), QSize(200 * c.scale + 2, 174 * c.scale + 2));
        EXPECT_TRUE(at("Frame_controls").rect().contains(iDst.geometry()));
        EXPECT_LE(at("sbFilter(0)").width(), 560);
    }
}

TEST_F(Step2, TheControlsStandOnTheGroundOfTheTab) {
    const QImage shown = window.grab().toImage();
    const auto under = [&](const char* name, int x, int y) {
        return shown.pixelColor(at(name).mapTo(&window, QPoint(x, y)));
    };
    const QWidget& controls = at("Frame_controls");
    const QWidget& basket = at("pLSelectedFunctions");
    EXPECT_EQ(under("Frame_controls", controls.width() - 2, controls.height() - 2),
              under("pLSelectedFunctions", basket.width() - 2, basket.height() - 2));
}

TEST_F(Step2, TheListFillsThePaneBelowItsToolbarWithAMarginOf7Pixels) {
    const auto expectLaidOut = [this] {
        const QWidget& pane = at("pLSelectedFunctions");
        const QWidget& bar = at("TBTray");
        EXPECT_EQ(bar.pos(), QPoint(0, 0));
        EXPECT_EQ(bar.width(), pane.width());
        EXPECT_EQ(list.geometry(),
                  QRect(0, bar.height(), pane.width() - 7, pane.height() - bar.height()));
    };
    expectLaidOut();
    auto& bs21 = control<Splitter>(step, "bs21");
    EXPECT_EQ(bs21.Orientation(), 1);
    EXPECT_EQ(bs21.LeftOrTopControl(), &tree);
    EXPECT_EQ(bs21.RightOrBottomControl(), &at("pLSelectedFunctions"));
    bs21.SplitterPosition(70);
    EXPECT_EQ(batch.bs21, 70);
    expectLaidOut();
    window.resize(900, 700);
    settle();
    expectLaidOut();
    EXPECT_EQ(tree.width(), at("pLSelectedFunctions").width());
}

TEST_F(Step2, EveryControlHasANameAndIsReachedByTheTabKey) {
    for (const int id : {35, 17, 26, 39, 40, 59, 70}) {
        selectFunction(id);
        if (id == 59 && !shows("txtH")) press("chkKeepProportions");
        SCOPED_TRACE(text("CLab"));
        std::set<QWidget*> reached;
        tree.setFocus();
        for (int i = 0; i < 60; ++i) {
            reached.insert(QApplication::focusWidget());
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        for (QWidget* child : step.findChildren<QWidget*>()) {
            if (!child->isVisible() || child->focusPolicy() == Qt::NoFocus) continue;
            const bool isButton = qobject_cast<QAbstractButton*>(child) != nullptr;
            if (!isButton && qobject_cast<QLineEdit*>(child) == nullptr) continue;
            if (child->objectName().startsWith("qt_")) continue;
            const auto* button = qobject_cast<QAbstractButton*>(child);
            EXPECT_FALSE(child->accessibleName().isEmpty() && (!button || button->text().isEmpty()))
                << describe(*child);
            // Of exclusive choices the tab key reaches the chosen one.
            if (button != nullptr && button->group() != nullptr && !button->isChecked()) continue;
            EXPECT_TRUE(reached.count(child)) << describe(*child);
        }
    }
}

TEST_F(Step2, NoTwoControlsOfASheetShareAKey) {
    for (int index = 1; index <= 73; ++index) {
        clickNode(index);
        SCOPED_TRACE(text("CLab"));
        std::set<QString> keys;
        for (const QAbstractButton* button : step.findChildren<QAbstractButton*>()) {
            if (!button->isVisible() || button->shortcut().isEmpty()) continue;
            const QString key = button->shortcut().toString();
            EXPECT_TRUE(keys.insert(key).second) << key.toStdString() << describe(*button);
        }
        EXPECT_TRUE(keys.count("Alt+R") && keys.count("Alt+S") && keys.count("Alt+F"));
    }
}

}  // namespace
}  // namespace tessarine::tests
