#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include <QWidget>

#include "batch/batch.h"
#include "wizard/desktop.h"
#include "wizard/repaints.h"
#include "wizard/step.h"

class QTimer;
class QToolButton;

namespace tessarine {

class StatusBar;
class StepStrip;

/// The main window: a wizard of four steps on one tab strip, with a status bar below. It owns the
/// program without a screen and is the screen that the program knows.
class fBatch : public QWidget, private Platform {
    Q_OBJECT

  public:
    /// \param files  who reads and writes picture files for it
    explicit fBatch(Desktop& desktop, PictureFiles& files = localFiles());
    ~fBatch() override;

    cBatch& batch() { return batch_; }
    /// What the splash window's tick does: settings, controls, stored size, show.
    void start() { batch_.Startup(); }
    /// Takes in what a file manager hands over: function lists, picture lists, pictures, folders.
    void openPaths(const std::vector<std::string>& paths);

  signals:
    /// The window comes to stand at once.
    void showing();
    /// The window stands; the splash window is no longer needed.
    void ready();
    /// The window was closed and its settings are written.
    void closed();

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void messageBox(const std::string& text, Icon icon, const std::string& title) override;
    std::optional<std::string> saveDialog(const std::string& filter) override;
    std::optional<std::string> openDialog(const std::string& filter) override;
    void giveWay() override;
    void changed(std::string_view control) override;
    void openPath(const std::string& path) override;
    void loadWindow() override;
    void unloadWindow() override;
    void maximizeWindow() override;
    void sizeWindow(int32_t width, int32_t height) override;
    void setDialogFolder(const std::string& folder) override { dialogFolder_ = folder; }
    void showWindow() override;
    void unloadSplash() override { emit ready(); }
    bool anotherInstanceRuns() override { return desktop_.anotherInstanceRuns(); }
    std::string programFolder() override { return desktop_.programFolder(); }
    std::string fileTypeName(const std::string& extension) override;

    void addSteps();
    void addStatusBar();
    void addButtons();
    void openWebPage();
    void showAbout();
    void openHelp();
    void layOut();
    /// Lets the settings know how the window stands.
    void noteWindow();

    Desktop& desktop_;
    Repaints repaints_;
    std::string dialogFolder_;
    QTimer* tmrIdle_;
    cBatch batch_;
    StepStrip* strip_ = nullptr;  ///< nothing while no window is loaded, as SB
    StatusBar* SB_ = nullptr;
    std::array<Step*, 4> steps_{};
    bool closed_ = false;  ///< by a person or the system, for good
    int givingWay_ = 0;    ///< how often one within another
};

}  // namespace tessarine
