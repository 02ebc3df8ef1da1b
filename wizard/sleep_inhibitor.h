#pragma once

#include <cstdint>
#include <optional>

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>

namespace tessarine {

/// Keeps the system from going to sleep by itself while something long is under way. It asks the
/// login manager, and where there is none the session's power manager and screen saver; where
/// nobody answers nothing happens. No call waits for an answer.
class SleepInhibitor : public QObject {
    Q_OBJECT

  public:
    SleepInhibitor(QDBusConnection system, QDBusConnection session, QObject* parent = nullptr);
    ~SleepInhibitor() override;

    void keepAwake(bool awake);

  private:
    struct SessionService {
        const char* name;
        const char* path;
        const char* interface;
    };
    static const SessionService sessionServices[2];

    void askLoginManager();
    void askSession();
    void askSession(size_t service);
    void release(size_t service, uint32_t cookie);

    QDBusConnection system_;
    QDBusConnection session_;
    bool awake_ = false;
    uint32_t asked_ = 0;  ///< which of the requests holds; answers to older ones are given back
    QDBusUnixFileDescriptor loginLock_;
    std::optional<uint32_t> cookies_[2];
};

}  // namespace tessarine
