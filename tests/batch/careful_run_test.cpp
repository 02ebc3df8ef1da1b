#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <thread>
#include <utility>

#include <gmock/gmock.h>

#include "batch/batch.h"
#include "batch/functions.h"
#include "batch/texts.h"
#include "imagefiles/codec/codec_files.h"
#include "imagefiles/disk.h"
#include "pixels/threads.h"
#include "support/files.h"
#include "support/misbehaviour.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/recorder.h"

// The window's run with each picture by itself.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using Status = PictureReport::Status;

constexpr int32_t bmpRow = 8;

/// This process's own reading and writing, with something before it.
class WatchedFiles : public PictureFiles {
  public:
    std::function<void(const std::string& path)> beforeReading;
    std::vector<size_t> preparations;

    void prepareFor(size_t pictures) override { preparations.push_back(pictures); }
    ReadOutcome read(const std::string& path, const std::string& extension) override {
        if (beforeReading) beforeReading(path);
        return localFiles().read(path, extension);
    }
    WriteOutcome write(const Bitmap& picture, const std::string& extension, int16_t formatIndex,
                       OutputFile& file) override {
        return localFiles().write(picture, extension, formatIndex, file);
    }
};

/// A recorder that does something at every moment, but not within that.
class LivePlatform : public Recorder {
  public:
    std::function<void()> atEveryMoment;

    void giveWay() override {
        Recorder::giveWay();
        if (!atEveryMoment || std::exchange(isAtIt_, true)) return;
        atEveryMoment();
        isAtIt_ = false;
    }

  private:
    bool isAtIt_ = false;
};

class CarefulRun : public testing::Test {
  protected:
    CarefulRun() {
        fs::create_directory(scratch / "in");
        prepare(batch, "out");
        batch.chkCareful = 1;
    }

    std::string folder(const std::string& name) const {
        fs::create_directories(scratch / name);
        return scratch / name;
    }
    void prepare(cBatch& program, const std::string& name) const {
        program.txtDestination = folder(name);
        program.txtName = "Sample";
        program.cboFormat.index = bmpRow;
        program.chkShowDestination = 0;
    }
    std::string file(const std::string& name, const std::string& bytes) const {
        writeAll(scratch / ("in/" + name), bytes);
        return scratch / ("in/" + name);
    }
    static void put(cBatch& program, const std::string& path) {
        program.lvSelected.push_back({fileNameOf(path), extensionOf(path), path, folderOf(path)});
    }
    /// Puts a readable picture into the basket.
    std::string good(const std::string& name) {
        const std::string path = scratch / ("in/" + name);
        writePixmap(path, randomBuffer(31, 17, static_cast<uint32_t>(batch.lvSelected.size())));
        put(batch, path);
        return path;
    }
    std::string bad(const std::string& name) {
        put(batch, file(name, "no picture"));
        return scratch / ("in/" + name);
    }
    void goods(int count) {
        for (int i = 1; i <= count; ++i)
            good("good" + std::to_string(i) + ".ppm");
    }
    static void add(cBatch& program, const char* name) {
        program.SelectNode(findFunction(name)->treeIndex);
        program.AddFunction(name);
    }
    std::map<std::string, std::string> outputs(const std::string& name = "out") const {
        std::map<std::string, std::string> all;
        for (const auto& entry : fs::directory_iterator(scratch / name))
            all[entry.path().filename().string()] = readAll(entry.path().string());
        return all;
    }
    void expectNoRun() {
        EXPECT_EQ(batch.RTF, "");
        EXPECT_FALSE(platform.hasChanged("pb"));
        EXPECT_TRUE(batch.report.entries().empty());
        EXPECT_TRUE(platform.openedPaths.empty());
    }

    const ScratchFolder scratch;
    LivePlatform platform;
    WatchedFiles files;
    cBatch batch{platform, files};
};

TEST_F(CarefulRun, IsOffInANewProgramAndNotAmongTheSettings) {
    EXPECT_EQ(cBatch(platform).chkCareful, 0);
    batch.CloseWindow();
    const std::string ticked = batch.startupRecord.toBytes();
    batch.chkCareful = 0;
    batch.CloseWindow();
    EXPECT_EQ(batch.startupRecord.toBytes(), ticked);
}

TEST_F(CarefulRun, TheChecksAtItsStartAndTheirMessagesAreTheOrdinaryRuns) {
    const auto boxes = [&](int16_t careful) {
        platform.boxes.clear();
        batch.chkCareful = careful;
        batch.CmdBatchAll();
        return platform.boxes;
    };
    const auto expectTheSame = [&](const std::string& text) {
        const auto ordinary = boxes(0);
        EXPECT_EQ(boxes(1), ordinary);
        ASSERT_EQ(ordinary.size(), 1U);
        EXPECT_EQ(ordinary[0].text, text);
        expectNoRun();
    };
    expectTheSame("No File(s) selected for Batch Processing!");
    goods(1);
    batch.txtDestination = scratch / "none";
    expectTheSame("Invalid Folder Path");
    batch.txtDestination = scratch / "out";
    batch.cboFormat.index = -1;
    expectTheSame("Please specify a file format for all the processed file(s)!");
    EXPECT_TRUE(outputs().empty());
}

TEST_F(CarefulRun, OutputsAreTheIndependentRunsByteForByte) {
    goods(3);
    bad("bad.png");
    put(batch, scratch / "in/none.jpg");
    goods(5);
    cBatch alone(platform, files);
    prepare(alone, "alone");
    alone.lvSelected = batch.lvSelected;
    for (cBatch* program : {&batch, &alone})
        for (const char* function : {"Noise", "Contrast", "Rotate Intelligently"})
            add(*program, function);
    alone.cFilter.random = batch.cFilter.random = RandomGenerator();
    batch.sbDegrees = alone.sbDegrees = 30;
    batch.CmdBatchAll();
    alone.BatchEach();
    EXPECT_EQ(outputs().size(), 8U);
    EXPECT_FALSE(outputs().contains("Sample4.bmp"));
    EXPECT_TRUE(outputs() == outputs("alone"));
}

TEST_F(CarefulRun, TheOverviewTellsEachPictureInALineAndTheFailuresAtItsEnd) {
    good("one.ppm");
    const std::string broken = bad("broken.png");
    good("three.ppm");
    good("four.ppm");
    put(batch, scratch / "in/gone.jpg");
    writeAll(scratch / "out/Sample3.bmp", "before");
    add(batch, "Negative");
    batch.CmdBatchAll();
    EXPECT_EQ(batch.RTF,
              "5\r\nTotal Number of functions to be Applied: 1\r\n"
              "Destination Folder: " +
                  (scratch / "out/") +
                  "\r\n"
                  "Format Selected to save the processed images: 'BMP - Windows Bitmap '\r\n"
                  "Generic Name for the processed image: 'Sample'\r\n"
                  " Please Wait... Batch Image Processing in Progress!\r\n"
                  "\r\n"
                  "\r\n Processed Image Saved as Sample1.bmp"
                  "\r\n Failed: broken.png"
                  "\r\n Existing File Kept: Sample3.bmp"
                  "\r\n Processed Image Saved as Sample4.bmp"
                  "\r\n Failed: gone.jpg"
                  "\r\n"
                  "\r\n Processing Completed!"
                  "\r\n 2 saved, 1 kept, 2 failed of 5 pictures"
                  "\r\n"
                  "\r\n Failures:"
                  "\r\n " +
                  broken + ": " + batch.report.entries()[1].message + "\r\n " +
                  (scratch / "in/gone.jpg") + ": No such file or directory");
    EXPECT_THAT(batch.report.entries()[1].message, HasSubstr("no picture can be read from it"));
    EXPECT_EQ(readAll(scratch / "out/Sample3.bmp"), "before");
    EXPECT_EQ(batch.failedPictures, (std::vector<std::string>{broken, scratch / "in/gone.jpg"}));
    EXPECT_TRUE(platform.hasChanged("failedPictures"));
    EXPECT_TRUE(platform.boxes.empty());
}

TEST_F(CarefulRun, WithoutAFailureItEndsWithTheCounts) {
    goods(1);
    batch.CmdBatchAll();
    EXPECT_THAT(batch.RTF, EndsWith("\r\n Processed Image Saved as Sample1.bmp\r\n\r\n Processing "
                                    "Completed!\r\n 1 saved, 0 kept, 0 failed of 1 picture"));
    EXPECT_TRUE(batch.failedPictures.empty());
    EXPECT_FALSE(platform.hasChanged("failedPictures"));
}

TEST_F(CarefulRun, ANameThatWouldBreakTheLineStaysOnIt) {
    bad("two\nlines\xE2\x80\xA9.png");
    batch.CmdBatchAll();
    EXPECT_THAT(batch.RTF, HasSubstr("\r\n Failed: two\\x0alines\\xe2\\x80\\xa9.png\r\n"));
    EXPECT_THAT(batch.RTF, HasSubstr("/in/two\\x0alines\\xe2\\x80\\xa9.png: no picture"));
}

TEST_F(CarefulRun, AHelperThatAFileTakesDownCostsThatPictureAlone) {
    CodecFiles::Options options;
    options.program = TESSARINE_CODEC_MISBEHAVING;
    CodecFiles codec(options);
    cBatch program(platform, codec);
    prepare(program, "out");
    program.chkCareful = 1;
    goods(4);
    program.lvSelected = batch.lvSelected;
    const std::string crash = file("crash.ppm", misbehavingFile("crash"));
    program.lvSelected[1].Tag = crash;
    program.CmdBatchAll();
    EXPECT_EQ(outputs().size(), 3U);
    EXPECT_EQ(program.failedPictures, std::vector<std::string>{crash});
    EXPECT_THAT(program.RTF, HasSubstr("\r\n " + crash + ": "));
}

TEST_F(CarefulRun, TheProgressCountsEndedPicturesWhicheverEndsFirst) {
    std::atomic<int32_t> shown = 0;
    bool wasVisible = false;
    platform.atEveryMoment = [&] {
        shown = batch.pb.value;
        wasVisible = wasVisible || (batch.pb.visible && batch.pb.max == 4);
    };
    // The first picture waits until three others are counted.
    files.beforeReading = [&](const std::string& path) {
        for (int i = 0; fileNameOf(path) == "good1.ppm" && shown < 3 && i < 5000; ++i)
            std::this_thread::sleep_for(1ms);
    };
    goods(4);
    batch.CmdBatchAll();
    EXPECT_EQ(shown, 3) << "the last moment was before the end of the first picture";
    EXPECT_TRUE(wasVisible);
    EXPECT_EQ(batch.pb.value, 4);
    EXPECT_FALSE(batch.pb.visible);
    EXPECT_EQ(outputs().size(), 4U);
}

TEST_F(CarefulRun, SeveralPicturesAreInFlightAndAlsoASingleOneLeavesTheCallingThread) {
    std::mutex guard;
    std::set<std::thread::id> readers;
    std::atomic<int> inFlight = 0;
    std::atomic<int> most = 0;
    files.beforeReading = [&](const std::string&) {
        {
            const std::lock_guard lock(guard);
            readers.insert(std::this_thread::get_id());
        }
        most = std::max<int>(most, ++inFlight);
        std::this_thread::sleep_for(20ms);
        --inFlight;
    };
    goods(1);
    batch.CmdBatchAll();
    EXPECT_EQ(readers.size(), 1U);
    EXPECT_GT(platform.giveWays, 1) << "the window lived meanwhile";
    goods(8);
    batch.CmdBatchAll();
    EXPECT_GT(most, 1);
    EXPECT_FALSE(readers.contains(std::this_thread::get_id()));
}

TEST_F(CarefulRun, AStopBeginsNoMoreAndFinishesWhatIsUnderWay) {
    files.beforeReading = [](const std::string&) { std::this_thread::sleep_for(2ms); };
    goods(40);
    platform.atEveryMoment = [&] {
        if (batch.pb.value >= 3) batch.CmdStop();
    };
    batch.chkShowDestination = 1;
    batch.CmdBatchAll();
    const size_t begun = batch.report.entries().size();
    EXPECT_GE(begun, 3U);
    EXPECT_LT(begun, 40U);
    EXPECT_EQ(outputs().size(), begun);
    EXPECT_THAT(batch.RTF, EndsWith("\r\n\r\n Processing Stopped!\r\n " + std::to_string(begun) +
                                    " saved, 0 kept, 0 failed of 40 pictures, " +
                                    std::to_string(40 - begun) + " not begun"));
    EXPECT_EQ(platform.openedPaths, std::vector<std::string>{scratch / "out/"});
    // The next one begins with the first picture again.
    platform.atEveryMoment = nullptr;
    batch.CmdBatchAll();
    EXPECT_EQ(outputs().size(), 40U);
    EXPECT_THAT(batch.RTF, EndsWith(std::to_string(40 - begun) + " saved, " +
                                    std::to_string(begun) + " kept, 0 failed of 40 pictures"));
}

TEST_F(CarefulRun, WhatIsChangedInTheWindowMeanwhileDoesNotCount) {
    goods(12);
    for (const char* function : {"Swap RGB", "Rotate Intelligently", "Lens"})
        add(batch, function);
    batch.sbDegrees = 20;
    batch.PickPoint(30, 40);
    cBatch undisturbed(platform, files);
    prepare(undisturbed, "undisturbed");
    undisturbed.lvSelected = batch.lvSelected;
    undisturbed.Ltray = batch.Ltray;
    undisturbed.sbDegrees = batch.sbDegrees;
    undisturbed.chkCareful = 1;
    undisturbed.CmdBatchAll();
    ASSERT_EQ(outputs("undisturbed").size(), 12U);

    const std::string elsewhere = folder("elsewhere");
    writeAll(scratch / "out/Sample12.bmp", "before");
    int moment = 0;
    platform.atEveryMoment = [&] {
        // A person at work in every step.
        switch (++moment) {
            case 2:
                batch.RemoveAll();
                batch.txtName = "Other";
                batch.txtDestination = elsewhere;
                batch.cboFormat.index = 0;
                batch.chkOverwrite = 1;
                break;
            case 3:
                batch.ClearFunctions();
                add(batch, "Negative");
                batch.ChangeDegrees(90);
                batch.ChangeInvert(1, 1);
                batch.ChangeKill(0, 1);
                batch.jobs = 1;
                break;
            default:
                batch.MoveSlider(0, moment % 2 == 0 ? 10 : 20);
        }
    };
    batch.CmdBatchAll();
    platform.atEveryMoment = nullptr;
    EXPECT_GT(moment, 3);
    auto expected = outputs("undisturbed");
    expected["Sample12.bmp"] = "before";
    EXPECT_TRUE(outputs() == expected);
    EXPECT_TRUE(outputs("elsewhere").empty());
    EXPECT_THAT(batch.RTF, StartsWith("12\r\nTotal Number of functions to be Applied: 3\r\n"));
    EXPECT_THAT(batch.RTF, EndsWith(" 11 saved, 1 kept, 0 failed of 12 pictures"));
}

TEST_F(CarefulRun, NoRunBeginsInsideItAndAStopStays) {
    files.beforeReading = [](const std::string&) { std::this_thread::sleep_for(2ms); };
    goods(30);
    bool pressed = false;
    platform.atEveryMoment = [&] {
        if (pressed || batch.pb.value < 2) return;
        pressed = true;
        EXPECT_TRUE(batch.runsCarefully());
        batch.CmdStop();
        for (const int16_t careful : {1, 0}) {
            batch.chkCareful = careful;
            EXPECT_FALSE(batch.mayBeginRun());
            batch.CmdBatchAll();
        }
        EXPECT_TRUE(batch.stopRequested);
    };
    batch.CmdBatchAll();
    EXPECT_TRUE(pressed);
    EXPECT_LT(outputs().size(), 30U);
    EXPECT_EQ(outputs().size(), batch.report.entries().size());
    EXPECT_EQ(batch.RTF.find(" Please Wait..."), batch.RTF.rfind(" Please Wait..."));
    EXPECT_THAT(batch.RTF, HasSubstr(" Processing Stopped!"));
    EXPECT_FALSE(batch.runsCarefully());
    EXPECT_TRUE(batch.mayBeginRun());
}

TEST_F(CarefulRun, ItBeginsInsideNoOtherRun) {
    goods(2);
    batch.chkCareful = 0;
    platform.onGiveWay = {nullptr, [this] {
                              batch.chkCareful = 1;
                              EXPECT_FALSE(batch.mayBeginRun());
                              batch.txtName = "Inner";
                              batch.CmdBatchAll();
                              batch.txtName = "Sample";
                          }};
    batch.CmdBatchAll();
    const auto all = outputs();
    EXPECT_EQ(all.size(), 2U);
    EXPECT_TRUE(all.contains("Sample2.bmp"));
    EXPECT_TRUE(platform.boxes.empty());
}

TEST_F(CarefulRun, ARunThatWouldReplaceItsOwnPictureIsRefused) {
    goods(1);
    const std::string own = scratch / "out/Sample1.bmp";
    writeAll(own, "a picture");
    put(batch, own);
    batch.chkOverwrite = 1;
    batch.CmdBatchAll();
    ASSERT_EQ(platform.boxes.size(), 1U);
    EXPECT_EQ(platform.boxes[0].icon, Icon::information);
    EXPECT_EQ(platform.boxes[0].text,
              "The run would replace one of its own pictures: '" + own +
                  "' is in the Image Basket, and the result '" + own +
                  "' would be saved over it.\r\n\r\nPlease choose another destination folder or "
                  "another generic name in Step 3.");
    EXPECT_EQ(readAll(own), "a picture");
    EXPECT_EQ(outputs().size(), 1U);
    expectNoRun();
    // Where results replace nothing it runs.
    batch.chkOverwrite = 0;
    batch.CmdBatchAll();
    EXPECT_EQ(readAll(own), "a picture");
    EXPECT_EQ(batch.report.entries().size(), 2U);
}

TEST_F(CarefulRun, ARunThatWouldMakeItsOwnPictureIsRefused) {
    goods(1);
    put(batch, scratch / "out/Sample1.bmp");
    batch.CmdBatchAll();
    ASSERT_EQ(platform.boxes.size(), 1U);
    EXPECT_THAT(platform.boxes[0].text, StartsWith("The run would make one of its own pictures: '" +
                                                   (scratch / "out/Sample1.bmp") +
                                                   "' is in the Image Basket and does not exist"));
    EXPECT_TRUE(outputs().empty());
    expectNoRun();
}

TEST_F(CarefulRun, TheBasketsThePreviewAndTheWorkingStateStayAsTheyWere) {
    goods(3);
    bad("bad.png");
    add(batch, "Noise");
    add(batch, "Lens");
    platform.changes.clear();
    const PixelBuffer bits = batch.workBits;
    const PixelBuffer original = batch.originalBits;
    const Bitmap source = batch.iSrc.drawn();
    const Bitmap preview = batch.iDst.drawn();
    const auto random = batch.cFilter.random;
    batch.CmdBatchAll();
    EXPECT_EQ(batch.workBits, bits);
    EXPECT_EQ(batch.originalBits, original);
    EXPECT_EQ(batch.iSrc.drawn(), source);
    EXPECT_EQ(batch.iDst.drawn(), preview);
    EXPECT_EQ(batch.cFilter.random.state(), random.state());
    EXPECT_EQ(batch.lvSelected.size(), 4U);
    EXPECT_EQ(batch.Ltray.size(), 2U);
    EXPECT_EQ(batch.LSelectedFunctions.size(), 2U);
    EXPECT_EQ(std::set<std::string>(platform.changes.begin(), platform.changes.end()),
              (std::set<std::string>{"RTF", "pb", "failedPictures"}));
}

TEST_F(CarefulRun, TheMachineIsTheWindowsAgainAtItsEnd) {
    goods(5);
    setFilterThreads(7);
    int32_t during = 0;
    platform.atEveryMoment = [&] { during = filterThreads(); };
    batch.CmdBatchAll();
    EXPECT_LT(during, 7) << "each picture has its part";
    EXPECT_EQ(filterThreads(), 7);
    setFilterThreads(0);
    ASSERT_FALSE(files.preparations.empty());
    EXPECT_GT(files.preparations.front(), 1U);
    EXPECT_EQ(files.preparations.back(), 1U);
}

TEST_F(CarefulRun, WhatAKilledRunLeftInTheFolderIsRemoved) {
    goods(1);
    writeAll(scratch / ("out/" + Draft::namePrefix() + "1.bmp"), "half a picture");
    batch.CmdBatchAll();
    EXPECT_EQ(outputs().size(), 1U);
    EXPECT_TRUE(outputs().contains("Sample1.bmp"));
}

TEST_F(CarefulRun, AGenericNameMayLeadToAnotherFolder) {
    goods(1);
    folder("out/below");
    batch.txtName = "below/Name";
    batch.CmdBatchAll();
    EXPECT_TRUE(fs::exists(scratch / "out/below/Name1.bmp"));
    EXPECT_THAT(batch.RTF, HasSubstr("\r\n Processed Image Saved as below/Name1.bmp\r\n"));
    batch.txtName = "nowhere/Name";
    batch.CmdBatchAll();
    EXPECT_EQ(batch.failedPictures.size(), 1U);
    EXPECT_THAT(batch.RTF, HasSubstr("No such file or directory"));
}

TEST_F(CarefulRun, TheFailuresAreThoseOfTheLastRunOnly) {
    const std::string broken = bad("bad.png");
    batch.CmdBatchAll();
    EXPECT_EQ(batch.failedPictures, std::vector<std::string>{broken});
    batch.txtDestination = scratch / "none";
    batch.CmdBatchAll();
    EXPECT_EQ(batch.failedPictures.size(), 1U) << "what is refused is no run";
    batch.txtDestination = scratch / "out";
    batch.chkCareful = 0;
    batch.CmdBatchAll();
    EXPECT_TRUE(batch.failedPictures.empty());
}

}  // namespace
}  // namespace tessarine::tests
