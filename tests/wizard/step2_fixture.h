#pragma once

#include <string>
#include <vector>

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QTabWidget>
#include <QTreeWidget>
#include <gtest/gtest.h>

#include "batch/functions.h"
#include "support/recorded_desktop.h"
#include "support/window_driver.h"
#include "widgets/slider.h"
#include "wizard/batch_window.h"
#include "wizard/function_tree.h"
#include "wizard/picture_view.h"
#include "wizard/step2.h"

namespace tessarine::tests {

/// A new window at its second step, with nothing selected.
class Step2 : public ::testing::Test {
  protected:
    template <class Control = QWidget>
    Control& at(const std::string& name) {
        return control<Control>(step, name.c_str());
    }
    bool shows(const std::string& name) { return at(name).isVisible(); }
    std::string text(const std::string& label) { return at<QLabel>(label).text().toStdString(); }
    std::string fieldText(const std::string& field) {
        return at<QLineEdit>(field).text().toStdString();
    }

    /// The middle of a node's text, in the viewport of the tree.
    QPoint placeOf(int treeIndex) {
        QTreeWidgetItem* item = tree.node(static_cast<int16_t>(treeIndex));
        tree.scrollToItem(item);
        return tree.visualItemRect(item).center();
    }
    void clickNode(int treeIndex) {
        const QPoint place = placeOf(treeIndex);
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, place);
    }
    void doubleClickNode(int treeIndex) {
        const QPoint place = placeOf(treeIndex);
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(tree.viewport(), Qt::LeftButton, {}, place);
        QTest::mouseRelease(tree.viewport(), Qt::LeftButton, {}, place);
    }
    void selectFunction(int32_t id) { clickNode(findFunction(id)->treeIndex); }
    void clickEntry(int row) {
        const QRect place = list.visualItemRect(list.item(row));
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, place.center());
    }
    void press(const std::string& button) { click(at(button)); }
    void type(const std::string& field, const char* keys) {
        at(field).setFocus();
        QTest::keyClicks(&at(field), keys);
    }

    /// Takes the thumb of a slider with the mouse and drags it to a value, or the nearest one that
    /// its pixels can tell.
    void dragSlider(int index, int32_t value) {
        auto& slider = at<cpvSlider>("sbFilter(" + std::to_string(index) + ")");
        const double free = slider.width() - slider.minimumSizeHint().width();
        const auto middle = [&](int32_t shown) {
            const double part = double(shown - slider.Min()) / double(slider.Max() - slider.Min());
            return QPoint(int(free * part) + slider.minimumSizeHint().width() / 2,
                          slider.height() / 2);
        };
        QTest::mousePress(&slider, Qt::LeftButton, {}, middle(slider.Value()));
        drag(slider, middle(value));
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, middle(value));
    }
    /// Moves the mouse with the left button held.
    static void drag(QWidget& target, QPoint to) {
        QMouseEvent move(QEvent::MouseMove, to, target.mapToGlobal(to), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &move);
    }

    std::vector<std::string> listed() {
        std::vector<std::string> texts;
        for (int i = 0; i < list.count(); ++i)
            texts.push_back(list.item(i)->text().toStdString());
        return texts;
    }
    /// What the view of a picture shows of one of its pixels.
    QColor shownAt(PictureView& view, int x, int y) {
        const int place = PictureView::border;
        const int scale = view.scale();
        const QImage image = view.grab().toImage();
        return image.pixelColor(place + x * scale + scale / 2, place + y * scale + scale / 2);
    }
    /// A pixel of the sample.
    QColor sampleAt(int x, int y) {
        const Pixel pixel = batch.originalBits.at(x, y);
        return {pixel.red, pixel.green, pixel.blue};
    }

    /// Starts the program and goes to the second step.
    cBatch& start() {
        window.start();
        control<QTabWidget>(window, "sTab").setCurrentIndex(1);
        settle();
        return window.batch();
    }

    RecordedDesktop desktop;
    fBatch window{desktop};
    cBatch& batch = start();
    Frame_step2& step = control<Frame_step2>(window, "Frame_step2");
    FunctionTree& tree = static_cast<FunctionTree&>(control<QTreeWidget>(step, "Lfunctions"));
    QListWidget& list = control<QListWidget>(step, "LSelectedFunctions");
    PictureView& iOri = static_cast<PictureView&>(control(step, "iOri"));
    PictureView& iDst = static_cast<PictureView&>(control(step, "iDst"));
};

// Nodes of the tree by their index.
inline constexpr int adjustmentsNode = 1;
inline constexpr int brightnessNode = 2;
inline constexpr int blurNode = 12;
inline constexpr int negativeNode = 23;

}  // namespace tessarine::tests
