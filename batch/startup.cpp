#include <cstdio>

#include "batch/batch.h"
#include "batch/texts.h"
#include "imagefiles/format_table.h"
#include "pixels/byte_files.h"
#include "pixels/numbers.h"

// The settings from the start of the program to its end.

namespace tessarine {

namespace {

std::string settingsPath(Platform& platform) {
    return platform.programFolder() + folderSeparator + "tsStart.up";
}

/// Shows a tick box's stored value; a box holds 0 or 1 and takes nothing else.
void showTick(Platform& platform, int16_t& box, uint8_t value, std::string_view control) {
    if (value > 1) return;
    box = value;
    platform.changed(control);
}

int32_t pixelsOf(int32_t twips) {
    return roundToInteger(static_cast<double>(twips) / twipsPerPixel);
}

}  // namespace

void cBatch::LoadStartup() {
    const std::string path = settingsPath(platform_);
    bool initialize = false;
    if (!platform_.fileExists(path)) {
        initialize = true;
    } else if (path.empty()) {
        // Never so: it is the path that is measured here, and not the file. A file that is
        // damaged is used as far as it can be read.
        platform_.messageBox("Configuration data file is corrupted\r\nValues will be initilized",
                             Icon::exclamation, "Ombrel Tessarine");
        std::remove(path.c_str());
        initialize = true;
    }
    attemptOnFile([&] {
        startupRecord = StartupRecord::fromBytes(readFirstOrMake(path, StartupRecord::bytesOnDisk));
    });
    if (initialize) startupRecord = StartupRecord::defaults(platform_.programFolder());
}

void cBatch::SaveStartup() {
    attemptOnFile([&] { writeBytes(settingsPath(platform_), startupRecord.toBytes()); });
}

void cBatch::Startup() {
    const auto load = [this] {
        platform_.loadWindow();
        LoadWindow();
    };
    LoadStartup();
    load();
    if (platform_.anotherInstanceRuns()) {
        platform_.messageBox("Tessarine is already running!", Icon::information);
        CloseWindow();
        platform_.unloadWindow();
        // No exit: the message is a warning, and the start goes on with a new window.
        load();
    }
    if (startupRecord.maximized != 0) {
        windowState = WindowState::maximized;
        platform_.maximizeWindow();
    } else {
        // The platform has the last word: it may hold the window to a least size.
        windowWidth = pixelsOf(startupRecord.windowWidth);
        windowHeight = pixelsOf(startupRecord.windowHeight);
        platform_.sizeWindow(windowWidth, windowHeight);
    }
    platform_.setDialogFolder(startupRecord.dialogFolder.rightTrimmed());
    platform_.showWindow();
    platform_.unloadSplash();
}

void cBatch::LoadWindow() {
    const auto place = [this](int32_t& splitter, int32_t position, std::string_view control) {
        splitter = position;
        platform_.changed(control);
    };
    place(bs11, startupRecord.splitterBs11, "bs11");
    place(bs12, startupRecord.splitterBs12, "bs12");
    place(bs13, startupRecord.splitterBs13, "bs13");
    place(bs14, startupRecord.splitterBs14, "bs14");
    place(bs21, startupRecord.splitterBs21, "bs21");

    LSelectedFunctions.clear();
    selectedFunction = -1;
    platform_.changed("LSelectedFunctions");
    functionId = 5;
    // No sheet is being built: a chain from a list shows at once what becomes of it.
    sheetReady = true;

    // The folder tree takes no folder that is not there, and stays where it is.
    const auto pointTree = [this](const std::string& folder) {
        if (!platform_.folderExists(folder)) return;
        FT = folder;
        platform_.changed("FT");
    };
    const std::string lastFolder = startupRecord.lastFolder.rightTrimmed();
    const std::string destination = startupRecord.destinationFolder.rightTrimmed();
    pointTree(lastFolder);
    if (platform_.folderExists(destination)) {
        txtDestination = destination;
        platform_.changed("txtDestination");
    }
    pointTree(lastFolder + folderSeparator);

    takeIn(iOri);

    const int32_t row = startupRecord.formatRow;
    if (row >= 0 && row < formatRowCount) {
        cboFormat.index = row;
        platform_.changed("cboFormat");
    }
    showTick(platform_, chkShowDestination, startupRecord.showDestination, "chkShowDestination");
    showTick(platform_, chkOverwrite, startupRecord.overwriteFiles, "chkOverwrite");
    txtName = startupRecord.genericName.rightTrimmed();
    platform_.changed("txtName");
}

void cBatch::CloseWindow() {
    startupRecord.splitterBs13 = bs13;
    startupRecord.splitterBs12 = bs12;
    startupRecord.splitterBs11 = bs11;
    startupRecord.splitterBs14 = bs14;
    startupRecord.splitterBs21 = bs21;
    if (windowState == WindowState::normal) {
        startupRecord.windowHeight = windowHeight * twipsPerPixel;
        startupRecord.windowWidth = windowWidth * twipsPerPixel;
        startupRecord.maximized = 0;
    } else if (windowState == WindowState::maximized) {
        startupRecord.maximized = -1;
    }
    attempt([&] { startupRecord.formatRow = toInteger16(double(cboFormat.index)); });
    attempt([&] { startupRecord.showDestination = toByte(chkShowDestination); });
    attempt([&] { startupRecord.overwriteFiles = toByte(chkOverwrite); });
    startupRecord.genericName = trimmed(txtName);
    SaveStartup();
}

}  // namespace tessarine
