#pragma once

#include <functional>

#include <QObject>

class QSocketNotifier;

namespace tessarine {

/// Turns the system's requests to end the process (SIGINT, SIGTERM, SIGHUP) into an ordinary
/// event, so that the program can leave in peace. One at a time.
class LeavingRequests : public QObject {
    Q_OBJECT

  public:
    explicit LeavingRequests(std::function<void()> leave, QObject* parent = nullptr);
    ~LeavingRequests() override;

  private:
    std::function<void()> leave_;
    QSocketNotifier* notifier_ = nullptr;
};

}  // namespace tessarine
