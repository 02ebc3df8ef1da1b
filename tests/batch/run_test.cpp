#include <filesystem>
#include <set>

#include <gtest/gtest.h>

#include "batch/batch.h"
#include "batch/texts.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/program.h"
#include "support/recorder.h"

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using Status = PictureReport::Status;

constexpr int32_t brightnessNode = 2;
constexpr int32_t negativeNode = 23;
constexpr int16_t bmpRow = 8;

class Run : public testing::Test {
  protected:
    Run() {
        fs::create_directory(in);
        fs::create_directory(out);
        batch.txtDestination = out;
        batch.txtName = "Sample";
        batch.cboFormat.index = bmpRow;
    }

    void addFile(const std::string& path) {
        batch.lvSelected.push_back({fileNameOf(path), extensionOf(path), path, folderOf(path)});
    }
    /// A grey picture of its own size, in the basket.
    void addGrey(uint8_t level, int32_t width = 5, int32_t height = 4) {
        const std::string path = in + "/grey" + std::to_string(batch.lvSelected.size()) + ".ppm";
        writePixmap(path, drawBuffer(width, height, [=](int32_t, int32_t) {
                        return Pixel{level, level, level, 0};
                    }));
        addFile(path);
    }
    void addBrightness(int32_t level) {
        batch.SelectNode(brightnessNode);
        batch.MoveSlider(0, level);
        batch.AddFunction("Brightness");
    }
    void addNegative() {
        batch.SelectNode(negativeNode);
        batch.AddFunction("Negative");
    }
    /// Two pictures; before the second one a whole run under another name happens.
    void runWithAnotherInside() {
        addGrey(10);
        addGrey(20);
        platform.onGiveWay = {nullptr, [this] {
                                  batch.txtName = "Inner";
                                  batch.CmdBatchAll();
                                  batch.txtName = "Outer";
                              }};
        batch.CmdBatchAll();
    }
    PixelBuffer output(const std::string& name) const { return readBitmapFile(out + "/" + name); }
    int levelOf(const std::string& name) const { return output(name).at(0, 0).green; }
    std::set<std::string> outputs() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(out))
            names.insert(entry.path().filename().string());
        return names;
    }
    std::vector<Status> statuses() const {
        std::vector<Status> all;
        for (const PictureReport& entry : batch.report.entries())
            all.push_back(entry.status);
        return all;
    }
    void expectOneBox(const std::string& text, const std::string& title) {
        ASSERT_EQ(platform.boxes.size(), 1U);
        EXPECT_EQ(platform.boxes[0], (Recorder::Box{text, Icon::information, title}));
        EXPECT_EQ(batch.RTF, "");
        EXPECT_FALSE(platform.hasChanged("pb"));
        EXPECT_TRUE(outputs().empty());
    }

    const ScratchFolder scratch;
    const std::string in = scratch / "in";
    const std::string out = scratch / "out";
    Recorder platform;
    cBatch batch{platform};
};

TEST_F(Run, AnEmptyBasketIsToldAndNothingElseHappens) {
    batch.CmdBatchAll();
    expectOneBox("No File(s) selected for Batch Processing!", "Tessarine");
}

TEST_F(Run, AFolderThatDoesNotExistIsToldAndNotStored) {
    addGrey(10);
    batch.txtDestination = out + "/none";
    batch.CmdBatchAll();
    expectOneBox("Invalid Folder Path", "Tessarine");
    EXPECT_EQ(batch.startupRecord.destinationFolder.rightTrimmed(), "");
}

TEST_F(Run, AFolderThatVanishesBetweenTheTwoChecksIsToldByTheSecond) {
    struct Vanishing : Recorder {
        bool folderExists(const std::string&) override { return asked++ == 0; }
        int asked = 0;
    } vanishing;
    cBatch other(vanishing);
    other.lvSelected.push_back({"a", "ppm", in + "/a.ppm", in});
    other.txtDestination = out;
    other.cboFormat.index = bmpRow;
    other.CmdBatchAll();
    ASSERT_EQ(vanishing.boxes.size(), 1U);
    EXPECT_EQ(vanishing.boxes[0], (Recorder::Box{"Please Specify a valid Destination Folder!",
                                                 Icon::information, "Kestrovane"}));
    EXPECT_EQ(other.startupRecord.destinationFolder.rightTrimmed(), out + "/");
}

TEST_F(Run, AMissingFormatIsToldAfterTheDestinationHasBeenStored) {
    addGrey(10);
    batch.cboFormat.index = -1;
    batch.CmdBatchAll();
    expectOneBox("Please specify a file format for all the processed file(s)!", "Tessarine");
    EXPECT_EQ(batch.startupRecord.destinationFolder.rightTrimmed(), out + "/");
}

TEST_F(Run, TheOverviewOpensWithTheBareCountAndEndsWithTheWaitingLine) {
    addGrey(10);
    addGrey(20);
    addGrey(30);
    addBrightness(1);
    addNegative();
    batch.CmdBatchAll();
    std::string expected =
        "3\r\n"
        "Total Number of functions to be Applied: 2\r\n"
        "Destination Folder: " +
        out +
        "/\r\n"
        "Format Selected to save the processed images: 'BMP - Windows Bitmap '\r\n"
        "Generic Name for the processed image: 'Sample'\r\n"
        " Please Wait... Batch Image Processing in Progress!\r\n\r\n";
    for (const char* number : {"0", "1", "2"})
        expected += std::string("\r\n\r\n Processing grey") + number +
                    ".ppm\r\n Applied Brightness\r\n Applied Negative\r\n Processed Image Saved as "
                    "Sample" +
                    std::to_string(std::stoi(number) + 1) + ".bmp";
    expected += "\r\n\r\n Processing Completed!";
    EXPECT_EQ(batch.RTF, expected);
    EXPECT_TRUE(platform.boxes.empty());
}

TEST_F(Run, ADestinationNeedsNoSeparatorAtItsEnd) {
    addGrey(10);
    batch.CmdBatchAll();
    batch.txtDestination += "/";
    batch.txtName = "Other";
    batch.CmdBatchAll();
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Other1.bmp"}));
}

TEST_F(Run, WithoutFunctionsPicturesAreConverted) {
    addGrey(77);
    batch.CmdBatchAll();
    EXPECT_EQ(levelOf("Sample1.bmp"), 77);
    EXPECT_EQ(batch.RTF.find(" Applied "), std::string::npos);
}

TEST_F(Run, NumbersHaveNoLeadingZerosAndFollowTheBasket) {
    for (uint8_t i = 1; i <= 10; ++i)
        addGrey(i);
    batch.lvSelected[3] = batch.lvSelected[0];  // one file twice does not collide
    batch.CmdBatchAll();
    EXPECT_EQ(outputs().size(), 10U);
    EXPECT_EQ(levelOf("Sample1.bmp"), 1);
    EXPECT_EQ(levelOf("Sample4.bmp"), 1);
    EXPECT_EQ(levelOf("Sample10.bmp"), 10);
}

TEST_F(Run, AnEmptyNameGivesTheNumberAlone) {
    addGrey(10);
    batch.txtName.clear();
    batch.cboFormat.index = 9;
    batch.CmdBatchAll();
    EXPECT_EQ(outputs(), (std::set<std::string>{"1.png"}));
}

TEST_F(Run, TheNameIsReadAfreshForEachPicture) {
    addGrey(10);
    addGrey(20);
    platform.onGiveWay = {nullptr, [this] { batch.txtName = "New"; }};
    batch.CmdBatchAll();
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "New2.bmp"}));
}

TEST_F(Run, StopDuringTheThirdPictureSavesThree) {
    for (uint8_t i = 1; i <= 5; ++i)
        addGrey(i);
    addNegative();
    batch.chkShowDestination = 1;
    // Events happen once a picture and once a row: the sixth moment is the third picture's row.
    platform.onGiveWay = {nullptr, nullptr, nullptr, nullptr, nullptr, [this] { batch.CmdStop(); }};
    batch.CmdBatchAll();
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp", "Sample3.bmp"}));
    EXPECT_TRUE(batch.RTF.ends_with("\r\n\r\n Processing Completed!"));
    EXPECT_EQ(platform.openedPaths, (std::vector<std::string>{out + "/"}));
    EXPECT_TRUE(batch.stopRequested);
    EXPECT_FALSE(batch.pb.visible);
    EXPECT_EQ(batch.pb.max, 5);
    EXPECT_EQ(batch.pb.value, 4);
}

TEST_F(Run, ARunAfterAStopStartsAnewAndKeepsWhatIsThere) {
    addGrey(10);
    addGrey(20);
    platform.onGiveWay = {nullptr, [this] { batch.CmdStop(); }};
    batch.CmdBatchAll();
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp"}));
    addNegative();
    batch.CmdBatchAll();
    EXPECT_FALSE(batch.stopRequested);
    EXPECT_EQ(levelOf("Sample1.bmp"), 10) << "kept";
    EXPECT_EQ(levelOf("Sample2.bmp"), 235);
    EXPECT_NE(batch.RTF.find("Processed Image Saved as Sample1.bmp"), std::string::npos);
    EXPECT_EQ(statuses(), (std::vector<Status>{Status::kept, Status::saved}));
}

TEST_F(Run, AnUnreadableFirstFileGivesThePreviewPicture) {
    writeFile(in + "/bad.png", "no picture");
    addFile(in + "/bad.png");
    addNegative();
    batch.CmdBatchAll();
    const Bitmap sample = batch.iOri.drawn();
    const PixelBuffer result = output("Sample1.bmp");
    ASSERT_EQ(result.width(), 200);
    ASSERT_EQ(result.height(), 174);
    for (int32_t y = 0; y < 174; ++y)
        for (int32_t x = 0; x < 200; ++x)
            ASSERT_EQ(result.at(x, y).red, 255 - sample.row(y)[x].red) << x << ", " << y;
    EXPECT_EQ(statuses(), (std::vector<Status>{Status::failed}));
    EXPECT_NE(batch.RTF.find(" Processed Image Saved as Sample1.bmp"), std::string::npos);
}

TEST_F(Run, AnUnreadableFirstFileOfALaterRunGivesThePreviewPictureToo) {
    addGrey(10, 30, 20);
    batch.CmdBatchAll();
    writeFile(in + "/bad.png", "no picture");
    batch.lvSelected.clear();
    addFile(in + "/bad.png");
    batch.txtName = "Later";
    batch.CmdBatchAll();
    EXPECT_EQ(output("Later1.bmp").width(), 200);
}

TEST_F(Run, AnUnreadableFileInTheMiddleGetsTheChainTwiceOnThePictureBeforeIt) {
    addGrey(10);
    writeFile(in + "/bad.gif", "no picture");
    addFile(in + "/bad.gif");
    addFile(in + "/deleted.ppm");
    addGrey(50, 3, 9);
    addBrightness(30);
    batch.CmdBatchAll();
    EXPECT_EQ(levelOf("Sample1.bmp"), 40);
    EXPECT_EQ(levelOf("Sample2.bmp"), 70);
    EXPECT_EQ(levelOf("Sample3.bmp"), 100);
    EXPECT_EQ(levelOf("Sample4.bmp"), 80);
    EXPECT_EQ(output("Sample3.bmp").width(), 5);
    EXPECT_EQ(statuses(),
              (std::vector<Status>{Status::saved, Status::failed, Status::failed, Status::saved}));
    EXPECT_EQ(batch.report.entries()[1].error, "unreadable");
}

TEST_F(Run, ASaveThatFailsIsPassedOverInSilence) {
    addGrey(10);
    fs::create_directory(out + "/Sample1.bmp");
    fs::create_directory(out + "/Sample1.bmp/inside");
    batch.chkOverwrite = 1;
    batch.CmdBatchAll();
    EXPECT_TRUE(platform.boxes.empty());
    EXPECT_NE(batch.RTF.find(" Processed Image Saved as Sample1.bmp"), std::string::npos);
    EXPECT_EQ(statuses(), (std::vector<Status>{Status::failed}));
    EXPECT_EQ(batch.report.entries()[0].error, "cannot-write");
}

TEST_F(Run, AfterTheRunThePreviewIsWhatItWasBefore) {
    addGrey(10, 40, 30);
    addBrightness(25);
    const Bitmap before = batch.iDst.drawn();
    batch.CmdBatchAll();
    EXPECT_EQ(batch.iDst.drawn(), before);
    EXPECT_EQ(batch.iDst.width(), 200);
    EXPECT_EQ(batch.iSrc.drawn(), batch.iOri.drawn());
    EXPECT_EQ(batch.workWidth, 200);
    EXPECT_EQ(batch.cFilter.BitsWidth(), 200);
}

TEST_F(Run, FilesFollowThePoolAndThePreviewTheChain) {
    addGrey(10);
    addBrightness(30);
    addNegative();
    batch.MoveFunctionUp(1);
    // Preview: negative, then brighter. Run: brighter, then negative.
    const int sample = batch.iOri.drawn().row(20)[20].green;
    EXPECT_EQ(batch.iDst.drawn().row(20)[20].green, std::min(255, 255 - sample + 30));
    batch.CmdBatchAll();
    EXPECT_EQ(levelOf("Sample1.bmp"), 215);
}

TEST_F(Run, ARemovedFunctionStillRuns) {
    addGrey(10);
    addBrightness(30);
    addNegative();
    batch.RemoveFunction(1);
    batch.CmdBatchAll();
    EXPECT_EQ(levelOf("Sample1.bmp"), 215);
    EXPECT_NE(batch.RTF.find("functions to be Applied: 2"), std::string::npos);
}

TEST_F(Run, AnItemRemovedDuringTheRunLeavesItsPassTheFileBeforeIt) {
    addGrey(10);
    addGrey(20);
    platform.onGiveWay = {nullptr, [this] { batch.lvSelected.pop_back(); }};
    batch.CmdBatchAll();
    EXPECT_EQ(levelOf("Sample2.bmp"), 10);
}

TEST_F(Run, ASecondRunInsideTheFirstFinishesAndTheFirstGoesOn) {
    runWithAnotherInside();
    EXPECT_EQ(outputs(),
              (std::set<std::string>{"Sample1.bmp", "Inner1.bmp", "Inner2.bmp", "Outer2.bmp"}));
    EXPECT_EQ(levelOf("Outer2.bmp"), 20);
}

TEST_F(Run, SheetValuesAreReadAtTheMomentOfApplication) {
    addGrey(10);
    addGrey(10);
    batch.SelectNode(50);  // Swap RGB
    batch.AddFunction("Swap RGB");
    // Per picture one moment for the picture and one before its row.
    platform.onGiveWay = {nullptr, nullptr, nullptr, [this] { batch.chkInvt = {1, 1, 1}; }};
    batch.CmdBatchAll();
    EXPECT_EQ(levelOf("Sample1.bmp"), 10);
    EXPECT_EQ(levelOf("Sample2.bmp"), 245);
}

TEST_F(Run, TheDestinationOpensOnlyWhereAsked) {
    addGrey(10);
    batch.CmdBatchAll();
    EXPECT_TRUE(platform.openedPaths.empty());
    batch.chkShowDestination = 1;
    batch.CmdBatchAll();
    EXPECT_EQ(platform.openedPaths.size(), 1U);
}

TEST_F(Run, ByItselfAPictureDependsOnItsFileAlone) {
    addGrey(10);
    addGrey(20);
    TrayRow odd;
    odd.text = "Brightness";
    odd.Tag = 1;
    odd.columns = {"5", "0", "0", "0", "0", "False", "", "0", "0"};
    batch.Ltray = {odd, odd};
    batch.Ltray[0].column(1) = "no number";  // takes what stands: 0 in a new program
    batch.BatchEach();
    EXPECT_EQ(levelOf("Sample1.bmp"), 15);
    EXPECT_EQ(levelOf("Sample2.bmp"), 25);
    batch.txtName = "Window";
    batch.CmdBatchAll();
    EXPECT_EQ(levelOf("Window2.bmp"), 30) << "in the window the number before it stands";
}

TEST_F(Run, AMissingFolderIsNotCreated) {
    addGrey(10);
    batch.txtDestination = out + "/none/below";
    batch.CmdBatchAll();
    EXPECT_TRUE(outputs().empty());
    EXPECT_FALSE(batch.pb.visible);
}

TEST_F(Run, TheBarIsShownDuringTheRunAndCountsThePictures) {
    struct Bar {
        bool visible;
        int32_t max;
        int32_t value;
        bool operator==(const Bar&) const = default;
    };
    std::vector<Bar> seen;
    const auto look = [&] { seen.push_back({batch.pb.visible, batch.pb.max, batch.pb.value}); };
    addGrey(10);
    addGrey(20);
    addNegative();
    const int32_t before = batch.pb.value;
    // One moment before each picture's number is shown, and one before each row.
    platform.onGiveWay = {look, look, look, look};
    platform.changes.clear();
    EXPECT_FALSE(batch.pb.visible);
    batch.CmdBatchAll();
    EXPECT_EQ(seen,
              (std::vector<Bar>{{true, 2, before}, {true, 2, 1}, {true, 2, 1}, {true, 2, 2}}));
    EXPECT_FALSE(batch.pb.visible);
    EXPECT_GE(platform.timesChanged("pb"), 4) << "shown, twice counted, hidden";
}

TEST_F(Run, AFormatOutsideTheTableGivesNamesThatEndInTheDot) {
    addGrey(10);
    batch.cboFormat.items.emplace_back("A row of its own");
    batch.cboFormat.index = static_cast<int32_t>(batch.cboFormat.items.size()) - 1;
    batch.CmdBatchAll();
    EXPECT_TRUE(platform.boxes.empty()) << "the row has a text";
    EXPECT_NE(batch.RTF.find("'A row of its own'"), std::string::npos);
    EXPECT_TRUE(
        batch.RTF.ends_with(" Processed Image Saved as Sample1.\r\n\r\n Processing "
                            "Completed!"));
    ASSERT_EQ(batch.report.entries().size(), 1U);
    EXPECT_EQ(batch.report.entries()[0].output, out + "/Sample1.");
    EXPECT_EQ(batch.formatExtension(), "");
}

TEST_F(Run, ALongDestinationIsStoredCutAndUsedWhole) {
    std::string folder = out;
    while (folder.size() < 300)
        folder += "/" + std::string(60, 'f');
    fs::create_directories(folder);
    addGrey(10);
    batch.txtDestination = folder;
    batch.CmdBatchAll();
    EXPECT_EQ(batch.startupRecord.destinationFolder.rightTrimmed(), folder.substr(0, 256));
    EXPECT_TRUE(fs::exists(folder + "/Sample1.bmp"));
}

TEST_F(Run, UnreadableFilesAreNeverTold) {
    writeFile(in + "/bad.png", "no picture");
    addFile(in + "/bad.png");
    addFile(in + "/gone.jpg");
    addFile(in + "/bad.wmf");
    addGrey(10);
    batch.CmdBatchAll();
    EXPECT_TRUE(platform.boxes.empty());
    EXPECT_EQ(outputs().size(), 4U);
}

TEST_F(Run, AfterARunTheWorkPictureIsThePreviews) {
    addGrey(10, 40, 30);
    batch.CmdBatchAll();
    EXPECT_EQ(batch.iSrc.width(), 200);
    EXPECT_EQ(batch.iSrc.height(), 174);
    EXPECT_EQ(batch.iSrc.drawn(), batch.iOri.drawn());
    EXPECT_FALSE(batch.iSrc.autoRedraw);
    EXPECT_EQ(batch.workHeight, 174);
}

TEST_F(Run, TheReportHoldsTheEntriesOfARunInsideItToo) {
    runWithAnotherInside();
    std::vector<std::string> names;
    for (const PictureReport& entry : batch.report.entries())
        names.push_back(fileNameOf(entry.output));
    EXPECT_EQ(names,
              (std::vector<std::string>{"Sample1.bmp", "Inner1.bmp", "Inner2.bmp", "Outer2.bmp"}));
    batch.CmdBatchAll();
    EXPECT_EQ(batch.report.entries().size(), 2U) << "the next run starts a report of its own";
}

TEST_F(Run, AStopInsideARunInsideStopsTheOuterOneToo) {
    for (uint8_t i = 1; i <= 3; ++i)
        addGrey(i);
    platform.onGiveWay = {nullptr,
                          [this] {
                              batch.txtName = "Inner";
                              batch.CmdBatchAll();
                          },
                          nullptr, [this] { batch.CmdStop(); }};
    batch.CmdBatchAll();
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Inner1.bmp"}));
    EXPECT_TRUE(batch.stopRequested);
}

TEST_F(Run, ByItselfEachPictureStartsFromWhatStoodAtTheBeginning) {
    for (uint8_t i = 1; i <= 3; ++i)
        addGrey(10);
    TrayRow takesWhatStands;
    takesWhatStands.text = "Brightness";
    takesWhatStands.Tag = 1;
    takesWhatStands.columns = {"70000", "0", "0", "0", "0", "False", "", "0", "0"};
    TrayRow five = takesWhatStands;
    five.column(1) = "5";
    batch.Ltray = {takesWhatStands, five};
    batch.funcParam[0] = 40;
    batch.BatchEach();
    for (const char* name : {"Sample1.bmp", "Sample2.bmp", "Sample3.bmp"})
        EXPECT_EQ(levelOf(name), 55) << name;
    EXPECT_EQ(batch.funcParam[0], 40);
    batch.txtName = "Window";
    batch.CmdBatchAll();
    EXPECT_EQ(levelOf("Window1.bmp"), 55) << "the first picture is the same in both";
    EXPECT_EQ(levelOf("Window2.bmp"), 20);
}

TEST_F(Run, OnOneRowADueReportFailsAndTheRowBeforeItStands) {
    // Negative lets a failure reach its caller, Brightness too: each leaves the picture as it was.
    addGrey(10, 5, 1);
    addNegative();
    uint32_t now = systemClock();
    batch.cFilter.timeGetTime = [&now] { return now += 20; };
    batch.CmdBatchAll();
    EXPECT_EQ(levelOf("Sample1.bmp"), 10);
    // Ten milliseconds or less after the last report none is due.
    batch.chkOverwrite = 1;
    batch.cFilter.timeGetTime = [&now] { return now; };
    batch.CmdBatchAll();
    EXPECT_EQ(levelOf("Sample1.bmp"), 245);
}

TEST_F(Run, ByItselfAPictureOfOneRowNeverFails) {
    addGrey(10, 5, 1);
    addNegative();
    uint32_t now = 0;
    batch.cFilter.timeGetTime = [&now] { return now += 20; };
    std::vector<int32_t> reports;
    batch.cFilter.Progress = [&reports](int32_t& percent) { reports.push_back(percent); };
    batch.BatchEach();
    EXPECT_EQ(levelOf("Sample1.bmp"), 245);
    EXPECT_EQ(reports, (std::vector<int32_t>{100})) << "the end alone is reported";
    // The engine itself keeps its clock.
    const uint32_t before = now;
    batch.cFilter.timeGetTime();
    EXPECT_EQ(now, before + 20);
}

TEST_F(Run, ByItselfAPictureLeavesNoDraftWhateverBecomesOfIt) {
    addGrey(10);
    addGrey(20);
    addFile(in + "/gone.ppm");
    fs::create_directory(out + "/Sample2.bmp");
    batch.chkOverwrite = 1;
    batch.BatchEach();
    EXPECT_EQ(outputs(), (std::set<std::string>{"Sample1.bmp", "Sample2.bmp"}));
    EXPECT_EQ(statuses(), (std::vector<Status>{Status::saved, Status::failed, Status::failed}));
    EXPECT_EQ(batch.report.entries()[1].error, "cannot-write");
    EXPECT_EQ(batch.report.entries()[2].error, "unreadable");
}

TEST_F(Run, ByItselfAPictureKeepsAFileThatAppearsUnderItsOutputsNameMeanwhile) {
    addGrey(10);
    addNegative();
    const std::string output = out + "/Sample1.bmp";
    batch.cFilter.Progress = [&](int32_t&) { writeFile(output, "another's"); };
    batch.BatchEach();
    EXPECT_EQ(readFile(output), "another's");
    EXPECT_EQ(statuses(), (std::vector<Status>{Status::kept}));
    fs::remove(output);
    batch.chkOverwrite = 1;
    batch.BatchEach();
    EXPECT_EQ(levelOf("Sample1.bmp"), 245) << "with leave to overwrite it is replaced";
}

}  // namespace
}  // namespace tessarine::tests
