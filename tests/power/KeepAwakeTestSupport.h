#pragma once

#include "power/KeepAwakeClock.h"

#include "tests/support/PrivateBus.h"

#include <QPointer>
#include <QProcess>

#include <vector>

namespace tallowmere::test {

// Time that moves only when the test says so; due sleeps fire in order as it passes.
class ManualClock : public KeepAwakeClock {
public:
    WallTime now() const override { return WallTime(std::chrono::hours(493'000)) + elapsed_; }
    std::unique_ptr<QObject> sleep(std::chrono::milliseconds delay, std::function<void()> wake) override;
    void advance(std::chrono::milliseconds by);

private:
    struct Sleeper {
        std::chrono::milliseconds due;
        QPointer<QObject> handle;
        std::function<void()> wake;
    };
    std::chrono::milliseconds elapsed_{0};
    std::vector<Sleeper> sleepers_;
};

// A connection that never reached a bus.
inline QDBusConnection missingBus() { return QDBusConnection(QStringLiteral("tallowmere-no-such-bus")); }

// A login manager and a session screen saver on a private bus, and what they were asked.
class InhibitBus {
public:
    ~InhibitBus();
    bool start();
    QDBusConnection connection() const { return bus_.connection(QStringLiteral("keepawake")); }
    // The "what" of each lock the login manager holds for us, sorted.
    QStringList heldLocks() const;
    // How often the screen saver was called with `method`.
    int screenSaverCalls(const char* method);

private:
    PrivateBus bus_;
    std::unique_ptr<QProcess> screenSaver_;
    QByteArray screenSaverLog_;
};

} // namespace tallowmere::test
