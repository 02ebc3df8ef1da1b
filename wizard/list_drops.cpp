#include "wizard/list_drops.h"

#include <algorithm>

#include <QApplication>
#include <QDropEvent>
#include <QWidget>

#include "batch/texts.h"
#include "wizard/file_names.h"

namespace tessarine {

bool isListFile(const std::string& path) {
    const std::string extension = lowerCase(extensionOf(path));
    return extension == "qfk" || extension == "qpkl";
}

ListDrops::ListDrops(QWidget& window,
                     std::function<void(const std::vector<std::string>& paths)> open)
    : QObject(&window), window_(window), open_(std::move(open)) {
    // What no control takes reaches the window.
    window_.setAcceptDrops(true);
    QApplication::instance()->installEventFilter(this);
}

bool ListDrops::eventFilter(QObject* object, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type != QEvent::DragEnter && type != QEvent::DragMove && type != QEvent::Drop) return false;
    const auto* below = qobject_cast<QWidget*>(object);
    if (below == nullptr || below->window() != &window_) return false;
    auto* drop = static_cast<QDropEvent*>(event);
    const std::vector<std::string> paths = localPaths(*drop->mimeData());
    if (!std::any_of(paths.begin(), paths.end(), isListFile)) return false;
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    if (type == QEvent::Drop) open_(paths);
    return true;
}

}  // namespace tessarine
