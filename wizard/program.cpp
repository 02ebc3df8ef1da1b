#include "wizard/program.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <utility>

#include <QApplication>

#include "imagefiles/codec/codec_files.h"
#include "imagefiles/codec/helper_process.h"
#include "pixels/failures.h"
#include "widgets/splash.h"
#include "wizard/appearance.h"
#include "wizard/batch_window.h"
#include "wizard/file_names.h"
#include "wizard/icons.h"
#include "wizard/leaving.h"
#include "wizard/session_bus.h"
#include "wizard/system_desktop.h"
#include "wizard/window_loss.h"

namespace tessarine {

namespace {

constexpr QSize splashSize{420, 260};

// Exit statuses.
constexpr int wrongLine = 2;
constexpr int noScreen = 3;

constexpr const char* usage =
    "usage: tessarine [OPTION...] [--] [FILE...]\n"
    "\n"
    "Opens the window. A FILE is a function list (qfk), a picture list (qpkl), a\n"
    "picture, which goes into the Image Basket, or a folder, which is shown.\n"
    "\n"
    "  --help     show this\n"
    "  --version  show the program's version\n"
    "\n"
    "tessarine-batch does the same work without a window.\n";

std::string absolutePath(const std::string& argument) {
    if (argument.starts_with("file://"))
        return pathOf(QUrl::fromEncoded(QByteArray::fromStdString(argument)));
    std::error_code ignored;
    return std::filesystem::absolute(argument, ignored).string();
}

struct ToolkitMessage {
    QtMsgType type;
    QString text;
};

/// What the toolkit says while it looks for a screen.
std::vector<ToolkitMessage> searchMessages;

void noteSearchMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type != QtFatalMsg) {
        searchMessages.push_back({type, text.trimmed()});
        return;
    }
    // There is none, and the toolkit would abort the process now.
    const QString reason = searchMessages.empty() ? text : searchMessages.front().text;
    std::cerr << "tessarine: no window can be opened here: " << reason.toStdString()
              << "\ntessarine-batch does the same work without a window\n"
              << std::flush;
    std::_Exit(noScreen);
}

/// The application on the screen that there is. Where there is none the program ends with a plain
/// word.
std::unique_ptr<QApplication> openScreen(int& argumentCount, char** arguments) {
    const QtMessageHandler before = qInstallMessageHandler(noteSearchMessage);
    auto application = std::make_unique<QApplication>(argumentCount, arguments);
    qInstallMessageHandler(before);
    for (const ToolkitMessage& message : std::exchange(searchMessages, {}))
        qt_message_output(message.type, QMessageLogContext(), message.text);
    return application;
}

/// How picture files are read and written. Without the helper program the window opens all the
/// same, and no file can be read.
CodecFiles::Options helpers() {
    CodecFiles::Options options;
    try {
        options.program = helperProgram();
    } catch (const StatementFailed& failure) {
        std::cerr << "tessarine: " << failure.what() << "\n" << std::flush;
    }
    // Paintings and timers go on while a large picture is read; what a person does follows it. A
    // timer may read another picture meanwhile, each of which takes a helper of its own.
    options.onWaiting = [depth = 0]() mutable {
        constexpr int deepest = 4;
        if (depth >= deepest) return;
        ++depth;
        QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        --depth;
    };
    return options;
}

/// Closes the window, whatever stands before it, and with it the program.
void leave(fBatch& window) {
    if (window.isVisible()) {
        window.close();
    } else {
        QCoreApplication::exit(0);
    }
}

}  // namespace

WindowCommandLine WindowCommandLine::parse(const std::vector<std::string>& arguments) {
    WindowCommandLine line;
    bool options = true;
    for (const std::string& argument : arguments) {
        if (!options || !argument.starts_with('-') || argument == "-") {
            line.paths.push_back(absolutePath(argument));
        } else if (argument == "--") {
            options = false;
        } else if (argument == "--help" || argument == "-h") {
            line.help = true;
        } else if (argument == "--version") {
            line.version = true;
        } else if (line.refusal.empty()) {
            line.refusal = "unknown option " + argument;
        }
    }
    return line;
}

int runProgram(int argumentCount, char** arguments) {
    // These two need no screen.
    const std::vector<std::string> all(arguments + 1, arguments + argumentCount);
    const WindowCommandLine asked = WindowCommandLine::parse(all);
    if (asked.help || asked.version) {
        std::cout << (asked.help ? usage : "tessarine " TESSARINE_VERSION "\n") << std::flush;
        return 0;
    }

    // The toolkit takes options of its own off the line.
    const auto application = openScreen(argumentCount, arguments);
    const WindowCommandLine line =
        WindowCommandLine::parse({arguments + 1, arguments + argumentCount});
    if (!line.refusal.empty()) {
        std::cerr << "tessarine: " << line.refusal << "; --help tells the options\n";
        return wrongLine;
    }
    QCoreApplication::setApplicationName("tessarine");
    QCoreApplication::setApplicationVersion(TESSARINE_VERSION);
    QGuiApplication::setDesktopFileName("tessarine");
    QApplication::setWindowIcon(programIcon("program"));
    // The end of the splash window is not the end of the program.
    QGuiApplication::setQuitOnLastWindowClosed(false);

    applyAppearance(*application, sessionBus());

    SystemDesktop desktop;
    CodecFiles files(helpers());
    const HandOverMemory shared(files.memory());
    fBatch window(desktop, files);
    fSplash splash(programPicture("splash"), splashSize);
    const LeavingRequests requests([&window] { leave(window); });
    const WindowLoss loss(window, [&window] { leave(window); });
    QObject::connect(&splash, &fSplash::tSplash, &window, [&] {
        window.start();
        window.openPaths(line.paths);
    });
    // A window manager that still sees the splash window takes the next one for something that
    // comes up by itself while a person works elsewhere, as in the file manager that started the
    // program, and opens it behind.
    QObject::connect(&window, &fBatch::showing, &splash, &QWidget::hide);
    QObject::connect(&window, &fBatch::ready, &splash, &QWidget::close);
    QObject::connect(&window, &fBatch::closed, &window, [] { QCoreApplication::exit(0); });
    splash.show();
    return QApplication::exec();
}

}  // namespace tessarine
