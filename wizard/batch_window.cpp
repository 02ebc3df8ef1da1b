#include "wizard/batch_window.h"

#include <QApplication>
#include <QFile>
#include <QTabWidget>

#include "wizard/step1.h"
#include "wizard/step2.h"
#include "wizard/step3.h"
#include "wizard/step4.h"

namespace tessarine {

fBatch::fBatch(Desktop& desktop) : desktop_(desktop), batch_(*this) { setObjectName("fBatch"); }

fBatch::~fBatch() { unloadWindow(); }

void fBatch::openPaths(const std::vector<std::string>&) {}

void fBatch::messageBox(const std::string& text, Icon icon, const std::string& title) {
    desktop_.messageBox(this, QString::fromStdString(text), icon, QString::fromStdString(title));
}

std::optional<std::string> fBatch::saveDialog(const std::string& filter) {
    return desktop_.saveDialog(this, filter, dialogFolder_);
}

std::optional<std::string> fBatch::openDialog(const std::string& filter) {
    return desktop_.openDialog(this, filter, dialogFolder_);
}

void fBatch::giveWay() { QApplication::processEvents(); }

void fBatch::loadWindow() {
    setWindowTitle("Ombrel Tessarine");
    auto* tabs = new QTabWidget(this);
    tabs->setObjectName("sTab");
    const StepContext context{batch_, desktop_, repaints_};
    steps_ = {new Frame_step1(context, tabs), new Frame_step2(context, tabs),
              new Frame_step3(context, tabs), new Frame_step4(context, tabs)};
    const char* captions[] = {"Step 1 : Select Images", "Step 2 : Select Functions",
                              "Step 3 : Save Settings", "Step 4 : Get Ready"};
    for (size_t i = 0; i < steps_.size(); ++i)
        tabs->addTab(steps_[i], captions[i]);
    setCentralWidget(tabs);
}

void fBatch::unloadWindow() {
    repaints_.clear();
    delete takeCentralWidget();
}

void fBatch::maximizeWindow() { setWindowState(Qt::WindowMaximized); }

void fBatch::sizeWindow(int32_t width, int32_t height) { resize(width, height); }

void fBatch::showWindow() { show(); }

}  // namespace tessarine
