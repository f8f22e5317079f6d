#pragma once

#include "core/UniqueFd.h"
#include "power/InhibitorLocks.h"
#include "power/KeepAwakeClock.h"
#include "power/KeepAwakeStatus.h"

#include <QDBusConnection>
#include <QDateTime>
#include <QObject>

#include <memory>
#include <optional>

namespace tallowmere {

class PreferencesStore;

// Keeps the machine awake for a chosen time and mode by holding inhibitor locks, counts down
// to the end of the session and ends it by itself. Every lock is let go when the session
// stops, when the application quits, and when the service is destroyed. A lock that cannot be
// had leaves its identifier at 0; the session counts as active all the same.
class KeepAwakeService : public QObject {
    Q_OBJECT
public:
    // `clock` may be null for the real clocks.
    KeepAwakeService(PreferencesStore& store, QDBusConnection systemBus, QDBusConnection sessionBus,
                     std::shared_ptr<KeepAwakeClock> clock = {}, QObject* parent = nullptr);
    ~KeepAwakeService() override;

    bool isActive() const { return isActive_; }
    KeepAwakeDuration duration() const { return duration_; }
    KeepAwakeMode mode() const { return mode_; }
    std::optional<QDateTime> expiresAt() const;
    int countdownTick() const { return countdownTick_; }
    quint32 sleepInhibitorId() const { return sleepLock_.id; }
    quint32 idleInhibitorId() const { return idleLock_.id; }
    quint32 lidSwitchInhibitorId() const { return lidSwitchLock_.id; }

    // Stored at once; an active session keeps its locks until the next start().
    void setDuration(KeepAwakeDuration duration);
    void setMode(KeepAwakeMode mode);

    // Starts a session with the current duration and mode, replacing any running one.
    void start();
    void stop();

    std::optional<QString> statusText() const;

signals:
    void isActiveChanged();
    void durationChanged();
    void modeChanged();
    void expiresAtChanged();
    void countdownTickChanged();

private:
    // One lock as the service holds it: the identifier callers see, the login manager's
    // descriptor and, for the display, the screen saver's cookie.
    struct HeldLock {
        quint32 id = 0;
        UniqueFd descriptor;
        std::optional<quint32> screenSaverCookie;
    };

    void acquireForMode();
    void acquire(HeldLock& lock, const QString& what, bool withScreenSaver);
    void releaseAll();
    void release(HeldLock& lock);
    void setExpiresAt(std::optional<WallTime> expiresAt);
    void scheduleTick();
    static quint32 nextLockId();

    PreferencesStore& store_;
    InhibitorLocks locks_;
    std::shared_ptr<KeepAwakeClock> clock_;

    bool isActive_ = false;
    KeepAwakeDuration duration_;
    KeepAwakeMode mode_;
    std::optional<WallTime> expiresAt_;
    int countdownTick_ = 0;
    HeldLock sleepLock_;
    HeldLock idleLock_;
    HeldLock lidSwitchLock_;
    std::unique_ptr<QObject> expiryTask_;
    std::unique_ptr<QObject> tickTask_;
};

} // namespace tallowmere
