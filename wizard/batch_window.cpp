#include "wizard/batch_window.h"

#include <chrono>

#include <QApplication>
#include <QCloseEvent>
#include <QTimer>
#include <QToolButton>
#include <QWindow>

#include "batch/texts.h"
#include "pixels/pixel_memory.h"
#include "widgets/about.h"
#include "wizard/file_types.h"
#include "wizard/frame_layout.h"
#include "wizard/icons.h"
#include "wizard/list_drops.h"
#include "wizard/status_bar.h"
#include "wizard/step1.h"
#include "wizard/step2.h"
#include "wizard/step3.h"
#include "wizard/step4.h"
#include "wizard/step_strip.h"

namespace tessarine {

namespace {

/// What the first of the window's buttons opens. Whoever hands the program out under an address
/// of their own names it here; it stands nowhere else.
constexpr const char* webPage = "https://tessarine.example/";

/// When nothing has changed for so long, the memory that is kept for the next preview goes back to
/// the system.
constexpr std::chrono::seconds idleTime{10};

constexpr QSize aboutSize{380, 280};

}  // namespace

fBatch::fBatch(Desktop& desktop, PictureFiles& files)
    : desktop_(desktop), tmrIdle_(new QTimer(this)), batch_(*this, files) {
    setObjectName("fBatch");
    setWindowTitle("Ombrel Tessarine");
    tmrIdle_->setObjectName("tmrIdle");
    tmrIdle_->setSingleShot(true);
    tmrIdle_->setInterval(idleTime);
    connect(tmrIdle_, &QTimer::timeout, this, [this] {
        if (!batch_.runs()) giveBackPixelMemory();
    });
    new ListDrops(*this, [this](const std::vector<std::string>& paths) { openPaths(paths); });
}

fBatch::~fBatch() { unloadWindow(); }

// ---- Loading and unloading ----

void fBatch::loadWindow() {
    strip_ = new StepStrip(this);
    strip_->setObjectName("sTab");
    addSteps();
    addButtons();
    addStatusBar();
    layOut();
    repaints_.all();
}

void fBatch::addSteps() {
    const StepContext context{batch_, desktop_, repaints_};
    steps_ = {new Frame_step1(context, strip_), new Frame_step2(context, strip_),
              new Frame_step3(context, strip_), new Frame_step4(context, strip_)};
    const char* captions[] = {"Step &1 : Select Images", "Step &2 : Select Functions",
                              "Step &3 : Save Settings", "Step &4 : Get Ready"};
    const char* icons[] = {"step-1", "step-2", "step-3", "step-4"};
    for (size_t i = 0; i < steps_.size(); ++i) {
        const int tab = strip_->addTab(steps_[i], programIcon(icons[i]), captions[i]);
        steps_[i]->setAccessibleName(QString(captions[tab]).remove('&'));
    }
}

void fBatch::addButtons() {
    const auto button = [this](const char* name, const char* icon, const QString& text,
                               const QKeySequence& shortcut, void (fBatch::*action)()) {
        auto* made = new QToolButton(strip_);
        made->setObjectName(name);
        made->setIcon(programIcon(icon));
        made->setAutoRaise(true);
        made->setFocusPolicy(Qt::TabFocus);
        made->setAccessibleName(text);
        made->setShortcut(shortcut);
        made->setToolTip(text + " (" + shortcut.toString(QKeySequence::NativeText) + ")");
        connect(made, &QToolButton::clicked, this, action);
        return made;
    };
    strip_->setButtons(
        {button("cmdOnline", "online", tr("Web page"), Qt::CTRL | Qt::Key_F1, &fBatch::openWebPage),
         button("cmdAbout", "about", tr("About"), Qt::SHIFT | Qt::Key_F1, &fBatch::showAbout),
         button("cmdHelp", "help", tr("Help"), Qt::Key_F1, &fBatch::openHelp)});
}

void fBatch::addStatusBar() {
    SB_ = new StatusBar(this);
    for (size_t i = 0; i < batch_.SB.size(); ++i)
        repaints_.on("SB(" + std::to_string(i + 1) + ")",
                     [this, i] { SB_->showPanel(i, batch_.SB[i]); });
    repaints_.on("pb", [this] { SB_->showProgress(batch_.pb); });
}

void fBatch::unloadWindow() {
    repaints_.clear();
    steps_ = {};
    delete strip_;
    strip_ = nullptr;
    delete SB_;
    SB_ = nullptr;
}

void fBatch::showWindow() {
    emit showing();
    static_cast<Frame_step1*>(steps_[0])->start();
    show();
    // The window manager holds the frame to the least size, so that it does not flicker back.
    const Extent least = leastWindow({0, 0});
    windowHandle()->setMinimumSize({least.width, least.height});
    noteWindow();
}

// ---- Size and state ----

void fBatch::maximizeWindow() {
    // Restored, it has the last normal size again.
    const StartupRecord& stored = batch_.startupRecord;
    sizeWindow(stored.windowWidth / twipsPerPixel, stored.windowHeight / twipsPerPixel);
    setWindowState(Qt::WindowMaximized);
}

void fBatch::sizeWindow(int32_t width, int32_t height) {
    const Extent held = leastWindow({width, height});
    resize(held.width, held.height);
    noteWindow();
}

void fBatch::resizeEvent(QResizeEvent*) { layOut(); }

void fBatch::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    switch (event->type()) {
        case QEvent::WindowStateChange:
        case QEvent::FontChange:
        case QEvent::StyleChange:
            layOut();
            break;
        default:
            break;
    }
}

void fBatch::layOut() {
    noteWindow();
    if (strip_ == nullptr || SB_ == nullptr || isMinimized()) return;
    const Extent inner{width(), height()};
    const Extent held = leastWindow(inner);
    if (held != inner && isVisible()) {
        resize(held.width, held.height);
        return;
    }
    const FrameLayout places = layOutWindow(inner, SB_->wantedHeight());
    const auto rectangle = [](const Box& box) {
        return QRect(box.x, box.y, box.width, box.height);
    };
    strip_->placeFrames(places.frame);
    strip_->setGeometry(rectangle(places.sTab));
    SB_->setGeometry(rectangle(places.SB));
}

void fBatch::noteWindow() {
    using enum cBatch::WindowState;
    if (isMinimized()) {
        batch_.windowState = minimized;
    } else if (isMaximized() || isFullScreen()) {
        batch_.windowState = maximized;
    } else {
        batch_.windowState = normal;
        batch_.windowWidth = width();
        batch_.windowHeight = height();
    }
}

void fBatch::closeEvent(QCloseEvent* event) {
    event->accept();
    if (closed_ || strip_ == nullptr) return;
    closed_ = true;
    noteWindow();
    // A run under way, and one inside it, ends before its next picture.
    batch_.stopRequested = true;
    setEnabled(false);
    batch_.CloseWindow();
    emit closed();
}

// ---- Buttons ----

void fBatch::openWebPage() { desktop_.openPath(webPage); }

void fBatch::showAbout() {
    fAbout about(programPicture("about"), aboutSize, "Tessarine " TESSARINE_VERSION, this);
    about.exec();
}

void fBatch::openHelp() {
    const std::string page = desktop_.applicationFolder() + "/Help/default.htm";
    if (fileExists(page)) {
        desktop_.openPath(page);
    } else {
        messageBox("Help Files are Missing! Please Re-install Tessarine Again", Icon::information,
                   "Help Files Missing!");
    }
}

// ---- What the program asks of its screen ----

void fBatch::messageBox(const std::string& text, Icon icon, const std::string& title) {
    // What still runs when the window is closed ends without a word.
    if (closed_) return;
    desktop_.messageBox(this, QString::fromStdString(text), icon, QString::fromStdString(title));
}

std::optional<std::string> fBatch::saveDialog(const std::string& filter) {
    if (closed_) return std::nullopt;
    return desktop_.saveDialog(this, filter, dialogFolder_);
}

std::optional<std::string> fBatch::openDialog(const std::string& filter) {
    if (closed_) return std::nullopt;
    return desktop_.openDialog(this, filter, dialogFolder_);
}

std::string fBatch::fileTypeName(const std::string& extension) {
    return tessarine::fileTypeName(extension);
}

// An event may lead to another preview, which gives way in turn. What has piled up during a large
// picture is left to the outer ones, before it takes the whole stack.
// During a run every control is live. A preview alone is over in milliseconds: what a person does
// meanwhile follows it in its order, and pictures and timers do not wait.
void fBatch::giveWay() {
    constexpr int deepest = 100;
    if (givingWay_ >= deepest) return;
    ++givingWay_;
    QApplication::processEvents(batch_.runs() ? QEventLoop::AllEvents
                                              : QEventLoop::ExcludeUserInputEvents);
    --givingWay_;
}

void fBatch::changed(std::string_view control) {
    repaints_.changed(control);
    tmrIdle_->start();
}

void fBatch::openPath(const std::string& path) {
    if (!closed_) desktop_.openPath(path);
}

void fBatch::openPaths(const std::vector<std::string>& paths) {
    if (closed_ || strip_ == nullptr) return;
    // A list that replaces the basket must not take away what came with it.
    std::vector<std::string> folders;
    std::vector<std::string> pictures;
    for (const std::string& path : paths) {
        const std::string extension = lowerCase(extensionOf(path));
        if (folderExists(path)) {
            folders.push_back(path);
        } else if (extension == "qfk") {
            batch_.OpenFunctionList(path);
        } else if (extension == "qpkl") {
            batch_.OpenPictureList(path);
        } else {
            pictures.push_back(path);
        }
    }
    if (!pictures.empty()) batch_.DropOnBasket(pictures);
    if (!folders.empty()) batch_.DropOnFolder({folders.back()});
}

}  // namespace tessarine
