#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QFileSystemModel>
#include <QLineEdit>
#include <QTabBar>
#include <QTimer>
#include <QTreeWidget>

#include "widgets/colour_picker.h"
#include "widgets/folder_tree.h"
#include "widgets/splash.h"
#include "wizard/appearance.h"
#include "wizard/batch_window.h"
#include "wizard/icons.h"
#include "wizard/system_desktop.h"

// Opens the window with the sample pictures, goes through its steps, panels and dialogs, and saves
// a picture of each.
// tessarine-screenshots OUT SAMPLES light|dark WIDTH HEIGHT

namespace tessarine {
namespace {

namespace fs = std::filesystem;

/// A person's folders, with the sample pictures in one of them, so that the window shows paths as
/// a person has them. All of it is removed in the end.
class Home {
  public:
    explicit Home(const fs::path& samples) : root_(fs::temp_directory_path() / "zoe") {
        // What somebody else has there is left alone.
        if (fs::exists(root_) && !fs::exists(marker()))
            throw std::runtime_error(root_.string() + " is in the way");
        fs::remove_all(root_);
        fs::create_directories(root_);
        std::ofstream{marker()};
        for (const char* folder : {"Desktop",
                                   "Documents/Garden",
                                   "Documents/House",
                                   "Documents/Letters",
                                   "Downloads",
                                   "Music/Choir",
                                   "Music/Piano",
                                   "Pictures/2023/Birthday",
                                   "Pictures/2023/Garden",
                                   "Pictures/2023/Winter",
                                   "Pictures/2024/Birthday",
                                   "Pictures/2024/Garden",
                                   "Pictures/2024/Mountains",
                                   "Pictures/2024/Wedding",
                                   "Pictures/2025/Birthday",
                                   "Pictures/2025/City",
                                   "Pictures/2025/Garden",
                                   "Pictures/2025/Winter",
                                   "Pictures/2026/Birthday",
                                   "Pictures/2026/Garden",
                                   "Pictures/2026/Holiday",
                                   "Pictures/Drawings",
                                   "Pictures/Scans",
                                   "Pictures/Web",
                                   "Templates",
                                   "Videos/2024",
                                   "Videos/2025",
                                   "Videos/2026"})
            fs::create_directories(root_ / folder);
        for (const fs::directory_entry& file : fs::directory_iterator(samples)) {
            const std::string extension = file.path().extension();
            if (file.is_regular_file() && extension != ".md" && extension != ".qfk" &&
                extension != ".sh")
                fs::copy(file.path(), holiday());
        }
    }
    ~Home() {
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;

    std::string root() const { return root_.string(); }
    fs::path holiday() const { return root_ / "Pictures/2026/Holiday"; }
    std::string results() const { return (root_ / "Pictures/Web").string(); }
    std::vector<std::string> pictures() const {
        std::vector<std::string> paths;
        for (const fs::directory_entry& file : fs::directory_iterator(holiday()))
            paths.push_back(file.path());
        std::sort(paths.begin(), paths.end());
        return paths;
    }
    /// The folders that stand open in the tree.
    std::vector<std::string> open() const {
        std::vector<std::string> paths;
        for (const char* folder : {"", "Documents", "Music", "Pictures", "Pictures/2023",
                                   "Pictures/2024", "Pictures/2025", "Pictures/2026", "Videos"})
            paths.push_back((root_ / folder).string());
        return paths;
    }

  private:
    fs::path marker() const { return root_ / ".made-by-tessarine-screenshots"; }

    fs::path root_;
};

/// The desktop of a picture: real message boxes, settings that are removed, no other programs.
class PictureDesktop : public SystemDesktop {
  public:
    PictureDesktop() {
        fs::remove_all(folder_);
        fs::create_directories(folder_);
    }
    ~PictureDesktop() override {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    std::optional<std::string> saveDialog(QWidget*, const std::string&,
                                          const std::string&) override {
        return std::nullopt;
    }
    std::optional<std::string> openDialog(QWidget*, const std::string&,
                                          const std::string&) override {
        return std::nullopt;
    }
    void openPath(const std::string&) override {}
    bool anotherInstanceRuns() override { return false; }
    void keepAwake(bool) override {}
    void notify(const QString&, const QString&) override {}
    std::string programFolder() override { return folder_.string(); }
    std::string applicationFolder() override { return folder_.string(); }

  private:
    fs::path folder_ = fs::temp_directory_path() / "tessarine-screenshots";
};

/// Lets the window draw, its timers tick and its folder tree fill.
void wait(int milliseconds) {
    QElapsedTimer passed;
    passed.start();
    while (passed.elapsed() < milliseconds)
        QApplication::processEvents(QEventLoop::AllEvents, 10);
}

class Photographer {
  public:
    Photographer(fBatch& window, std::string out) : window_(window), out_(std::move(out)) {}

    void take(const std::string& name, QWidget* of = nullptr) {
        wait(150);
        const std::string path = out_ + "/" + name + ".png";
        if (!(of != nullptr ? of : &window_)->grab().save(QString::fromStdString(path)))
            throw std::runtime_error("cannot write " + path);
    }
    /// Takes the dialog that `open` shows, and closes it.
    void takeDialog(const std::string& name, const std::function<void()>& open) {
        QTimer::singleShot(300, &window_, [&] {
            QWidget* dialog = QApplication::activeModalWidget();
            if (dialog == nullptr) return;
            take(name, dialog);
            dialog->close();
        });
        open();
        if (!fs::exists(out_ + "/" + name + ".png"))
            throw std::runtime_error("no dialog opened for " + name);
    }
    void press(const char* button) {
        find<QAbstractButton>(button).click();
        wait(50);
    }
    /// Goes to a step, and to the control of it that gets the focus.
    void step(int number, const char* control) {
        auto* strip = window_.findChild<QTabBar*>();
        if (strip == nullptr) throw std::runtime_error("the window has no tab strip");
        strip->setCurrentIndex(number - 1);
        find<QWidget>(control).setFocus();
        wait(50);
    }
    template <class Control>
    Control& find(const char* name) {
        auto* control = window_.findChild<Control*>(QLatin1String(name));
        if (control == nullptr) throw std::runtime_error(std::string("no control ") + name);
        return *control;
    }
    cBatch& batch() { return window_.batch(); }

  private:
    fBatch& window_;
    std::string out_;
};

/// Opens the person's folders in the tree, and brings them to its top.
void openFolders(FolderTree& tree, const Home& home) {
    auto* folders = qobject_cast<QFileSystemModel*>(tree.model());
    if (folders == nullptr) throw std::runtime_error("the folder tree shows no files");
    const auto at = [&](const std::string& path) {
        return folders->index(QString::fromStdString(path));
    };
    for (const std::string& folder : home.open()) {
        tree.expand(at(folder));
        wait(60);
    }
    const int first = tree.visualRect(at(home.root())).top();
    const int last = tree.visualRect(at(home.holiday().string())).bottom();
    // In a low window the chosen folder matters more than the first.
    if (last - first < tree.viewport()->height())
        tree.scrollTo(at(home.root()), QAbstractItemView::PositionAtTop);
    else
        tree.setPath(home.holiday().c_str());
}

/// As by a click on its node.
void choose(Photographer& photographer, std::string_view name) {
    auto& tree = photographer.find<QTreeWidget>("Lfunctions");
    for (QTreeWidgetItem* item : tree.findItems(QString::fromUtf8(name.data(), int(name.size())),
                                                Qt::MatchExactly | Qt::MatchRecursive)) {
        tree.setCurrentItem(item);
        tree.scrollToItem(item, QAbstractItemView::PositionAtCenter);
    }
    photographer.batch().SelectNode(findFunction(name)->treeIndex);
    wait(50);
}

/// As by a click into a preview picture, with the mark in red.
void pickPoint(cBatch& batch, float x, float y) {
    batch.PickPoint(x, y);
    do
        batch.TickSelect();
    while (batch.pickMark.colour != 255);
}

void photographImages(Photographer& photographer, fBatch& window, const Home& home,
                      const std::string& functions) {
    cBatch& batch = photographer.batch();
    std::vector<std::string> given = home.pictures();
    given.push_back(functions);
    given.push_back(home.holiday());
    window.openPaths(given);
    wait(300);
    openFolders(photographer.find<FolderTree>("FT"), home);
    photographer.step(1, "lvFolder");
    constexpr int chosen = 5;
    auto& list = photographer.find<QTreeView>("lvFolder");
    list.setCurrentIndex(list.model()->index(chosen, 0));
    batch.CheckRows({1, 6, 8}, false);
    batch.RemoveSelected({1, 6, 8});
    batch.ClickFolder({chosen});
    photographer.take("step-1");
    photographer.takeDialog("message", [&] { photographer.press("TBFolder(3)"); });
}

void photographFunctions(Photographer& photographer, fBatch& window) {
    cBatch& batch = photographer.batch();
    photographer.step(2, "Lfunctions");
    choose(photographer, "Lens");
    batch.MoveSlider(0, 55);
    batch.MoveSlider(1, 85);
    pickPoint(batch, 63, 43);
    photographer.take("step-2");
    for (const auto& [name, function] : {std::pair{"panel-banks", "Swap RGB"},
                                         {"panel-glass", "Glass"},
                                         {"panel-curtain", "Curtain"},
                                         {"panel-resize", "Resize"},
                                         {"panel-rotate", "Rotate Intelligently"},
                                         {"sheet-point", "Replace Hue & Stretch"},
                                         {"sheet-option", "Twirl"},
                                         {"sheet-one", "Brightness"},
                                         {"sheet-grid", "Grid"},
                                         {"sheet-none", "Relief"}}) {
        choose(photographer, function);
        if (batch.pickEnabled) pickPoint(batch, 60, 90);
        photographer.take(name);
    }
    fGradient picker(&window);
    const auto pick = [&](const std::string& name, const char* axis) {
        QTimer::singleShot(300, &window, [&] {
            picker.findChild<QAbstractButton*>(QLatin1String(axis))->click();
            photographer.take(name, &picker);
            picker.close();
        });
        int32_t colour = 0;
        picker.Init(0x4080E0, colour);
    };
    pick("picker-hue", "optHue");
    pick("picker-saturation", "optSat");
    pick("picker-red", "optRed");
}

void photographRun(Photographer& photographer, fBatch& window, const Home& home) {
    cBatch& batch = photographer.batch();
    auto& destination = photographer.find<QLineEdit>("txtDestination");
    destination.setText((home.root() + "/no such folder").c_str());
    photographer.step(4, "CmdBatchAll");
    photographer.takeDialog("message-refused", [&] { photographer.press("CmdBatchAll"); });

    photographer.step(3, "txtName");
    destination.setText(home.results().c_str());
    photographer.find<QLineEdit>("txtName").setText("Holiday");
    photographer.take("step-3");
    photographer.takeDialog("browse", [&] { photographer.press("cmdBrowse"); });

    photographer.step(4, "CmdBatchAll");
    photographer.find<QAbstractButton>("chkShowDestination").setChecked(false);
    // The run gives way before each picture: between two of them it is photographed.
    QTimer inTheRun;
    QObject::connect(&inTheRun, &QTimer::timeout, &window, [&] {
        if (batch.pb.value < 4) return;
        inTheRun.stop();
        photographer.take("step-4");
    });
    inTheRun.start(0);
    photographer.press("CmdBatchAll");
    photographer.take("step-4-finished");

    const std::string torn = home.holiday() / "torn.jpg";
    const std::string gone = home.holiday() / "gone.png";
    for (const std::string& path : {torn, gone})
        std::ofstream(path) << "no picture";
    batch.DropOnBasket({torn, gone});
    fs::remove(gone);
    photographer.find<QAbstractButton>("chkCareful").setChecked(true);
    QTimer inTheCarefulRun;
    QObject::connect(&inTheCarefulRun, &QTimer::timeout, &window, [&] {
        if (!batch.runsCarefully() || batch.pb.value < 4) return;
        inTheCarefulRun.stop();
        photographer.take("step-4-careful");
    });
    inTheCarefulRun.start(0);
    batch.chkOverwrite = 1;
    photographer.press("CmdBatchAll");
    photographer.take("step-4-careful-finished");
}

void photograph(const std::string& out, const std::string& samples, QSize size) {
    const Home home(samples);
    PictureDesktop desktop;
    fSplash splash(programPicture("splash"), {420, 260});
    splash.show();
    fBatch window(desktop);
    Photographer photographer(window, out);
    photographer.take("splash", &splash);
    window.start();
    splash.close();
    window.resize(size);
    photographImages(photographer, window, home, samples + "/demo.qfk");
    photographFunctions(photographer, window);
    photographRun(photographer, window, home);
    photographer.takeDialog("about", [&] { photographer.press("cmdAbout"); });
    window.close();
}

}  // namespace
}  // namespace tessarine

int main(int argumentCount, char** arguments) {
    QApplication application(argumentCount, arguments);
    if (argumentCount != 6) {
        std::cerr << "usage: tessarine-screenshots OUT SAMPLES light|dark WIDTH HEIGHT\n";
        return 2;
    }
    try {
        using namespace tessarine;
        useColourScheme(application, std::string(arguments[3]) == "dark" ? ColourScheme::dark
                                                                         : ColourScheme::light);
        photograph(arguments[1], arguments[2], {std::atoi(arguments[4]), std::atoi(arguments[5])});
    } catch (const std::exception& failure) {
        std::cerr << "tessarine-screenshots: " << failure.what() << "\n";
        return 1;
    }
}
