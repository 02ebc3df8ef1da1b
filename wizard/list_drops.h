#pragma once

#include <functional>
#include <string>
#include <vector>

#include <QObject>

class QWidget;

namespace tessarine {

/// Whether a path is that of a function list or of a picture list.
bool isListFile(const std::string& path);

/// Takes what is dropped on a window, wherever in it, if a list file is among it; everything else
/// is left to the controls below.
class ListDrops : public QObject {
    Q_OBJECT

  public:
    ListDrops(QWidget& window, std::function<void(const std::vector<std::string>& paths)> open);

  protected:
    bool eventFilter(QObject* object, QEvent* event) override;

  private:
    QWidget& window_;
    std::function<void(const std::vector<std::string>& paths)> open_;
};

}  // namespace tessarine
