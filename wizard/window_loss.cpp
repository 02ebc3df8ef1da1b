#include "wizard/window_loss.h"

#include <xcb/xproto.h>

#include <QApplication>
#include <QWidget>

namespace tessarine {

WindowLoss::WindowLoss(const QWidget& window, std::function<void()> lost)
    : window_(window), lost_(std::move(lost)) {
    qApp->installNativeEventFilter(this);
}

WindowLoss::~WindowLoss() { qApp->removeNativeEventFilter(this); }

bool WindowLoss::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
    if (type != "xcb_generic_event_t") return false;
    // The highest bit tells who sent the event.
    const auto* event = static_cast<const xcb_destroy_notify_event_t*>(message);
    const bool isDestruction = (event->response_type & 0x7f) == XCB_DESTROY_NOTIFY;
    if (isDestruction && event->window == window_.internalWinId())
        QMetaObject::invokeMethod(qApp, lost_, Qt::QueuedConnection);
    return false;
}

}  // namespace tessarine
