#include <filesystem>
#include <system_error>

#include <gtest/gtest.h>

#include "batch/batch.h"
#include "batch/list_files.h"
#include "support/files.h"
#include "support/paths.h"
#include "support/recorder.h"

namespace tessarine {
namespace {

using tests::readAll;
using tests::Recorder;
using tests::ScratchFolder;
using tests::writeAll;

std::string recordOf(const std::string& path) { return path + std::string(150 - path.size(), ' '); }

class PictureList : public testing::Test {
  protected:
    void add(const std::string& path) {
        BasketItem item;
        item.text = "shown";
        item.Tag = path;
        batch.lvSelected.push_back(item);
    }
    std::string saved(const std::string& name = "list.qpkl") {
        recorder.saveAnswers.push_back(scratch / name);
        batch.SaveList();
        return readAll(scratch / name);
    }
    void load(const std::string& bytes, const std::string& name = "list.qpkl") {
        writeAll(scratch / name, bytes);
        recorder.openAnswers.push_back(scratch / name);
        LoadList(recorder, batch.lvSelected);
    }
    std::string picture(const std::string& name) {
        writeAll(scratch / name, "picture");
        return scratch / name;
    }
    std::vector<std::string> basket() const {
        std::vector<std::string> paths;
        for (const BasketItem& item : batch.lvSelected)
            paths.push_back(item.Tag);
        return paths;
    }
    static std::vector<Recorder::Box> missingBox(const std::string& number) {
        return {{number + " files in this picture List are no longer valid! They will be not "
                          "listed.",
                 Icon::critical, "INVALID FILE ASSOCIATIONS!"}};
    }

    ScratchFolder scratch;
    Recorder recorder;
    cBatch batch{recorder};
};

TEST_F(PictureList, ThreePathsMake450BytesPaddedWithBlanks) {
    for (const char* path : {"/a/one.jpg", "/a/two.png", "/b/three"})
        add(path);
    const std::string bytes = saved();
    EXPECT_EQ(bytes.size(), 450U);
    EXPECT_EQ(bytes, recordOf("/a/one.jpg") + recordOf("/a/two.png") + recordOf("/b/three"));
    EXPECT_EQ(recorder.saveFilters, (std::vector<std::string>{"Picture List(*.qpkl)|*.qpkl"}));
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(PictureList, AnEmptyBasketIsNotSaved) {
    recorder.saveAnswers.push_back(scratch / "list.qpkl");
    batch.SaveList();
    EXPECT_TRUE(recorder.saveFilters.empty());
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
}

TEST_F(PictureList, CancelsChangeNothing) {
    add("/a/one.jpg");
    batch.SaveList();
    EXPECT_EQ(recorder.saveFilters.size(), 1U);
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
    LoadList(recorder, batch.lvSelected);
    EXPECT_EQ(recorder.openFilters, (std::vector<std::string>{"Picture List(*.qpkl)|*.qpkl"}));
    EXPECT_EQ(basket(), (std::vector<std::string>{"/a/one.jpg"}));
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(PictureList, ANameTypedWithoutAnExtensionStaysWithoutIt) {
    add("/a/one.jpg");
    EXPECT_EQ(saved("list"), recordOf("/a/one.jpg"));
}

TEST_F(PictureList, AListThatCannotBeWrittenIsPassedOver) {
    add("/a/one.jpg");
    recorder.saveAnswers.push_back(scratch / "missing/list.qpkl");
    batch.SaveList();
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(PictureList, ItemsTakeTheirPartsFromThePath) {
    const std::string path = picture("Sunset.Sea.JPG");
    load(recordOf(path));
    ASSERT_EQ(batch.lvSelected.size(), 1U);
    EXPECT_EQ(batch.lvSelected[0].text, "Sunset.Sea");
    EXPECT_EQ(batch.lvSelected[0].smallIcon, "jpg");
    EXPECT_EQ(batch.lvSelected[0].Tag, path);
    EXPECT_EQ(batch.lvSelected[0].column1, scratch.path().string());
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(PictureList, ANameWithoutAnExtensionLosesItsLastCharacter) {
    load(recordOf(picture("scan")));
    ASSERT_EQ(batch.lvSelected.size(), 1U);
    EXPECT_EQ(batch.lvSelected[0].text, "sca");
    EXPECT_EQ(batch.lvSelected[0].smallIcon, "");
    load(recordOf(picture("x")));
    EXPECT_EQ(batch.lvSelected.at(0).text, "");
    load(recordOf(picture("dot.")));
    EXPECT_EQ(batch.lvSelected.at(0).text, "dot");
}

TEST_F(PictureList, TheOrderIsThatOfTheRecordsWithoutTheMissingOnes) {
    const std::string one = picture("one.png");
    const std::string two = picture("two.png");
    add("/an/older/one.png");
    load(recordOf(two) + recordOf(scratch / "gone.png") + recordOf(one) + recordOf("") +
         recordOf(two));
    EXPECT_EQ(basket(), (std::vector<std::string>{two, one, two}));
    EXPECT_EQ(recorder.boxes, missingBox("2"));
}

TEST_F(PictureList, AListOfWhichAllFilesHaveGoneEmptiesTheBasket) {
    add("/an/older/one.png");
    load(recordOf(scratch / "a.png") + recordOf(scratch / "b.png") + recordOf(scratch / "c.png"));
    EXPECT_TRUE(batch.lvSelected.empty());
    EXPECT_EQ(recorder.boxes, missingBox("3"));
}

TEST_F(PictureList, AFolderIsNoExistingFile) {
    load(recordOf(scratch.path().string()));
    EXPECT_TRUE(batch.lvSelected.empty());
    EXPECT_EQ(recorder.boxes, missingBox("1"));
}

TEST_F(PictureList, PathsOf151CharactersComeBackCutAndAreMissing) {
    const std::string folder = scratch.path().string() + "/";
    const std::string fits(150 - folder.size(), 'f');
    const std::string longer(151 - folder.size(), 'g');
    add(picture(fits));
    add(picture(longer));
    const std::string bytes = saved();
    EXPECT_EQ(bytes, folder + fits + folder + longer.substr(1));
    load(bytes);
    EXPECT_EQ(basket(), (std::vector<std::string>{folder + fits}));
    EXPECT_EQ(recorder.boxes, missingBox("1"));
}

TEST_F(PictureList, BlanksAroundAPathAreTakenOff) {
    const std::string path = picture("one.png");
    load(recordOf("  " + path));
    EXPECT_EQ(basket(), (std::vector<std::string>{path}));
}

TEST_F(PictureList, APathPaddedWithZerosReadsLikeOneWithBlanks) {
    const std::string path = picture("one.png");
    std::string bytes = path;
    bytes.resize(150, '\0');
    load(bytes);
    EXPECT_EQ(basket(), (std::vector<std::string>{path}));
}

TEST_F(PictureList, HalfARecordCountsWhereTheCountGoesToAnEvenNumber) {
    const std::vector<std::pair<size_t, std::string>> cases = {
        {0, ""}, {75, ""}, {76, "1"}, {150, "1"}, {224, "1"}, {225, "2"}, {375, "2"}, {376, "3"}};
    for (const auto& [length, missing] : cases) {
        recorder.boxes.clear();
        load(std::string(length, 'x'));
        EXPECT_EQ(recorder.boxes,
                  missing.empty() ? std::vector<Recorder::Box>() : missingBox(missing))
            << length;
    }
}

TEST_F(PictureList, AShortLastRecordReadsAsFarAsItGoes) {
    const std::string path = picture("one.png");
    load(recordOf(path) + path + std::string(76 - std::min<size_t>(path.size(), 75), ' '));
    EXPECT_EQ(basket(), (std::vector<std::string>{path, path}));
}

TEST_F(PictureList, AnotherExtensionIsRefusedAndTheBasketStays) {
    add("/a/one.jpg");
    const std::string path = picture("one.png");
    for (const char* name : {"list.qfk", "list", "qpkl"}) {
        recorder.boxes.clear();
        load(recordOf(path), name);
        EXPECT_EQ(recorder.boxes,
                  (std::vector<Recorder::Box>{{"This is  not a valid picture List!", Icon::critical,
                                               "INVALID PICTURE LIST"}}));
        EXPECT_EQ(basket(), (std::vector<std::string>{"/a/one.jpg"}));
    }
}

TEST_F(PictureList, TheExtensionMayStandInCapitals) {
    const std::string path = picture("one.png");
    load(recordOf(path), "list.QPKL");
    EXPECT_EQ(basket(), (std::vector<std::string>{path}));
}

TEST_F(PictureList, AShorterListLeavesTheOldRecordsBehind) {
    const std::string one = picture("one.png");
    const std::string two = picture("two.png");
    writeAll(scratch / "list.qpkl", recordOf(one) + recordOf(two));
    add(two);
    EXPECT_EQ(saved(), recordOf(two) + recordOf(two));
    recorder.openAnswers.push_back(scratch / "list.qpkl");
    LoadList(recorder, batch.lvSelected);
    EXPECT_EQ(basket(), (std::vector<std::string>{two, two}));
}

TEST_F(PictureList, MorePicturesThanSixteenBitsCountAreReadWithoutADialogOnly) {
    writeAll(scratch / "list.qpkl", "");
    std::filesystem::resize_file(scratch / "list.qpkl", uintmax_t{40000} * 150);
    add("/a/one.jpg");
    recorder.openAnswers.push_back(scratch / "list.qpkl");
    LoadList(recorder, batch.lvSelected);
    EXPECT_TRUE(batch.lvSelected.empty());
    EXPECT_TRUE(recorder.boxes.empty());
    EXPECT_EQ(readPictureList(scratch / "list.qpkl").size(), 40000U);
}

TEST_F(PictureList, WithoutADialogPathsComeBackWhetherTheyExistOrNot) {
    const std::vector<std::string> paths = {"/gone/one.png", "/gone/two.png", ""};
    writePictureList(scratch / "list", paths);
    EXPECT_EQ(readPictureList(scratch / "list"), paths);
    EXPECT_THROW(readPictureList(scratch / "missing"), std::system_error);
    EXPECT_THROW(writePictureList(scratch / "no/list", paths), std::system_error);
}

}  // namespace
}  // namespace tessarine
