#pragma once

#include <functional>

#include <QAbstractNativeEventFilter>

class QWidget;

namespace tessarine {

/// Tells when somebody else has taken a window off the X server. The toolkit goes on as if it
/// stood, and a program whose only window it was would run for ever without anyone seeing it.
class WindowLoss : public QAbstractNativeEventFilter {
  public:
    /// \param lost  is called from the event loop, once for every loss
    WindowLoss(const QWidget& window, std::function<void()> lost);
    ~WindowLoss() override;

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

  private:
    const QWidget& window_;
    std::function<void()> lost_;
};

}  // namespace tessarine
