#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <QAbstractItemView>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QTest>
#include <QTreeView>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/files.h"
#include "support/pictures.h"
#include "support/recorded_desktop.h"
#include "support/window_driver.h"
#include "widgets/folder_tree.h"
#include "widgets/splitter.h"
#include "wizard/batch_window.h"
#include "wizard/step1.h"

namespace tessarine::tests {

/// The window with its first step, over a folder of the test's own.
class Step1 : public testing::Test {
  protected:
    Step1() { (void)QTest::qWaitForWindowActive(&window); }

    /// A picture with a side of `side` pixels, red to the right and green downwards.
    std::string picture(const std::string& name, int32_t width = 4, int32_t height = 3) {
        const std::string path = scratch / name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        writePixmap(path, drawBuffer(width, height, [](int32_t x, int32_t y) {
                        return Pixel{40, static_cast<uint8_t>(y), static_cast<uint8_t>(x), 0};
                    }));
        return path;
    }
    /// An accepted file that is no picture, made quickly.
    std::string file(const std::string& name, size_t bytes = 1) {
        const std::string path = scratch / name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        writeAll(path, std::string(bytes, 'x'));
        return path;
    }
    void goTo(const std::string& path) {
        ASSERT_TRUE(tree.setPath(QString::fromStdString(path)));
        settle();
    }
    void goToScratch() { goTo(scratch.path().string()); }

    static std::vector<std::string> column(const QAbstractItemView& view, int number) {
        std::vector<std::string> texts;
        for (int row = 0; row < view.model()->rowCount(); ++row)
            texts.push_back(view.model()->index(row, number).data().toString().toStdString());
        return texts;
    }
    static std::vector<bool> checks(const QAbstractItemView& view) {
        std::vector<bool> all;
        for (int row = 0; row < view.model()->rowCount(); ++row)
            all.push_back(view.model()->index(row, 0).data(Qt::CheckStateRole) == Qt::Checked);
        return all;
    }
    /// The middle of a row's cell, in the view's viewport.
    static QPoint cell(QAbstractItemView& view, int row, int number = 1) {
        const QModelIndex index = view.model()->index(row, number);
        view.scrollTo(index);
        return view.visualRect(index).center();
    }
    static void clickRow(QAbstractItemView& view, int row,
                         Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::mouseClick(view.viewport(), Qt::LeftButton, modifiers, cell(view, row));
    }
    std::vector<std::string> basket() {
        std::vector<std::string> names;
        for (const BasketItem& item : batch.lvSelected)
            names.push_back(std::filesystem::path(item.Tag).filename());
        return names;
    }
    std::string shown(const char* label) {
        return control<QLabel>(window, label).text().toStdString();
    }
    void pressButton(const char* name) { click(control(window, name)); }
    static std::vector<RecordedDesktop::Box> duplicatesBox(const std::string& number) {
        return {{number + " File(s) already existed in the Basket. There were not added!",
                 Icon::information, "Tessarine"}};
    }

    ScratchFolder scratch;
    RecordedDesktop desktop;
    fBatch window{desktop};
    cBatch& batch = started(window).batch();
    FolderTree& tree = control<FolderTree>(window, "FT");
    QTreeView& folder = control<QTreeView>(window, "lvFolder");
    QTreeView& selected = control<QTreeView>(window, "lvSelected");

  private:
    static fBatch& started(fBatch& window) {
        window.start();
        return window;
    }
};

}  // namespace tessarine::tests
