#include <filesystem>
#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "batch/batch.h"
#include "batch/list_files.h"
#include "support/files.h"
#include "support/paths.h"
#include "support/recorder.h"

namespace tessarine {
namespace {

using testing::ElementsAre;
using tests::Recorder;
using tests::ScratchFolder;
using tests::writeAll;

class Baskets : public testing::Test {
  protected:
    std::string file(const std::string& name) {
        std::filesystem::create_directories(std::filesystem::path(scratch / name).parent_path());
        writeAll(scratch / name, "x");
        return scratch / name;
    }
    void listWith(const std::vector<std::string>& names) {
        for (const std::string& name : names)
            file(name);
        batch.ChangeFolder(folder);
    }
    std::vector<std::string> basket() const {
        std::vector<std::string> names;
        for (const BasketItem& item : batch.lvSelected)
            names.push_back(std::filesystem::path(item.Tag).filename());
        return names;
    }
    static std::vector<Recorder::Box> duplicatesBox(const std::string& number) {
        return {{number + " File(s) already existed in the Basket. There were not added!",
                 Icon::information, "Tessarine"}};
    }

    ScratchFolder scratch;
    const std::string folder = scratch.path().string();
    Recorder recorder;
    cBatch batch{recorder};
};

TEST_F(Baskets, SelectedRowsAreAddedWithTheirExtension) {
    listWith({"a.JPG", "b.png", "c.gif"});
    batch.AddSelectedToBasket({0, 2});
    ASSERT_THAT(basket(), ElementsAre("a.JPG", "c.gif"));
    const BasketItem& item = batch.lvSelected[0];
    EXPECT_EQ(item.text, "a.JPG");
    EXPECT_EQ(item.smallIcon, "jpg");
    EXPECT_EQ(item.Tag, scratch / "a.JPG");
    EXPECT_EQ(item.column1, folder);
    EXPECT_EQ(batch.SB[2].text, "Basket: 2 file(s)");
    EXPECT_TRUE(recorder.hasChanged("SB(3)"));
    EXPECT_TRUE(recorder.hasChanged("lvSelected"));
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(Baskets, CheckedRowsAreAddedByTheToolbar) {
    listWith({"a.jpg", "b.png", "c.gif"});
    batch.CheckRows({1}, false);
    batch.AddCheckedToBasket();
    EXPECT_THAT(basket(), ElementsAre("a.jpg", "c.gif"));
    batch.CheckAll(true);
    batch.AddCheckedToBasket();
    EXPECT_THAT(basket(), ElementsAre("a.jpg", "c.gif", "b.png"));
    EXPECT_EQ(recorder.boxes, duplicatesBox("2"));
    EXPECT_EQ(batch.SB[2].text, "Basket: 3 file(s)");
}

TEST_F(Baskets, PathsThatDifferInCaseAreTwoByButtonAndOneByDragging) {
    listWith({"A.jpg", "a.jpg"});
    batch.AddSelectedToBasket({0, 1});
    EXPECT_THAT(basket(), ElementsAre("A.jpg", "a.jpg"));
    EXPECT_TRUE(recorder.boxes.empty());
    batch.RemoveAll();
    batch.DropRowsOnBasket({0, 1});
    EXPECT_THAT(basket(), ElementsAre("A.jpg"));
    EXPECT_EQ(recorder.boxes, duplicatesBox("1"));
    recorder.boxes.clear();
    batch.AddSelectedToBasket({0, 1});
    EXPECT_THAT(basket(), ElementsAre("A.jpg", "a.jpg"));
    EXPECT_EQ(recorder.boxes, duplicatesBox("1"));
}

TEST_F(Baskets, DroppedRowsShowNoExtension) {
    listWith({"Sun.Set.JPG"});
    batch.DropRowsOnBasket({0});
    ASSERT_EQ(batch.lvSelected.size(), 1U);
    EXPECT_EQ(batch.lvSelected[0].text, "Sun.Set");
    EXPECT_EQ(batch.lvSelected[0].smallIcon, "jpg");
    EXPECT_EQ(batch.lvSelected[0].column1, folder);
    EXPECT_EQ(batch.lvSelected[0].Tag, scratch / "Sun.Set.JPG");
    EXPECT_EQ(batch.SB[2].text, "Basket: 1 file(s)");
}

TEST_F(Baskets, TheListShowsNewRowsBeforeTheMessageWaits) {
    struct Waiting : Recorder {
        bool shown = false;
        void messageBox(const std::string&, Icon, const std::string&) override {
            shown = hasChanged("lvSelected") && !hasChanged("SB(3)");
        }
    } waiting;
    cBatch other(waiting);
    file("a.jpg");
    other.ChangeFolder(folder);
    other.AddCheckedToBasket();
    waiting.changes.clear();
    other.AddCheckedToBasket();
    EXPECT_TRUE(waiting.shown);
}

TEST_F(Baskets, AFileManagersDropTakesAcceptedFilesAndThoseOfFolders) {
    const std::string one = file("one.jpg");
    file("more/b.png");
    file("more/a.GIF");
    file("more/text.txt");
    file("more/deeper/c.png");
    batch.DropOnBasket(
        {one, file("text.txt"), scratch / "more", scratch / "missing.jpg", scratch / "more/b.png"});
    EXPECT_THAT(basket(), ElementsAre("one.jpg", "a.GIF", "b.png"));
    EXPECT_EQ(batch.lvSelected[1].text, "a");
    EXPECT_EQ(batch.lvSelected[1].column1, scratch / "more");
    EXPECT_EQ(recorder.boxes, duplicatesBox("1"));
    EXPECT_EQ(batch.SB[2].text, "Basket: 3 file(s)");
}

TEST_F(Baskets, ADroppedFolderWithASeparatorAtItsEndGivesTheSamePaths) {
    listWith({"a.jpg"});
    batch.AddCheckedToBasket();
    batch.DropOnBasket({folder + "/"});
    EXPECT_THAT(basket(), ElementsAre("a.jpg"));
    EXPECT_EQ(recorder.boxes, duplicatesBox("1"));
}

TEST_F(Baskets, DroppedListsAreOpened) {
    const std::string picture = file("one.jpg");
    writePictureList(scratch / "list.qpkl", std::vector<std::string>{picture});
    const std::vector<FunctionRecord> records(1, [] {
        FunctionRecord record;
        record.name = "Contrast";
        record.id = "8";
        return record;
    }());
    writeFunctionList(scratch / "list.QFK", records);
    batch.DropOnBasket({scratch / "list.qpkl", scratch / "list.QFK"});
    EXPECT_THAT(basket(), ElementsAre("one.jpg"));
    EXPECT_EQ(batch.LSelectedFunctions.size(), 1U);
    EXPECT_EQ(batch.SB[2].text, "Basket: 1 file(s)");
    EXPECT_TRUE(recorder.openFilters.empty());
}

TEST_F(Baskets, ExactlyTheSelectedRowsLeaveWhateverTheirOrder) {
    listWith({"a.jpg", "b.jpg", "c.jpg", "d.jpg", "e.jpg"});
    batch.AddCheckedToBasket();
    batch.RemoveSelected({4, 0, 2});
    EXPECT_THAT(basket(), ElementsAre("b.jpg", "d.jpg"));
    EXPECT_EQ(batch.SB[2].text, "Basket: 2 file(s)");
    batch.RemoveSelected({});
    batch.RemoveSelected({7, -1});
    EXPECT_THAT(basket(), ElementsAre("b.jpg", "d.jpg"));
}

TEST_F(Baskets, TheStatusBarIsWrittenByAllOfTheToolbar) {
    const auto rewritten = [this](auto&& action) {
        batch.SB[2].text = "?";
        action();
        return batch.SB[2].text;
    };
    EXPECT_EQ(rewritten([this] { batch.RemoveSelected({}); }), "Basket: 0 file(s)");
    EXPECT_EQ(rewritten([this] { batch.RemoveAll(); }), "Basket: 0 file(s)");
    EXPECT_EQ(rewritten([this] { batch.LoadPictureList(); }), "Basket: 0 file(s)");
    EXPECT_EQ(rewritten([this] { batch.SavePictureList(); }), "Basket: 0 file(s)");
    listWith({"a.jpg"});
    batch.AddCheckedToBasket();
    EXPECT_EQ(rewritten([this] { batch.SavePictureList(); }), "Basket: 1 file(s)");
    EXPECT_EQ(rewritten([this] { batch.RemoveAll(); }), "Basket: 0 file(s)");
}

TEST_F(Baskets, ListsComeFromTheDialogAndFromAPath) {
    const std::string picture = file("one.jpg");
    writePictureList(scratch / "list.qpkl",
                     std::vector<std::string>{picture, scratch / "gone.jpg"});
    recorder.openAnswers.push_back(scratch / "list.qpkl");
    batch.LoadPictureList();
    EXPECT_THAT(basket(), ElementsAre("one.jpg"));
    EXPECT_EQ(batch.SB[2].text, "Basket: 1 file(s)");
    EXPECT_EQ(recorder.boxes.size(), 1U);
    batch.RemoveAll();
    batch.OpenPictureList(scratch / "list.qpkl");
    EXPECT_THAT(basket(), ElementsAre("one.jpg"));
    EXPECT_EQ(batch.SB[2].text, "Basket: 1 file(s)");
    EXPECT_EQ(recorder.boxes.size(), 2U);
    EXPECT_EQ(recorder.openFilters.size(), 1U);
    batch.OpenPictureList(scratch / "one.jpg");
    EXPECT_EQ(recorder.boxes.back().title, "INVALID PICTURE LIST");
    EXPECT_THAT(basket(), ElementsAre("one.jpg"));
}

TEST_F(Baskets, ManyThousandRowsComeAndGo) {
    batch.Fil.path = "/pictures";
    for (int i = 0; i < 10000; ++i) {
        FolderRow row;
        row.text = std::to_string(i) + ".jpg";
        row.Tag = "/pictures/" + row.text;
        batch.lvFolder.push_back(row);
    }
    batch.AddCheckedToBasket();
    EXPECT_EQ(batch.lvSelected.size(), 10000U);
    batch.AddCheckedToBasket();
    EXPECT_EQ(batch.lvSelected.size(), 10000U);
    EXPECT_EQ(recorder.boxes, duplicatesBox("10000"));
    std::vector<int32_t> even(5000);
    std::iota(even.begin(), even.end(), 0);
    for (int32_t& row : even)
        row *= 2;
    batch.RemoveSelected(even);
    ASSERT_EQ(batch.lvSelected.size(), 5000U);
    EXPECT_EQ(batch.lvSelected.front().text, "1.jpg");
    EXPECT_EQ(batch.lvSelected.back().text, "9999.jpg");
}

}  // namespace
}  // namespace tessarine
