#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>

#include "support/files.h"
#include "support/window_fixture.h"

namespace tessarine::tests {
namespace {

class OpenPaths : public WindowTest {
  protected:
    OpenPaths() {
        start();
        addGrey(10);
        addGrey(20);
        writePictureLists();
        batch.SelectNode(2);
        batch.AddFunction("Brightness");
        desktop.saveAnswers = {functions};
        batch.SaveFunctionList();
        batch.ClearFunctions();
    }

    void writePictureLists() {
        picture = batch.lvSelected[0].Tag;
        other = batch.lvSelected[1].Tag;
        batch.lvSelected.pop_back();
        desktop.saveAnswers = {pictures};
        batch.SaveList();
        batch.lvSelected.clear();
    }
    std::vector<std::string> basket() const {
        std::vector<std::string> paths;
        for (const BasketItem& item : batch.lvSelected)
            paths.push_back(item.Tag);
        return paths;
    }
    /// Drags files over a control and drops them there. \return whether the drop was taken
    static bool drop(QWidget& target, const std::vector<std::string>& paths) {
        QMimeData data;
        QList<QUrl> urls;
        for (const std::string& path : paths)
            urls << QUrl::fromLocalFile(QString::fromStdString(path));
        data.setUrls(urls);
        const QPoint middle = target.rect().center();
        QDragEnterEvent enter(middle, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&target, &enter);
        QDropEvent dropped(middle, Qt::CopyAction, &data, Qt::LeftButton, {});
        dropped.ignore();
        QApplication::sendEvent(&target, &dropped);
        return enter.isAccepted() && dropped.isAccepted();
    }

    const std::string pictures = scratch / "some.qpkl";
    const std::string functions = scratch / "some.QFK";
    std::string picture;
    std::string other;
};

TEST_F(OpenPaths, EachKindGoesToItsPlace) {
    window.openPaths({picture, functions, out});
    EXPECT_EQ(basket(), std::vector<std::string>{picture});
    ASSERT_EQ(batch.LSelectedFunctions.size(), 1U);
    EXPECT_EQ(batch.LSelectedFunctions[0].text, "Brightness");
    EXPECT_EQ(batch.Fil.path, out);
    EXPECT_TRUE(desktop.boxes.empty());
}

TEST_F(OpenPaths, APictureListBeforeOrAfterAPictureKeepsIt) {
    window.openPaths({other, pictures});
    EXPECT_EQ(basket(), (std::vector<std::string>{picture, other}));
}

TEST_F(OpenPaths, WhatIsNoPictureIsLeftOut) {
    writeAll(scratch / "notes.txt", "x");
    window.openPaths({scratch / "notes.txt", scratch / "gone.png"});
    EXPECT_TRUE(basket().empty());
    EXPECT_TRUE(desktop.boxes.empty());
}

TEST_F(OpenPaths, AListDroppedOnAnyStepIsOpened) {
    const char* targets[] = {"lvSelected", "Lfunctions", "Text1", "RTF"};
    for (int step = 1; step <= 4; ++step) {
        goToStep(step);
        batch.RemoveAll();
        const QWidget* below = window.findChild<QWidget*>(targets[step - 1]);
        QWidget& target = below == nullptr ? the(("Frame_step" + std::to_string(step)).c_str())
                                           : the(targets[step - 1]);
        EXPECT_TRUE(drop(target, {pictures, functions})) << step;
        EXPECT_EQ(basket(), std::vector<std::string>{picture}) << step;
        EXPECT_EQ(batch.LSelectedFunctions.size(), 1U) << step;
    }
}

TEST_F(OpenPaths, APictureDroppedBesideTheListsIsNotTaken) {
    goToStep(4);
    EXPECT_FALSE(drop(the("Frame_command"), {picture}));
    EXPECT_TRUE(basket().empty());
}

}  // namespace
}  // namespace tessarine::tests
