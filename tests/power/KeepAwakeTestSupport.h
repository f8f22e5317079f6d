#pragma once

#include "power/KeepAwakeClock.h"

#include "tests/support/ManualScheduler.h"
#include "tests/support/PrivateBus.h"

#include <QProcess>

namespace tallowmere::test {

// The manual scheduler with a wall clock that moves along with it.
class ManualClock : public KeepAwakeClock {
public:
    WallTime now() const override { return WallTime(std::chrono::hours(493'000)) + scheduler_.now(); }
    std::unique_ptr<QObject> sleep(std::chrono::milliseconds delay, std::function<void()> wake) override
    {
        return scheduler_.sleep(delay, std::move(wake));
    }
    void advance(std::chrono::milliseconds by) { scheduler_.advance(by); }

private:
    ManualScheduler scheduler_;
};

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
