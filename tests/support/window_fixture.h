#pragma once

#include <filesystem>
#include <set>
#include <string>

#include <QTabWidget>
#include <gtest/gtest.h>

#include "batch/texts.h"
#include "support/paths.h"
#include "support/pictures.h"
#include "support/recorded_desktop.h"
#include "support/window_driver.h"
#include "wizard/batch_window.h"

namespace tessarine::tests {

/// The whole window on a recorded desktop, with folders for pictures and outputs.
class WindowTest : public testing::Test {
  protected:
    static constexpr int32_t bmpRow = 8;

    WindowTest() {
        std::filesystem::create_directory(in);
        std::filesystem::create_directory(out);
    }

    void start() {
        window.start();
        settle();
    }
    void goToStep(int number) {
        control<QTabWidget>(window, "sTab").setCurrentIndex(number - 1);
        settle();
    }
    template <class Control = QWidget>
    Control& the(const char* name) {
        return control<Control>(window, name);
    }
    void press(const char* name) { click(the(name)); }

    /// A grey picture of its own, in the basket.
    void addGrey(uint8_t level, int32_t width = 5, int32_t height = 4) {
        const std::string path = in + "/grey" + std::to_string(batch.lvSelected.size()) + ".ppm";
        writePixmap(path, drawBuffer(width, height, [=](int32_t, int32_t) {
                        return Pixel{level, level, level, 0};
                    }));
        batch.lvSelected.push_back({fileNameOf(path), extensionOf(path), path, folderOf(path)});
    }
    /// The settings of a run into `out`, set at the controls' members.
    void saveAsBitmaps() {
        batch.txtDestination = out;
        batch.cboFormat.index = bmpRow;
        batch.chkShowDestination = 0;
        for (const char* name : {"txtDestination", "cboFormat", "chkShowDestination"})
            batch.platform().changed(name);
    }
    std::set<std::string> outputs() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(out))
            names.insert(entry.path().filename().string());
        return names;
    }

    const ScratchFolder scratch;
    const std::string in = scratch / "in";
    const std::string out = scratch / "out";
    RecordedDesktop desktop;
    fBatch window{desktop};
    cBatch& batch = window.batch();
};

}  // namespace tessarine::tests
