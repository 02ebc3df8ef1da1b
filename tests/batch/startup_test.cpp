#include <cstdlib>
#include <filesystem>
#include <optional>

#include <gtest/gtest.h>

#include "batch/batch.h"
#include "support/files.h"
#include "support/paths.h"
#include "support/recorder.h"

namespace tessarine {
namespace {

using tests::readAll;
using tests::Recorder;
using tests::ScratchFolder;
using tests::writeAll;

/// A window that keeps the order of what is asked of it.
class WindowRecorder : public Recorder {
  public:
    std::string folder;  ///< the program's folder
    int instancesAhead = 0;
    bool everyFileExists = false;
    std::vector<std::string> steps;
    std::function<void()> onUnload;

    std::string programFolder() override { return folder; }
    bool fileExists(const std::string& path) override {
        return everyFileExists || Recorder::fileExists(path);
    }
    void messageBox(const std::string& text, Icon icon, const std::string& title) override {
        steps.push_back("message");
        Recorder::messageBox(text, icon, title);
    }
    void loadWindow() override { steps.push_back("load"); }
    void unloadWindow() override {
        steps.push_back("unload");
        if (onUnload) onUnload();
    }
    void maximizeWindow() override { steps.push_back("maximize"); }
    void sizeWindow(int32_t width, int32_t height) override {
        steps.push_back("size " + std::to_string(width) + " " + std::to_string(height));
    }
    void setDialogFolder(const std::string& path) override { steps.push_back("folder " + path); }
    void showWindow() override { steps.push_back("show"); }
    void unloadSplash() override { steps.push_back("end splash"); }
    bool anotherInstanceRuns() override {
        steps.push_back("other?");
        return instancesAhead > 0;
    }
};

std::string padded(const std::string& text) { return text + std::string(256 - text.size(), ' '); }

/// A little-endian number of 4 bytes.
std::string four(uint32_t number) {
    std::string bytes;
    for (int i = 0; i < 4; ++i)
        bytes.push_back(static_cast<char>(number >> (8 * i)));
    return bytes;
}

class Startup : public testing::Test {
  protected:
    Startup() { recorder.folder = scratch.path().string(); }
    std::string file() const { return scratch / "tsStart.up"; }

    ScratchFolder scratch;
    WindowRecorder recorder;
    cBatch batch{recorder};
};

TEST(FixedText, HoldsExactly256BytesPaddedWithBlanks) {
    FixedText text;
    EXPECT_EQ(text.bytes(), std::string(256, ' '));
    EXPECT_EQ(text.rightTrimmed(), "");
    text = "  a folder ";
    EXPECT_EQ(text.bytes(), padded("  a folder "));
    EXPECT_EQ(text.rightTrimmed(), "  a folder");
    text = "b";
    EXPECT_EQ(text.bytes(), padded("b"));
}

TEST(FixedText, APathOf256CharactersIsItselfAndOneOf300IsCut) {
    FixedText text;
    const std::string path = "/" + std::string(255, 'p');
    text = path;
    EXPECT_EQ(text.rightTrimmed(), path);
    text = path + std::string(44, 'q');
    EXPECT_EQ(text.rightTrimmed(), path);
    EXPECT_EQ(text.bytes().size(), 256U);
}

TEST(FixedText, ATextEndsAtAZeroByte) {
    FixedText text;
    text = std::string("abc \0def", 8);
    EXPECT_EQ(text.rightTrimmed(), "abc");
    EXPECT_EQ(text.bytes().substr(0, 9), std::string("abc \0def ", 9));
}

/// A record of distinct values, and its bytes typed out.
StartupRecord distinctRecord() {
    StartupRecord record;
    record.genericName = "Holiday";
    record.lastFolder = "/pictures";
    record.destinationFolder = "/out";
    record.dialogFolder = "/lists";
    record.formatRow = 0x1102;
    record.overwriteFiles = 0xA5;
    record.maximized = -1;
    record.windowWidth = 0x01020304;
    record.windowHeight = 0x11121314;
    record.splitterBs11 = 0x21222324;
    record.splitterBs13 = 0x31323334;
    record.splitterBs12 = 0x41424344;
    record.splitterBs21 = -2;
    record.splitterBs14 = 0x51525354;
    record.showDestination = 0x5A;
    return record;
}

std::string distinctBytes() {
    return padded("Holiday") + padded("/pictures") + padded("/out") + padded("/lists") +
           "\x02\x11\xA5\xFF\xFF\x04\x03\x02\x01\x14\x13\x12\x11\x24\x23\x22\x21"
           "\x34\x33\x32\x31\x44\x43\x42\x41\xFE\xFF\xFF\xFF\x54\x53\x52\x51\x5A";
}

TEST(StartupRecord, HasItsFieldsAtTheirPlacesWithoutGaps) {
    const std::string bytes = distinctRecord().toBytes();
    EXPECT_EQ(bytes.size(), 1058U);
    EXPECT_EQ(bytes, distinctBytes());
    EXPECT_EQ(bytes.substr(1024, 2), "\x02\x11");  // formatRow
    EXPECT_EQ(bytes.substr(1026, 1), "\xA5");      // overwriteFiles
    EXPECT_EQ(bytes.substr(1027, 2), "\xFF\xFF");  // maximized
    EXPECT_EQ(bytes.substr(1029, 4), four(0x01020304));
    EXPECT_EQ(bytes.substr(1033, 4), four(0x11121314));
    EXPECT_EQ(bytes.substr(1037, 4), four(0x21222324));
    EXPECT_EQ(bytes.substr(1041, 4), four(0x31323334));
    EXPECT_EQ(bytes.substr(1045, 4), four(0x41424344));
    EXPECT_EQ(bytes.substr(1049, 4), four(0xFFFFFFFE));
    EXPECT_EQ(bytes.substr(1053, 4), four(0x51525354));
    EXPECT_EQ(bytes.substr(1057), "\x5A");
}

TEST(StartupRecord, ComesBackFromItsBytes) {
    const StartupRecord record = StartupRecord::fromBytes(distinctBytes() + "more");
    EXPECT_EQ(record.genericName.rightTrimmed(), "Holiday");
    EXPECT_EQ(record.lastFolder.rightTrimmed(), "/pictures");
    EXPECT_EQ(record.destinationFolder.rightTrimmed(), "/out");
    EXPECT_EQ(record.dialogFolder.rightTrimmed(), "/lists");
    EXPECT_EQ(record.formatRow, 0x1102);
    EXPECT_EQ(record.overwriteFiles, 0xA5);
    EXPECT_EQ(record.maximized, -1);
    EXPECT_EQ(record.windowWidth, 0x01020304);
    EXPECT_EQ(record.windowHeight, 0x11121314);
    EXPECT_EQ(record.splitterBs11, 0x21222324);
    EXPECT_EQ(record.splitterBs13, 0x31323334);
    EXPECT_EQ(record.splitterBs12, 0x41424344);
    EXPECT_EQ(record.splitterBs21, -2);
    EXPECT_EQ(record.splitterBs14, 0x51525354);
    EXPECT_EQ(record.showDestination, 0x5A);
    EXPECT_EQ(record.toBytes(), distinctBytes());
}

TEST(StartupRecord, WhatIsMissingReadsAsZeroBytes) {
    const std::string whole = distinctBytes();
    for (const size_t length : {size_t{0}, size_t{1}, size_t{255}, size_t{256}, size_t{700},
                                size_t{1025}, size_t{1031}, size_t{1057}}) {
        std::string expected = whole.substr(0, length);
        expected.resize(1058, '\0');
        EXPECT_EQ(StartupRecord::fromBytes(whole.substr(0, length)).toBytes(), expected) << length;
    }
}

TEST(StartupRecord, TheDefaultsAreThoseOfAFirstStart) {
    EXPECT_EQ(StartupRecord::defaults("/opt/here").toBytes(),
              padded("Sample") + padded("/opt/here") + padded("/opt/here") + padded("/opt/here") +
                  std::string("\x06\x00\x01\x00\x00", 5) + four(9600) + four(7200) + four(30) +
                  four(50) + four(75) + four(50) + four(30) + "\x01");
}

TEST_F(Startup, AFirstStartMakesAnEmptyFileAndTakesTheDefaults) {
    batch.Startup();
    EXPECT_TRUE(std::filesystem::exists(file()));
    EXPECT_EQ(readAll(file()), "");
    EXPECT_EQ(recorder.steps,
              (std::vector<std::string>{"load", "other?", "size 640 480",
                                        "folder " + recorder.folder, "show", "end splash"}));
    EXPECT_TRUE(recorder.boxes.empty());
    EXPECT_EQ(batch.cboFormat.text(), "JPEG - Good Quality");
    EXPECT_EQ(batch.txtName, "Sample");
    EXPECT_EQ(batch.chkOverwrite, 1);
    EXPECT_EQ(batch.chkShowDestination, 1);
    EXPECT_EQ(batch.txtDestination, recorder.folder);
    EXPECT_EQ(batch.FT, recorder.folder + "/");
    EXPECT_EQ(batch.windowState, cBatch::WindowState::normal);
    EXPECT_EQ(batch.windowWidth, 640);
    EXPECT_EQ(batch.windowHeight, 480);
    EXPECT_EQ(batch.bs11, 30);
    EXPECT_EQ(batch.bs12, 75);
    EXPECT_EQ(batch.bs13, 50);
    EXPECT_EQ(batch.bs14, 30);
    EXPECT_EQ(batch.bs21, 50);
}

TEST_F(Startup, NothingButTheCloseWritesTheFile) {
    batch.Startup();
    batch.startupRecord.lastFolder = "/somewhere";
    EXPECT_EQ(readAll(file()), "");
    batch.CloseWindow();
    EXPECT_EQ(readAll(file()).size(), 1058U);
    EXPECT_EQ(readAll(file()), batch.startupRecord.toBytes());
    EXPECT_EQ(readAll(file()).substr(256, 256), padded("/somewhere"));
}

TEST_F(Startup, AStoredRecordIsReadAndShown) {
    std::filesystem::create_directory(scratch.path() / "out");
    StartupRecord record = StartupRecord::defaults(recorder.folder);
    record.genericName = "  Holiday";
    record.destinationFolder = scratch / "out";
    record.dialogFolder = "/lists";
    record.formatRow = 9;
    record.overwriteFiles = 0;
    record.showDestination = 0;
    record.windowWidth = 800 * 15;
    record.windowHeight = 600 * 15;
    record.splitterBs11 = 11;
    record.splitterBs12 = 12;
    record.splitterBs13 = 13;
    record.splitterBs14 = 14;
    record.splitterBs21 = 21;
    writeAll(file(), record.toBytes());
    batch.chkOverwrite = 1;
    batch.chkShowDestination = 1;
    batch.Startup();
    EXPECT_EQ(recorder.steps, (std::vector<std::string>{"load", "other?", "size 800 600",
                                                        "folder /lists", "show", "end splash"}));
    EXPECT_EQ(batch.txtName, "  Holiday");
    EXPECT_EQ(batch.txtDestination, scratch / "out");
    EXPECT_EQ(batch.cboFormat.text(), "PNG - Portable Network Graphics");
    EXPECT_EQ(batch.chkOverwrite, 0);
    EXPECT_EQ(batch.chkShowDestination, 0);
    EXPECT_EQ((std::array{batch.bs11, batch.bs12, batch.bs13, batch.bs14, batch.bs21}),
              (std::array{11, 12, 13, 14, 21}));
    EXPECT_EQ(readAll(file()), record.toBytes());
}

TEST_F(Startup, AFileOfTenBytesIsReadAsFarAsItGoes) {
    writeAll(file(), "0123456789");
    batch.Startup();
    EXPECT_TRUE(recorder.boxes.empty());
    EXPECT_EQ(batch.txtName, "0123456789");
    EXPECT_EQ(batch.startupRecord.genericName.bytes().substr(0, 10), "0123456789");
    EXPECT_EQ(batch.txtDestination, "");
    EXPECT_EQ(batch.bs11, 0);
    EXPECT_EQ(recorder.steps, (std::vector<std::string>{"load", "other?", "size 0 0", "folder ",
                                                        "show", "end splash"}));
    EXPECT_EQ(readAll(file()), "0123456789");
}

TEST_F(Startup, AnEmptyFileIsNoFirstStart) {
    writeAll(file(), "");
    batch.LoadStartup();
    EXPECT_EQ(batch.startupRecord.toBytes(), std::string(1058, '\0'));
}

TEST_F(Startup, NoFileIsEverTakenForCorrupted) {
    writeAll(file(), std::string(5000, '\xFF'));
    batch.LoadStartup();
    EXPECT_TRUE(recorder.boxes.empty());
    EXPECT_EQ(readAll(file()).size(), 5000U);
    EXPECT_EQ(batch.startupRecord.toBytes(), std::string(1058, '\xFF'));
}

TEST_F(Startup, TheFileIsNotCut) {
    writeAll(file(), std::string(1100, 'x'));
    batch.startupRecord = distinctRecord();
    batch.SaveStartup();
    EXPECT_EQ(readAll(file()), distinctBytes() + std::string(42, 'x'));
}

TEST_F(Startup, AFileThatCannotBeOpenedLeavesTheRecordAsItIs) {
    recorder.everyFileExists = true;
    batch.startupRecord = distinctRecord();
    for (const std::string& folder : {scratch.path().string(), scratch / "missing"}) {
        recorder.folder = folder;
        std::error_code error;  // a folder in the file's place cannot be opened for writing
        std::filesystem::create_directory(file(), error);
        batch.SaveStartup();
        batch.LoadStartup();
        EXPECT_EQ(batch.startupRecord.toBytes(), distinctBytes());
        EXPECT_TRUE(recorder.boxes.empty());
    }
}

TEST_F(Startup, TheDefaultsNeedNoFile) {
    recorder.folder = scratch / "missing";
    batch.LoadStartup();
    EXPECT_EQ(batch.startupRecord.toBytes(), StartupRecord::defaults(recorder.folder).toBytes());
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(Startup, AMaximizedWindowComesUpMaximizedAndKeepsItsStoredSize) {
    batch.Startup();
    batch.windowWidth = 700;
    batch.windowHeight = 500;
    batch.CloseWindow();
    batch.windowState = cBatch::WindowState::maximized;
    batch.windowWidth = 1920;
    batch.windowHeight = 1080;
    batch.CloseWindow();
    const std::string bytes = readAll(file());
    EXPECT_EQ(bytes.substr(1027, 2), "\xFF\xFF");
    EXPECT_EQ(bytes.substr(1029, 8), four(700 * 15) + four(500 * 15));

    cBatch next(recorder);
    recorder.steps.clear();
    next.Startup();
    EXPECT_EQ(recorder.steps,
              (std::vector<std::string>{"load", "other?", "maximize", "folder " + recorder.folder,
                                        "show", "end splash"}));
    EXPECT_EQ(next.windowState, cBatch::WindowState::maximized);
    next.CloseWindow();
    EXPECT_EQ(readAll(file()), bytes);
}

TEST_F(Startup, AnyTruthThatIsNotZeroMaximizes) {
    StartupRecord record = StartupRecord::defaults(recorder.folder);
    record.maximized = 1;
    writeAll(file(), record.toBytes());
    batch.Startup();
    EXPECT_EQ(recorder.steps.at(2), "maximize");
}

TEST_F(Startup, AWindowClosedWhileMinimizedKeepsTheLastSizeAndState) {
    for (const int16_t maximized : {int16_t{0}, int16_t{-1}}) {
        batch.startupRecord = StartupRecord::defaults(recorder.folder);
        batch.startupRecord.maximized = maximized;
        batch.windowState = cBatch::WindowState::minimized;
        batch.windowWidth = 160;
        batch.windowHeight = 27;
        batch.CloseWindow();
        EXPECT_EQ(batch.startupRecord.maximized, maximized);
        EXPECT_EQ(batch.startupRecord.windowWidth, 9600);
        EXPECT_EQ(batch.startupRecord.windowHeight, 7200);
    }
}

TEST_F(Startup, ANormalCloseStoresEverything) {
    batch.startupRecord = StartupRecord::defaults("/before");
    batch.startupRecord.maximized = -1;
    batch.bs11 = 1;
    batch.bs12 = 2;
    batch.bs13 = 3;
    batch.bs14 = 4;
    batch.bs21 = 5;
    batch.windowWidth = 801;
    batch.windowHeight = 602;
    batch.cboFormat.index = 17;
    batch.chkOverwrite = 0;
    batch.chkShowDestination = 0;
    batch.txtName = "  New name  ";
    batch.txtDestination = "/never/used/in/a/run";
    batch.FT = "/elsewhere";
    batch.CloseWindow();
    EXPECT_EQ(readAll(file()), padded("New name") + padded("/before") + padded("/before") +
                                   padded("/before") + std::string("\x11\x00\x00\x00\x00", 5) +
                                   four(801 * 15) + four(602 * 15) + four(1) + four(3) + four(2) +
                                   four(5) + four(4) + std::string(1, '\0'));
}

TEST_F(Startup, NoChosenFormatIsStoredAndShownAsNone) {
    batch.cboFormat.index = -1;
    batch.CloseWindow();
    EXPECT_EQ(readAll(file()).substr(1024, 2), "\xFF\xFF");
    cBatch next(recorder);
    next.Startup();
    EXPECT_EQ(next.cboFormat.index, -1);
    EXPECT_EQ(next.txtName, batch.txtName);
}

TEST_F(Startup, AFormatRowOutsideTheListShowsNoRow) {
    for (const int16_t row : {int16_t{18}, int16_t{-2}, int16_t{32767}, int16_t{-32768}}) {
        StartupRecord record = StartupRecord::defaults(recorder.folder);
        record.formatRow = row;
        writeAll(file(), record.toBytes());
        cBatch next(recorder);
        next.Startup();
        EXPECT_EQ(next.cboFormat.index, -1);
        EXPECT_EQ(next.cboFormat.text(), "");
        EXPECT_EQ(next.txtName, "Sample");
        EXPECT_EQ(next.chkOverwrite, 1);
    }
}

TEST_F(Startup, ATickBoxTakesNoOtherValueThanItsTwo) {
    StartupRecord record = StartupRecord::defaults(recorder.folder);
    record.overwriteFiles = 7;
    record.showDestination = 255;
    writeAll(file(), record.toBytes());
    batch.Startup();
    EXPECT_EQ(batch.chkOverwrite, 0);
    EXPECT_EQ(batch.chkShowDestination, 0);
    EXPECT_EQ(batch.txtName, "Sample");
}

TEST_F(Startup, FoldersThatNoLongerExistAreLeftOut) {
    StartupRecord record = StartupRecord::defaults(recorder.folder);
    record.lastFolder = scratch / "gone";
    record.destinationFolder = scratch / "gone too";
    writeAll(file(), record.toBytes());
    batch.FT = "/the/tree's/own";
    batch.Startup();
    EXPECT_EQ(batch.FT, "/the/tree's/own");
    EXPECT_EQ(batch.txtDestination, "");
    EXPECT_FALSE(recorder.hasChanged("FT"));
    EXPECT_FALSE(recorder.hasChanged("txtDestination"));
    EXPECT_TRUE(recorder.boxes.empty());
}

TEST_F(Startup, TheTreeIsPointedToTheLastFolderTwice) {
    batch.Startup();
    EXPECT_EQ(recorder.timesChanged("FT"), 2);
    EXPECT_EQ(batch.FT, recorder.folder + "/");
}

TEST_F(Startup, ASecondInstanceIsWarnedAndStartsAllTheSame) {
    recorder.instancesAhead = 1;
    std::string atUnload;
    recorder.onUnload = [&] { atUnload = readAll(file()); };
    batch.Startup();
    EXPECT_EQ(recorder.boxes, (std::vector<Recorder::Box>{{"Tessarine is already running!",
                                                           Icon::information, "Tessarine"}}));
    EXPECT_EQ(recorder.steps, (std::vector<std::string>{
                                  "load", "other?", "message", "unload", "load", "size 640 480",
                                  "folder " + recorder.folder, "show", "end splash"}));
    // Unloading the first window is a close like any other.
    EXPECT_EQ(atUnload, batch.startupRecord.toBytes());
    EXPECT_EQ(batch.txtName, "Sample");
}

TEST_F(Startup, TheWindowsLoadingSetsUpThePreview) {
    batch.LSelectedFunctions.push_back({"Blur", 1});
    batch.functionId = 40;
    batch.workBits = PixelBuffer();
    batch.Startup();
    EXPECT_TRUE(batch.LSelectedFunctions.empty());
    EXPECT_EQ(batch.functionId, 5);
    EXPECT_EQ(batch.workWidth, 200);
    EXPECT_EQ(batch.workHeight, 174);
    EXPECT_EQ(batch.workBits, batch.iOri.picture().pixels());
    EXPECT_EQ(batch.originalBits, batch.workBits);
    EXPECT_EQ(batch.cFilter.Bits(), batch.workBits);
    ASSERT_NE(batch.workRegion.RegionMain(), nullptr);
    EXPECT_EQ(batch.workRegion.RegionMain()->box(), (Rect{0, 0, 200, 174}));
}

TEST_F(Startup, WhatTheLoadingShowsIsToldInItsOrder) {
    batch.Startup();
    EXPECT_EQ(recorder.changes, (std::vector<std::string>{
                                    "bs11", "bs12", "bs13", "bs14", "bs21", "LSelectedFunctions",
                                    "FT", "txtDestination", "FT", "cboFormat", "chkShowDestination",
                                    "chkOverwrite", "txtName"}));
}

/// Sets a variable of the environment and puts it back.
class Variable {
  public:
    Variable(const char* name, const std::string& value) : name_(name) {
        const char* before = std::getenv(name);
        if (before != nullptr) before_ = before;
        setenv(name, value.c_str(), 1);
    }
    ~Variable() {
        if (before_) {
            setenv(name_, before_->c_str(), 1);
        } else {
            unsetenv(name_);
        }
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

  private:
    const char* name_;
    std::optional<std::string> before_;
};

TEST(Platform, TellsFilesAndFoldersApart) {
    const ScratchFolder scratch;
    writeAll(scratch / "file", "x");
    SilentPlatform platform;
    EXPECT_TRUE(platform.fileExists(scratch / "file"));
    EXPECT_FALSE(platform.folderExists(scratch / "file"));
    EXPECT_TRUE(platform.folderExists(scratch.path()));
    EXPECT_TRUE(platform.folderExists(scratch.path().string() + "/"));
    EXPECT_FALSE(platform.fileExists(scratch.path()));
    EXPECT_FALSE(platform.fileExists(scratch / "other"));
    EXPECT_FALSE(platform.fileExists(""));
    EXPECT_FALSE(platform.folderExists(""));
    EXPECT_FALSE(platform.folderExists(scratch / "file/below"));
    std::filesystem::create_symlink(scratch / "nowhere", scratch.path() / "dangling");
    EXPECT_FALSE(platform.fileExists(scratch / "dangling"));
    EXPECT_FALSE(platform.fileExists(std::string(10000, 'x')));
}

TEST(Platform, TheProgramsOwnFolderIsTakenWhereItCanBeWritten) {
    SilentPlatform platform;
    EXPECT_TRUE(std::filesystem::exists(executableFolder() + "/test_batch"));
    EXPECT_EQ(platform.programFolder(), executableFolder());
}

TEST(Platform, TheUsersConfigurationFolderIsMadeWhereItIsMissing) {
    const ScratchFolder scratch;
    {
        const Variable configuration("XDG_CONFIG_HOME", scratch / "config");
        EXPECT_EQ(userConfigurationFolder(), scratch / "config/tessarine");
        EXPECT_TRUE(std::filesystem::is_directory(scratch / "config/tessarine"));
    }
    // A relative path stands for no place.
    const Variable home("HOME", scratch / "home");
    for (const char* given : {"", "relative/config"}) {
        const Variable configuration("XDG_CONFIG_HOME", given);
        EXPECT_EQ(userConfigurationFolder(), scratch / "home/.config/tessarine");
    }
    EXPECT_TRUE(std::filesystem::is_directory(scratch / "home/.config/tessarine"));
}

TEST(Platform, TheClockRunsForward) {
    SilentPlatform platform;
    const uint32_t first = platform.timeGetTime();
    EXPECT_LT(platform.timeGetTime() - first, 60000U);
}

}  // namespace
}  // namespace tessarine
