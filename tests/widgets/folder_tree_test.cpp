#include "widgets/folder_tree.h"

#include <string>
#include <vector>

#include <QDir>
#include <QHeaderView>
#include <QTemporaryDir>
#include <QTest>
#include <gmock/gmock.h>

#include "support/qt_printers.h"
#include "support/window_driver.h"

namespace tessarine::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A shown tree above the folders of a temporary folder, and the paths it told.
class AFolderTree : public testing::Test {
  protected:
    AFolderTree() {
        tree.resize(300, 200);
        QObject::connect(&tree, &FolderTree::pathChanged,
                         [this](const QString& path) { told.push_back(path.toStdString()); });
        QObject::connect(&tree, &FolderTree::folderActivated,
                         [this](const QString& path) { activated.push_back(path.toStdString()); });
    }

    void show() {
        tree.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&tree));
    }
    QString make(const QString& name) {
        EXPECT_TRUE(QDir(root).mkpath(name));
        return root + "/" + name;
    }
    bool inView() const {
        const QRect place = tree.visualRect(tree.currentIndex());
        return place.isValid() && tree.viewport()->rect().intersects(place);
    }
    QStringList shownBelow(const QModelIndex& parent) const {
        QStringList names;
        for (int row = 0; row < tree.model()->rowCount(parent); ++row)
            names << tree.model()->index(row, 0, parent).data().toString();
        return names;
    }

    QTemporaryDir folder;
    QString root = QDir(folder.path()).canonicalPath();
    FolderTree tree;
    std::vector<std::string> told;
    std::vector<std::string> activated;
};

TEST_F(AFolderTree, StartsWithNothingSelected) {
    show();
    EXPECT_EQ(tree.path(), "");
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(AFolderTree, TakesAPathAtOnce) {
    const QString deep = make("one/two/three");
    EXPECT_TRUE(tree.setPath(deep));
    EXPECT_EQ(tree.path(), deep);
    EXPECT_THAT(told, ElementsAre(deep.toStdString()));
    EXPECT_TRUE(tree.isExpanded(tree.currentIndex().parent()));
}

TEST_F(AFolderTree, BringsItsPathIntoViewOnceItsParentsAreLoaded) {
    for (int i = 0; i < 150; ++i)
        make(QString("folder %1").arg(i, 3, 10, QChar('0')));
    show();
    ASSERT_TRUE(tree.setPath(root + "/folder 120"));
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return shownBelow(tree.currentIndex().parent()).size() == 150 && inView(); }));
    EXPECT_EQ(tree.path(), root + "/folder 120");
}

TEST_F(AFolderTree, TakesAFolderThatWasMadeAMomentAgo) {
    make("old");
    show();
    ASSERT_TRUE(tree.setPath(root));
    ASSERT_TRUE(QTest::qWaitFor([&] { return shownBelow(tree.currentIndex()).size() == 1; }));
    const QString made = make("new");
    EXPECT_TRUE(tree.setPath(made));
    EXPECT_EQ(tree.path(), made);
    QTest::qWait(200);
    EXPECT_EQ(tree.path(), made);
}

TEST_F(AFolderTree, RefusesAFolderThatIsNotThere) {
    ASSERT_TRUE(tree.setPath(root));
    EXPECT_FALSE(tree.setPath(root + "/missing"));
    EXPECT_FALSE(tree.setPath(""));
    QFile file(root + "/file");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_FALSE(tree.setPath(root + "/file"));
    EXPECT_EQ(tree.path(), root);
    EXPECT_EQ(told.size(), 1U);
}

TEST_F(AFolderTree, TellsTheSameFolderOnce) {
    EXPECT_TRUE(tree.setPath(root));
    EXPECT_TRUE(tree.setPath(root + "/"));
    EXPECT_EQ(tree.path(), root);
    EXPECT_THAT(told, ElementsAre(root.toStdString()));
}

TEST_F(AFolderTree, TellsTheRootAsASeparator) {
    EXPECT_TRUE(tree.setPath("/"));
    EXPECT_EQ(tree.path(), "/");
    EXPECT_THAT(told, ElementsAre("/"));
}

TEST_F(AFolderTree, ShowsFoldersOnlyAndNoHiddenOnes) {
    make("seen");
    make(".hidden");
    QFile file(root + "/file");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    show();
    ASSERT_TRUE(tree.setPath(root));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !shownBelow(tree.currentIndex()).isEmpty(); }));
    EXPECT_EQ(shownBelow(tree.currentIndex()), QStringList{"seen"});
}

TEST_F(AFolderTree, ShowsAHiddenFolderWhenThePathLiesInOne) {
    const QString inner = make(".hidden/inner");
    show();
    ASSERT_TRUE(tree.setPath(root));
    QTest::qWait(100);
    EXPECT_TRUE(tree.setPath(inner));
    EXPECT_EQ(tree.path(), inner);
    EXPECT_TRUE(QTest::qWaitFor([&] { return inView(); }));
    QTest::qWait(100);
    EXPECT_EQ(tree.path(), inner);
    EXPECT_TRUE(inView());
}

TEST_F(AFolderTree, ShowsAFolderPictureBesideEveryName) {
    make("a");
    show();
    ASSERT_TRUE(tree.setPath(root));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !shownBelow(tree.currentIndex()).isEmpty(); }));
    const QModelIndex a = tree.model()->index(0, 0, tree.currentIndex());
    EXPECT_FALSE(a.data(Qt::DecorationRole).value<QIcon>().isNull());
}

TEST_F(AFolderTree, ShowsTheNameColumnOnly) {
    EXPECT_TRUE(tree.header()->isHidden());
    EXPECT_EQ(tree.header()->hiddenSectionCount(), tree.header()->count() - 1);
    EXPECT_FALSE(tree.isColumnHidden(0));
}

TEST_F(AFolderTree, TellsAFolderThatAPersonSelects) {
    make("a");
    make("b");
    show();
    ASSERT_TRUE(tree.setPath(root));
    ASSERT_TRUE(QTest::qWaitFor([&] {
        return shownBelow(tree.currentIndex()) == QStringList({"a", "b"});
    }));
    told.clear();
    QTest::keyClick(&tree, Qt::Key_Down);
    QTest::keyClick(&tree, Qt::Key_Down);
    EXPECT_THAT(told, ElementsAre((root + "/a").toStdString(), (root + "/b").toStdString()));
    const QModelIndex a = tree.currentIndex().siblingAtRow(0);
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.visualRect(a).center());
    EXPECT_EQ(tree.path(), root + "/a");
    EXPECT_THAT(activated, IsEmpty());
}

TEST_F(AFolderTree, FindsAFolderByTheLettersTyped) {
    make("apple");
    make("banana");
    make("birch");
    show();
    ASSERT_TRUE(tree.setPath(root));
    ASSERT_TRUE(QTest::qWaitFor([&] { return shownBelow(tree.currentIndex()).size() == 3; }));
    QTest::keyClicks(&tree, "bi");
    EXPECT_EQ(tree.path(), root + "/birch");
}

TEST_F(AFolderTree, IsActivatedByADoubleClickAndByEnter) {
    make("a");
    show();
    ASSERT_TRUE(tree.setPath(root));
    ASSERT_TRUE(QTest::qWaitFor([&] { return shownBelow(tree.currentIndex()).size() == 1; }));
    QTest::keyClick(&tree, Qt::Key_Return);
    EXPECT_THAT(activated, ElementsAre(root.toStdString()));
    const QRect place = tree.visualRect(tree.model()->index(0, 0, tree.currentIndex()));
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, place.center());
    QTest::mouseDClick(tree.viewport(), Qt::LeftButton, {}, place.center());
    EXPECT_EQ(activated.back(), (root + "/a").toStdString());
}

TEST_F(AFolderTree, SelectsNothingElseWhenItsFolderIsDeleted) {
    make("a");
    const QString gone = make("b/inner");
    make("c");
    show();
    ASSERT_TRUE(tree.setPath(gone));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return shownBelow(tree.currentIndex().parent().parent()).size() == 3; }));
    told.clear();
    ASSERT_TRUE(QDir(root + "/b").removeRecursively());
    EXPECT_TRUE(QTest::qWaitFor([&] { return tree.path().isEmpty(); }));
    EXPECT_THAT(told, IsEmpty());
    EXPECT_TRUE(tree.setPath(root + "/c"));
    EXPECT_THAT(told, ElementsAre((root + "/c").toStdString()));
}

TEST_F(AFolderTree, OutlivesARenamedFolder) {
    const QString before = make("before");
    show();
    ASSERT_TRUE(tree.setPath(before));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return shownBelow(tree.currentIndex().parent()) == QStringList{"before"}; }));
    const QPersistentModelIndex parent = tree.currentIndex().parent();
    ASSERT_TRUE(QDir(root).rename("before", "after"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return shownBelow(parent) == QStringList{"after"}; }));
    EXPECT_EQ(tree.path(), "");
    EXPECT_TRUE(tree.setPath(root + "/after"));
    EXPECT_EQ(tree.path(), root + "/after");
}

TEST_F(AFolderTree, LeavesTheViewToAPersonWhoScrolls) {
    for (int i = 0; i < 100; ++i)
        make(QString("folder %1").arg(i, 3, 10, QChar('0')));
    show();
    ASSERT_TRUE(tree.setPath(root + "/folder 050"));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return shownBelow(tree.currentIndex().parent()).size() == 100 && inView(); }));
    QTest::keyClick(&tree, Qt::Key_Home);
    EXPECT_EQ(tree.path(), "/");
    make("new");
    QTest::qWait(300);
    EXPECT_TRUE(inView());
}

}  // namespace
}  // namespace tessarine::tests
