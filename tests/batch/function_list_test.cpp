#include <algorithm>
#include <filesystem>
#include <limits>
#include <system_error>

#include <gtest/gtest.h>

#include "batch/batch.h"
#include "batch/list_files.h"
#include "support/cases.h"
#include "support/files.h"
#include "support/paths.h"
#include "support/recorder.h"

namespace tessarine {
namespace {

using tests::readAll;
using tests::Recorder;
using tests::ScratchFolder;
using tests::writeAll;

std::string padded(const std::string& text) { return text + std::string(30 - text.size(), ' '); }

/// Bytes written out as numbers.
std::string bytesOf(std::initializer_list<int> values) {
    std::string bytes;
    for (const int value : values)
        bytes.push_back(static_cast<char>(value));
    return bytes;
}

TrayRow rowOf(const std::string& name, int32_t id, std::array<std::string, 9> columns) {
    TrayRow row;
    row.text = name;
    row.Tag = id;
    row.columns = std::move(columns);
    return row;
}

const std::array<std::string, 9> plainColumns = {"0", "0", "0", "0", "0", "False", "", "0", "0"};

class FunctionList : public testing::Test {
  protected:
    void add(const TrayRow& row) {
        batch.Ltray.push_back(row);
        batch.LSelectedFunctions.push_back({row.text, static_cast<int32_t>(batch.Ltray.size())});
    }
    std::string saved(const std::string& name = "list.qfk") {
        recorder.saveAnswers.push_back(scratch / name);
        batch.SaveFunctionList();
        return readAll(scratch / name);
    }
    void load(const std::string& bytes, const std::string& name = "list.qfk") {
        writeAll(scratch / name, bytes);
        recorder.openAnswers.push_back(scratch / name);
        batch.LoadFunctionList();
    }
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const ChainEntry& entry : batch.LSelectedFunctions)
            all.push_back(entry.text);
        return all;
    }

    ScratchFolder scratch;
    Recorder recorder;
    cBatch batch{recorder};
};

const std::string lensBytes = padded("Lens") + padded("27") +
                              bytesOf({0x2C, 0x01, 0x00, 0x00,  // 300
                                       0xFE, 0xFF, 0xFF, 0xFF,  // -2
                                       0x07, 0x00, 0x00, 0x00,  // 7
                                       0xFF, 0x00, 0x00, 0x00,  // red
                                       0xFF, 0xFF, 0xFF, 0xFF,  // no colour
                                       0xFF, 0xFF}) +           // true
                              padded("slanting") +              //
                              bytesOf({0x00, 0x00, 0xC8, 0x42,  // 100
                                       0x00, 0x00, 0x48, 0x41,  // 12.5
                                       0x00, 0x00, 0x00, 0x00});

const TrayRow lensRow =
    rowOf("Lens", 27, {"300", "-2", "7", "255", "-1", "True", "slanting", "100", "12.5"});

TEST_F(FunctionList, ARecordHasItsFieldsAtTheirPlaces) {
    add(lensRow);
    EXPECT_EQ(saved(), lensBytes);
    EXPECT_EQ(lensBytes.size(), 124U);
    EXPECT_EQ(recorder.saveFilters, (std::vector<std::string>{"Function List(*.qfk)|*.qfk"}));
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(FunctionList, ThreeFunctionsMake372Bytes) {
    for (int i = 0; i < 3; ++i)
        add(lensRow);
    EXPECT_EQ(saved(), lensBytes + lensBytes + lensBytes);
}

TEST_F(FunctionList, AnEmptyChainIsNotSaved) {
    batch.Ltray.push_back(lensRow);
    recorder.saveAnswers.push_back(scratch / "list.qfk");
    batch.SaveFunctionList();
    EXPECT_TRUE(recorder.saveFilters.empty());
    EXPECT_FALSE(std::filesystem::exists(scratch / "list.qfk"));
}

TEST_F(FunctionList, ACancelledSaveWritesNothing) {
    add(lensRow);
    recorder.saveAnswers.push_back(std::nullopt);
    batch.SaveFunctionList();
    EXPECT_EQ(recorder.saveFilters.size(), 1U);
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
    EXPECT_EQ(batch.LSelectedFunctions.size(), 1U);
}

TEST_F(FunctionList, ANameTypedWithoutAnExtensionStaysWithoutIt) {
    add(lensRow);
    EXPECT_EQ(saved("list"), lensBytes);
}

TEST_F(FunctionList, AMovedFunctionTakesItsNameAlongAndLeavesItsRow) {
    add(rowOf("Blur", 6, plainColumns));
    add(rowOf("Emboss", 9, plainColumns));
    std::swap(batch.LSelectedFunctions[0], batch.LSelectedFunctions[1]);
    const std::string bytes = saved();
    load(bytes);
    EXPECT_EQ(names(), (std::vector<std::string>{"Emboss", "Blur"}));
    ASSERT_EQ(batch.Ltray.size(), 2U);
    EXPECT_EQ(batch.Ltray[0].Tag, 6);
    EXPECT_EQ(batch.Ltray[1].Tag, 9);
    EXPECT_EQ(batch.Ltray[0].text, "Emboss");
}

TEST_F(FunctionList, AShortenedChainIsWrittenWithTheFirstRows) {
    add(rowOf("Blur", 6, plainColumns));
    add(rowOf("Emboss", 9, plainColumns));
    batch.LSelectedFunctions.erase(batch.LSelectedFunctions.begin());
    const std::string bytes = saved();
    ASSERT_EQ(bytes.size(), 124U);
    EXPECT_EQ(bytes.substr(0, 60), padded("Emboss") + padded("6"));
}

TEST_F(FunctionList, LongTextsAreCutAndShortOnesPadded) {
    TrayRow row = lensRow;
    row.text = "A name that has more than thirty letters";
    row.column(7) = "a style that has more than thirty letters";
    add(row);
    const std::string bytes = saved();
    ASSERT_EQ(bytes.size(), 124U);
    EXPECT_EQ(bytes.substr(0, 30), "A name that has more than thir");
    EXPECT_EQ(bytes.substr(82, 30), "a style that has more than thi");
    load(bytes);
    EXPECT_EQ(names(), (std::vector<std::string>{"A name that has more than thir"}));
    EXPECT_EQ(batch.funcStyle, "a style that has more than thi");
}

TEST_F(FunctionList, TheLongestNamesOfTheCatalogueFit) {
    for (const TreeNode& node : catalogueTree())
        EXPECT_LE(node.text.size(), 30U) << node.text;
}

TEST_F(FunctionList, AColumnThatDoesNotConvertLeavesTheFieldOfTheRecordBefore) {
    add(lensRow);
    add(rowOf("Blur", 6, {"x", "5", "", "none", "9", "maybe", "", "", "4"}));
    const std::string second = saved().substr(124);
    EXPECT_EQ(second,
              padded("Blur") + padded("6") + bytesOf({0x2C, 1, 0, 0, 5, 0, 0, 0, 7,    0,   0, 0,
                                                      0xFF, 0, 0, 0, 9, 0, 0, 0, 0xFF, 0xFF}) +
                  std::string(30, ' ') + bytesOf({0, 0, 0xC8, 0x42, 0, 0, 0x80, 0x40, 0, 0, 0, 0}));
}

TEST_F(FunctionList, AShorterListLeavesTheOldRecordsBehind) {
    writeAll(scratch / "list.qfk", lensBytes + lensBytes + "tail");
    add(rowOf("Blur", 6, plainColumns));
    const std::string bytes = saved();
    EXPECT_EQ(bytes.size(), 252U);
    EXPECT_EQ(bytes.substr(124), lensBytes + "tail");
    recorder.openAnswers.push_back(scratch / "list.qfk");
    batch.LoadFunctionList();
    EXPECT_EQ(names(), (std::vector<std::string>{"Blur", "Lens"}));
}

TEST_F(FunctionList, AListThatCannotBeWrittenIsPassedOver) {
    add(lensRow);
    recorder.saveAnswers.push_back(scratch / "missing/list.qfk");
    batch.SaveFunctionList();
    EXPECT_TRUE(recorder.boxes.empty());
    EXPECT_EQ(batch.LSelectedFunctions.size(), 1U);
}

TEST_F(FunctionList, ALoadedRecordFillsChainRowAndWorkingState) {
    load(lensBytes);
    EXPECT_EQ(recorder.openFilters, (std::vector<std::string>{"Functions List(*.qfk)|*.qfk"}));
    ASSERT_EQ(batch.LSelectedFunctions.size(), 1U);
    EXPECT_EQ(batch.LSelectedFunctions[0].text, "Lens");
    EXPECT_EQ(batch.LSelectedFunctions[0].itemData, 1);
    ASSERT_EQ(batch.Ltray.size(), 1U);
    EXPECT_EQ(batch.Ltray[0].text, "Lens");
    EXPECT_EQ(batch.Ltray[0].Tag, 27);
    EXPECT_EQ(batch.Ltray[0].columns, lensRow.columns);
    EXPECT_EQ(batch.functionId, 27);
    EXPECT_EQ(batch.funcParam, (std::array<int32_t, 3>{300, -2, 7}));
    EXPECT_EQ(batch.funcColor, (std::array<int32_t, 2>{255, -1}));
    EXPECT_TRUE(batch.funcOption);
    EXPECT_EQ(batch.funcStyle, "slanting");
    EXPECT_EQ(batch.pickX, 100.0F);
    EXPECT_EQ(batch.pickY, 12.5F);
    EXPECT_TRUE(recorder.boxes.empty());
    EXPECT_TRUE(recorder.hasChanged("LSelectedFunctions"));
    EXPECT_TRUE(recorder.hasChanged("iDst"));
}

TEST_F(FunctionList, ChainAndPoolAgreeAfterALoad) {
    add(rowOf("Blur", 6, plainColumns));
    batch.Ltray.push_back(lensRow);
    load(lensBytes + lensBytes + lensBytes);
    ASSERT_EQ(batch.Ltray.size(), 3U);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(batch.LSelectedFunctions.at(i).itemData, static_cast<int32_t>(i + 1));
    }
}

TEST_F(FunctionList, RowsLeftBehindAnEmptyChainStayInThePool) {
    // Clearing does nothing where the chain is empty, and removed functions keep their rows.
    batch.Ltray.push_back(rowOf("Blur", 6, plainColumns));
    load(lensBytes);
    ASSERT_EQ(batch.Ltray.size(), 2U);
    EXPECT_EQ(batch.LSelectedFunctions.at(0).itemData, 2);
}

TEST_F(FunctionList, LoadingRebuildsThePictureFromTheWholeList) {
    const std::string negative = padded("Negative") + padded("51") + std::string(22, '\0') +
                                 std::string(30, ' ') + std::string(12, '\0');
    load(negative);
    PixelBuffer expected = batch.originalBits;
    for (int32_t y = 0; y < expected.height(); ++y) {
        for (int32_t x = 0; x < expected.width(); ++x) {
            const Pixel p = batch.originalBits.at(x, y);
            expected.writableBlock()[expected.offsetOfRow(y) + x] = {
                static_cast<uint8_t>(255 - p.blue), static_cast<uint8_t>(255 - p.green),
                static_cast<uint8_t>(255 - p.red), p.fourth};
        }
    }
    EXPECT_EQ(batch.workBits, expected);
    EXPECT_EQ(batch.cFilter.Bits(), expected);
    load(negative + negative);
    EXPECT_EQ(batch.workBits, batch.originalBits);
}

TEST_F(FunctionList, ACancelledLoadKeepsTheBasket) {
    add(lensRow);
    recorder.openAnswers.push_back(std::nullopt);
    batch.LoadFunctionList();
    EXPECT_EQ(batch.LSelectedFunctions.size(), 1U);
    EXPECT_EQ(batch.Ltray.size(), 1U);
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(FunctionList, AnotherExtensionIsRefusedAndTheBasketStays) {
    add(rowOf("Blur", 6, plainColumns));
    for (const char* name : {"list.txt", "list", "list.qfk.bak", "qfk"}) {
        recorder.boxes.clear();
        load(lensBytes, name);
        EXPECT_EQ(recorder.boxes,
                  (std::vector<Recorder::Box>{{"This is  not a valid Function List!",
                                               Icon::critical, "Invalid Functions List"}}));
        EXPECT_EQ(names(), (std::vector<std::string>{"Blur"}));
    }
}

TEST_F(FunctionList, TheExtensionMayStandInCapitals) {
    load(lensBytes, "list.QFK");
    EXPECT_EQ(names(), (std::vector<std::string>{"Lens"}));
}

TEST_F(FunctionList, HalfARecordCountsWhereTheCountGoesToAnEvenNumber) {
    // The part behind whole records that makes another one: more than 62 of 124 bytes, or 62
    // behind an odd number of whole ones.
    const std::vector<std::pair<size_t, size_t>> cases = {{0, 0},   {61, 0},  {62, 0},  {63, 1},
                                                          {124, 1}, {185, 1}, {186, 2}, {310, 2},
                                                          {311, 3}, {434, 4}};
    for (const auto& [length, count] : cases) {
        std::string bytes = lensBytes + lensBytes + lensBytes + lensBytes;
        bytes.resize(length);
        load(bytes);
        EXPECT_EQ(batch.LSelectedFunctions.size(), count) << length;
        EXPECT_EQ(readFunctionList(scratch / "list.qfk").size(), count) << length;
    }
}

TEST_F(FunctionList, AShortLastRecordReadsAsFarAsItGoes) {
    load(lensBytes + lensBytes.substr(0, 66));
    ASSERT_EQ(batch.Ltray.size(), 2U);
    EXPECT_EQ(batch.Ltray[1].text, "Lens");
    EXPECT_EQ(batch.Ltray[1].Tag, 27);
    EXPECT_EQ(batch.Ltray[1].columns,
              (std::array<std::string, 9>{"300", "65534", "0", "0", "0", "False", "", "0", "0"}));
}

TEST_F(FunctionList, AnIdThatIsNoNumberKeepsTheLastOne) {
    std::string bad = lensBytes;
    bad.replace(30, 30, padded("Lens"));
    batch.functionId = 5;
    load(bad + lensBytes + bad);
    ASSERT_EQ(batch.Ltray.size(), 3U);
    EXPECT_EQ(batch.Ltray[0].Tag, 5);
    EXPECT_EQ(batch.Ltray[1].Tag, 27);
    EXPECT_EQ(batch.Ltray[2].Tag, 27);
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(FunctionList, TextsPaddedWithZerosReadLikeThoseWithBlanks) {
    std::string bytes = lensBytes;
    for (const size_t field : {size_t{0}, size_t{30}, size_t{82}}) {
        for (size_t i = field; i < field + 30; ++i) {
            if (bytes[i] == ' ') bytes[i] = '\0';
        }
    }
    load(bytes);
    ASSERT_EQ(batch.Ltray.size(), 1U);
    EXPECT_EQ(batch.Ltray[0].text, "Lens");
    EXPECT_EQ(batch.Ltray[0].Tag, 27);
    EXPECT_EQ(batch.Ltray[0].columns, lensRow.columns);
}

TEST_F(FunctionList, BlanksAroundTextsAreTakenOff) {
    std::string bytes = lensBytes;
    bytes.replace(0, 30, padded("  Lens of glass"));
    bytes.replace(30, 30, padded("   27"));
    bytes.replace(82, 30, padded(" vertical"));
    load(bytes);
    EXPECT_EQ(names(), (std::vector<std::string>{"Lens of glass"}));
    EXPECT_EQ(batch.functionId, 27);
    EXPECT_EQ(batch.funcStyle, "vertical");
}

TEST_F(FunctionList, AnyOptionThatIsNotZeroIsTrue) {
    std::string bytes = lensBytes;
    bytes[80] = 1;
    bytes[81] = 0;
    load(bytes);
    EXPECT_EQ(batch.Ltray.at(0).column(6), "True");
    bytes[80] = 0;
    load(bytes);
    EXPECT_EQ(batch.Ltray.at(0).column(6), "False");
}

TEST_F(FunctionList, OtherContentIsReadAsItComes) {
    std::string bytes;
    for (int i = 0; i < 124 * 5 + 70; ++i)
        bytes.push_back(static_cast<char>(i * 37 + 11));
    load(bytes);
    EXPECT_EQ(batch.LSelectedFunctions.size(), 6U);
    EXPECT_TRUE(recorder.boxes.empty());
    EXPECT_EQ(saved("again.qfk").size(), 6U * 124U);
}

TEST_F(FunctionList, AFileThatIsNotThereEmptiesTheBasket) {
    add(rowOf("Blur", 6, plainColumns));
    recorder.openAnswers.push_back(scratch / "missing.qfk");
    batch.LoadFunctionList();
    EXPECT_TRUE(batch.LSelectedFunctions.empty());
    EXPECT_TRUE(recorder.boxes.empty());
    EXPECT_FALSE(std::filesystem::exists(scratch / "missing.qfk"));
}

TEST_F(FunctionList, MoreRecordsThanSixteenBitsCountAreNotRead) {
    writeAll(scratch / "list.qfk", "");
    std::filesystem::resize_file(scratch / "list.qfk", uintmax_t{32768} * 124);
    recorder.openAnswers.push_back(scratch / "list.qfk");
    batch.LoadFunctionList();
    EXPECT_TRUE(batch.LSelectedFunctions.empty());
    EXPECT_EQ(readFunctionList(scratch / "list.qfk").size(), 32768U);
}

TEST_F(FunctionList, WithoutADialogAMissingFileIsTold) {
    EXPECT_THROW(readFunctionList(scratch / "missing.qfk"), std::system_error);
    EXPECT_THROW(readFunctionList(scratch.path()), std::system_error);
    EXPECT_THROW(writeFunctionList(scratch / "no/list.qfk", {}), std::system_error);
}

TEST_F(FunctionList, ListsComeBackByteForByte) {
    const std::filesystem::path lists = tests::casesFolder() + "lists";
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(lists)) {
        const std::string path = entry.path().string();
        const std::string bytes = readAll(path);
        writeFunctionList(scratch / "records.qfk", readFunctionList(path));
        EXPECT_EQ(readAll(scratch / "records.qfk"), bytes) << path;
        std::filesystem::remove(scratch / "records.qfk");
        ++count;
    }
    EXPECT_GT(count, 100U);
}

TEST_F(FunctionList, LoadedListsAreSavedByteForByte) {
    const std::filesystem::path lists = tests::casesFolder() + "lists";
    for (int i = 0; i < 20; ++i) {
        const std::string name = "chain-0" + std::string(i < 10 ? "0" : "") + std::to_string(i);
        const std::string path = (lists / (name + ".qfk")).string();
        recorder.openAnswers.push_back(path);
        batch.LoadFunctionList();
        EXPECT_EQ(saved(name + ".qfk"), readAll(path)) << name;
    }
}

}  // namespace
}  // namespace tessarine
