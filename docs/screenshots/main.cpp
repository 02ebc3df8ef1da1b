#include <filesystem>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTabBar>
#include <QTimer>

#include "widgets/colour_picker.h"
#include "widgets/splash.h"
#include "wizard/appearance.h"
#include "wizard/batch_window.h"
#include "wizard/icons.h"

// Opens the window with the sample pictures, goes through its steps, panels and dialogs, and saves
// a picture of each.
// tessarine-screenshots OUT SAMPLES light|dark WIDTH HEIGHT

namespace tessarine {
namespace {

namespace fs = std::filesystem;

/// The desktop of a picture: settings and results in a folder that is removed, no other programs.
class PictureDesktop : public Desktop {
  public:
    PictureDesktop() : folder_(fs::temp_directory_path() / "tessarine-screenshots") {
        fs::remove_all(folder_);
        fs::create_directories(folder_ / "results");
    }
    ~PictureDesktop() override { fs::remove_all(folder_); }

    void messageBox(QWidget*, const QString& text, Icon, const QString&) override {
        throw std::runtime_error("a message: " + text.toStdString());
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
    std::string results() const { return (folder_ / "results").string(); }

  private:
    fs::path folder_;
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
    void step(int number) {
        auto* strip = window_.findChild<QTabBar*>();
        if (strip == nullptr) throw std::runtime_error("the window has no tab strip");
        strip->setCurrentIndex(number - 1);
        wait(50);
    }
    template <class Control>
    Control& find(const char* name) {
        auto* control = window_.findChild<Control*>(QLatin1String(name));
        if (control == nullptr) throw std::runtime_error(std::string("no control ") + name);
        return *control;
    }

  private:
    fBatch& window_;
    std::string out_;
};

int16_t nodeOf(std::string_view name) { return findFunction(name)->treeIndex; }

void photograph(const std::string& out, const std::string& samples, QSize size) {
    PictureDesktop desktop;
    fSplash splash(programPicture("splash"), {420, 260});
    splash.show();
    fBatch window(desktop);
    Photographer photographer(window, out);
    photographer.take("splash", &splash);
    window.start();
    splash.close();
    window.resize(size);
    cBatch& batch = window.batch();

    std::vector<std::string> given{samples, samples + "/demo.qfk"};
    for (const fs::directory_entry& file : fs::directory_iterator(samples)) {
        const std::string extension = file.path().extension();
        if (file.is_regular_file() && extension != ".md" && extension != ".qfk" &&
            extension != ".sh")
            given.push_back(file.path());
    }
    std::sort(given.begin() + 2, given.end());
    window.openPaths(given);
    wait(500);
    batch.ShowImageDetails(samples + "/aurora.tif");
    photographer.take("step-1");

    photographer.step(2);
    const auto choose = [&](std::string_view name) {
        batch.SelectNode(nodeOf(name));
        wait(50);
    };
    choose("Hue Stretch");
    batch.MoveSlider(0, 70);
    batch.MoveSlider(2, 35);
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
        choose(function);
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

    photographer.step(3);
    photographer.find<QLineEdit>("txtDestination").setText(desktop.results().c_str());
    photographer.take("step-3");
    photographer.takeDialog("browse", [&] { photographer.press("cmdBrowse"); });

    photographer.step(4);
    photographer.find<QAbstractButton>("chkShowDestination").setChecked(false);
    photographer.press("CmdBatchAll");
    photographer.take("step-4");
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
