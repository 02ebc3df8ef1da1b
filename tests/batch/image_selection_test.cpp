#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "batch/accepted_files.h"
#include "batch/batch.h"
#include "batch/natural_order.h"
#include "support/files.h"
#include "support/paths.h"
#include "support/recorder.h"

namespace tessarine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::Recorder;
using tests::ScratchFolder;
using tests::writeAll;

class ImageSelection : public testing::Test {
  protected:
    std::string file(const std::string& name, size_t bytes = 1) {
        writeAll(scratch / name, std::string(bytes, 'x'));
        return scratch / name;
    }
    std::vector<std::string> names() const {
        std::vector<std::string> texts;
        for (const FolderRow& row : batch.lvFolder)
            texts.push_back(row.text);
        return texts;
    }
    std::vector<bool> checks() const {
        std::vector<bool> all;
        for (const FolderRow& row : batch.lvFolder)
            all.push_back(row.checked);
        return all;
    }
    void list() { batch.ChangeFolder(folder); }

    ScratchFolder scratch;
    const std::string folder = scratch.path().string();
    Recorder recorder;
    cBatch batch{recorder};
};

TEST_F(ImageSelection, AFolderGoesToListSettingsAndStatusBar) {
    file("one.jpg");
    list();
    EXPECT_EQ(batch.Fil.path, folder);
    EXPECT_THAT(batch.Fil.names, ElementsAre("one.jpg"));
    EXPECT_EQ(batch.FT, folder);
    EXPECT_EQ(batch.startupRecord.lastFolder.rightTrimmed(), folder);
    EXPECT_EQ(batch.SB[4].text, "Current Directory : " + folder);
    EXPECT_EQ(batch.SB[3].text, "Selected File(s):1");
    EXPECT_TRUE(recorder.hasChanged("SB(5)"));
    EXPECT_TRUE(recorder.hasChanged("SB(4)"));
    EXPECT_TRUE(recorder.hasChanged("lvFolder"));
}

TEST_F(ImageSelection, AnEmptyFolderShowsNoFilesAndTheirNumber) {
    file("one.jpg");
    list();
    std::filesystem::remove(scratch / "one.jpg");
    list();
    EXPECT_THAT(batch.lvFolder, IsEmpty());
    EXPECT_EQ(batch.SB[3].text, "Selected File(s):0");
}

TEST_F(ImageSelection, ARowTellsNameSizeTypePathAndIcon) {
    const std::string path = file("Sun.Set.JPG", 1536);
    list();
    ASSERT_EQ(batch.lvFolder.size(), 1U);
    const FolderRow& row = batch.lvFolder[0];
    EXPECT_EQ(row.text, "Sun.Set.JPG");
    EXPECT_EQ(row.column1, "1.5 KB");
    EXPECT_EQ(row.column2, "JPG File");
    EXPECT_EQ(row.Tag, path);
    EXPECT_EQ(row.smallIcon, "jpg");
    EXPECT_TRUE(row.checked);
}

TEST_F(ImageSelection, SizesHaveOneDecimalAndNoneThatIsZero) {
    const std::vector<std::pair<size_t, std::string>> cases = {
        {0, "0 KB"},    {1, "0 KB"},      {256, "0.2 KB"},  {768, "0.8 KB"},     {1024, "1 KB"},
        {1075, "1 KB"}, {1076, "1.1 KB"}, {10240, "10 KB"}, {1048575, "1024 KB"}};
    for (const auto& [bytes, text] : cases) {
        file("a.png", bytes);
        list();
        EXPECT_EQ(batch.lvFolder.at(0).column1, text) << bytes;
    }
}

TEST_F(ImageSelection, TheSystemNamesTheTypes) {
    struct Naming : Recorder {
        int asked = 0;
        std::string fileTypeName(const std::string& extension) override {
            ++asked;
            return "a picture (" + extension + ")";
        }
    } naming;
    cBatch named(naming);
    for (const char* name : {"a.png", "b.PNG", "c.gif"})
        file(name);
    named.ChangeFolder(folder);
    EXPECT_EQ(named.lvFolder.at(1).column2, "a picture (png)");
    EXPECT_EQ(named.lvFolder.at(2).column2, "a picture (gif)");
    EXPECT_EQ(naming.asked, 2) << "once for each type";
}

TEST_F(ImageSelection, OnlyAcceptedExtensionsAreListedInWhateverCase) {
    const std::vector<std::string> accepted = {
        "bmp", "jpg", "jpeg", "cut", "lbm", "pcd", "pic", "png",  "ppm", "pbm",
        "pgm", "sgi", "tga",  "vst", "vda", "icb", "tif", "tiff", "lif", "mng",
        "jng", "dcx", "psd",  "pdd", "psp", "pix", "pxr", "xpm",  "rgb", "rgba",
        "bw",  "gif", "wmf",  "emf", "dib", "koa", "ras", "iff",  "pcx"};
    std::vector<std::string> expected;
    for (const std::string& extension : accepted)
        expected.push_back(std::filesystem::path(file("a." + extension)).filename());
    for (const char* other : {"a.webp", "a.txt", "a.cur", "a.wbmp", "a.raw", "a.dds", "a.targa",
                              "jpg", "a.", "a.jpg.bak", "a.qpkl"})
        file(other);
    expected.push_back(std::filesystem::path(file("B.TiFf")).filename());
    std::sort(expected.begin(), expected.end());
    list();
    EXPECT_EQ(names(), expected);
    EXPECT_EQ(batch.SB[3].text, "Selected File(s):40");
}

TEST_F(ImageSelection, FoldersAndDraftsAreNoFiles) {
    std::filesystem::create_directory(scratch.path() / "folder.jpg");
    file("b.jpg");
    file("a.jpg");
    std::filesystem::create_symlink("a.jpg", scratch.path() / "c.jpg");
    list();
    EXPECT_THAT(names(), ElementsAre("a.jpg", "b.jpg", "c.jpg"));
}

TEST_F(ImageSelection, TheRootIsJoinedWithoutASecondSeparator) {
    batch.Fil = {"/", {"one.jpg"}};
    batch.ListFiles();
    ASSERT_EQ(batch.lvFolder.size(), 1U);
    EXPECT_EQ(batch.lvFolder[0].Tag, "/one.jpg");
    EXPECT_EQ(batch.lvFolder[0].column1, "") << "there is no such file";
    batch.Fil = {"/x", {"one.jpg"}};
    batch.ListFiles();
    EXPECT_EQ(batch.lvFolder.at(0).Tag, "/x/one.jpg");
}

TEST_F(ImageSelection, ASeparatorAtTheFoldersEndIsNotDoubled) {
    file("one.jpg");
    batch.ChangeFolder(folder + "/");
    EXPECT_EQ(batch.lvFolder.at(0).Tag, scratch / "one.jpg");
    EXPECT_EQ(batch.Fil.path, folder);
}

TEST_F(ImageSelection, AFolderThatCannotBeReadIsEmpty) {
    batch.ChangeFolder(scratch / "missing");
    EXPECT_THAT(batch.lvFolder, IsEmpty());
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(ImageSelection, RowsAreCheckedAllTogetherAndOneByOne) {
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg"})
        file(name);
    list();
    EXPECT_THAT(checks(), ElementsAre(true, true, true));
    batch.CheckAll(false);
    EXPECT_THAT(checks(), ElementsAre(false, false, false));
    batch.CheckRows({1}, true);
    EXPECT_THAT(checks(), ElementsAre(false, true, false));
    batch.CheckRows({3}, true);
    batch.CheckRows({-1}, true);
    EXPECT_THAT(checks(), ElementsAre(false, true, false));
    batch.CheckAll(true);
    EXPECT_THAT(checks(), ElementsAre(true, true, true));
    batch.CheckRows({0}, false);
    list();
    EXPECT_THAT(checks(), ElementsAre(true, true, true)) << "a new listing is checked anew";
}

TEST_F(ImageSelection, NamesSortWithoutCaseAndNumbersByValue) {
    for (const char* name : {"scan10.jpg", "Scan9.jpg", "alpha.jpg", "Beta.jpg", "scan 2.jpg"})
        file(name);
    list();
    batch.SortFolder(0, false);
    EXPECT_THAT(names(),
                ElementsAre("alpha.jpg", "Beta.jpg", "scan 2.jpg", "Scan9.jpg", "scan10.jpg"));
    batch.SortFolder(0, true);
    EXPECT_THAT(names(),
                ElementsAre("scan10.jpg", "Scan9.jpg", "scan 2.jpg", "Beta.jpg", "alpha.jpg"));
}

TEST_F(ImageSelection, SizesSortByBytesAndTypesByName) {
    file("a.png", 2000);
    file("b.gif", 300);
    file("c.png", 1999);
    file("d.bmp", 10000);
    list();
    batch.SortFolder(1, false);
    EXPECT_THAT(names(), ElementsAre("b.gif", "c.png", "a.png", "d.bmp"));
    batch.SortFolder(1, true);
    EXPECT_THAT(names(), ElementsAre("d.bmp", "a.png", "c.png", "b.gif"));
    batch.SortFolder(2, false);
    EXPECT_THAT(names(), ElementsAre("d.bmp", "b.gif", "a.png", "c.png"));
}

TEST_F(ImageSelection, ASortOrderHoldsForTheNextFolderToo) {
    file("a.png", 20);
    file("b.png", 10);
    list();
    batch.SortFolder(1, false);
    batch.CheckRows({0}, false);
    list();
    EXPECT_THAT(names(), ElementsAre("b.png", "a.png"));
}

TEST_F(ImageSelection, AFileManagersDropLeadsTheTreeToTheFolder) {
    const std::string picture = file("a.jpg");
    batch.DropOnFolder({picture, "/"});
    EXPECT_EQ(batch.FT, folder);
    EXPECT_TRUE(recorder.hasChanged("FT"));
    batch.DropOnFolder({"/"});
    EXPECT_EQ(batch.FT, "/");
    batch.DropOnFolder({folder + "/"});
    EXPECT_EQ(batch.FT, folder);
    recorder.changes.clear();
    batch.DropOnFolder({});
    batch.DropOnFolder({"/no/such/folder/a.jpg"});
    EXPECT_EQ(batch.FT, folder);
    EXPECT_FALSE(recorder.hasChanged("FT"));
}

TEST(NaturalOrder, ComparesNumbersByValueAndLettersWithoutCase) {
    const std::vector<std::string> ordered = {"",     "1",      "02",     "10",    "a",
                                              "A1b2", "a1B10c", "a1b10d", "a007c", "b"};
    for (size_t i = 0; i < ordered.size(); ++i)
        for (size_t j = 0; j < ordered.size(); ++j)
            EXPECT_EQ(comesBefore(ordered[i], ordered[j]), i < j)
                << ordered[i] << " " << ordered[j];
    EXPECT_FALSE(comesBefore("IMG_1", "img_01"));
    EXPECT_FALSE(comesBefore("img_01", "IMG_1"));
    EXPECT_TRUE(comesBefore("99999999999999999999998", "99999999999999999999999"));
}

}  // namespace
}  // namespace tessarine
