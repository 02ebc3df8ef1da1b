#include "wizard/system_desktop.h"

#include <algorithm>
#include <filesystem>

#include <QApplication>
#include <QDBusMessage>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>
#include <QProcess>

#include "wizard/session_bus.h"

namespace tessarine {

namespace {

/// Asks for one file. The dialog itself asks whether a file may be written over.
std::optional<std::string> askForFile(QWidget* parent, QFileDialog::AcceptMode mode,
                                      const std::string& filter, const std::string& folder) {
    QFileDialog dialog(parent, QString(), QFile::decodeName(folder.c_str()), dialogFilter(filter));
    dialog.setAcceptMode(mode);
    dialog.setFileMode(mode == QFileDialog::AcceptSave ? QFileDialog::AnyFile
                                                       : QFileDialog::ExistingFile);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
    return QFile::encodeName(dialog.selectedFiles().constFirst()).toStdString();
}

/// The window over which a dialog stands. Before the main window can be seen that is the splash
/// window, which would hide a dialog of its own.
QWidget* windowUnder(QWidget* parent) {
    if (parent == nullptr || parent->isVisible()) return parent;
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto seen = std::find_if(windows.begin(), windows.end(),
                                   [](const QWidget* one) { return one->isVisible(); });
    return seen == windows.end() ? nullptr : *seen;
}

bool isAddress(const std::string& path) { return path.find("://") != std::string::npos; }

}  // namespace

QString dialogFilter(const std::string& filter) {
    const QString whole = QString::fromStdString(filter);
    const QString description = whole.section('(', 0, 0).trimmed();
    const QString patterns = whole.section('|', 1).replace(';', ' ');
    return description + " (" + patterns + ")";
}

SystemDesktop::SystemDesktop()
    : SystemDesktop(InstanceLock::usersFile(), QDBusConnection::systemBus(), sessionBus()) {}

SystemDesktop::SystemDesktop(const std::string& lockFile, QDBusConnection system,
                             QDBusConnection session)
    : lock_(lockFile), session_(session), inhibitor_(std::move(system), std::move(session)) {}

void SystemDesktop::messageBox(QWidget* parent, const QString& text, Icon icon,
                               const QString& title) {
    QMessageBox box(windowUnder(parent));
    switch (icon) {
        case Icon::critical:
            box.setIcon(QMessageBox::Critical);
            break;
        case Icon::exclamation:
            box.setIcon(QMessageBox::Warning);
            break;
        case Icon::information:
            box.setIcon(QMessageBox::Information);
            break;
    }
    box.setWindowTitle(title);
    box.setTextFormat(Qt::PlainText);
    box.setText(QString(text).replace("\r\n", "\n"));
    box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    box.setStandardButtons(QMessageBox::Ok);
    box.exec();
}

std::optional<std::string> SystemDesktop::saveDialog(QWidget* parent, const std::string& filter,
                                                     const std::string& folder) {
    return askForFile(parent, QFileDialog::AcceptSave, filter, folder);
}

std::optional<std::string> SystemDesktop::openDialog(QWidget* parent, const std::string& filter,
                                                     const std::string& folder) {
    return askForFile(parent, QFileDialog::AcceptOpen, filter, folder);
}

void SystemDesktop::openPath(const std::string& path) {
    std::error_code ignored;
    const std::string whole =
        isAddress(path) ? path : std::filesystem::absolute(path, ignored).string();
    // By itself from the start, so that neither waits for the other nor ends with it.
    QProcess opener;
    opener.setProgram("xdg-open");
    opener.setArguments({QFile::decodeName(whole.c_str())});
    opener.setStandardOutputFile(QProcess::nullDevice());
    opener.setStandardErrorFile(QProcess::nullDevice());
    opener.startDetached();
}

void SystemDesktop::notify(const QString& title, const QString& text) {
    QDBusMessage call = QDBusMessage::createMethodCall("org.freedesktop.Notifications",
                                                       "/org/freedesktop/Notifications",
                                                       "org.freedesktop.Notifications", "Notify");
    constexpr uint32_t newOne = 0;
    constexpr int32_t desktopsOwnTime = -1;
    call << "Tessarine" << newOne << "tessarine" << title << text << QStringList()
         << QVariantMap{{"desktop-entry", "tessarine"}} << desktopsOwnTime;
    session_.send(call);
}

std::string SystemDesktop::programFolder() { return SilentPlatform().programFolder(); }

std::string SystemDesktop::applicationFolder() { return executableFolder(); }

}  // namespace tessarine
