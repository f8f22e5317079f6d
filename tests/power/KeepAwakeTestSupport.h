#pragma once

#include "power/KeepAwakeClock.h"

#include "tests/support/PrivateBus.h"

#include <QDBusConnection>
#include <QPointer>
#include <QProcess>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace tallowmere::test {

// Time that moves only when the test says so; due sleeps fire in order as it passes.
class ManualClock : public KeepAwakeClock {
public:
    WallTime now() const override { return now_; }
    std::unique_ptr<QObject> sleep(std::chrono::milliseconds delay, std::function<void()> wake) override;
    void advance(std::chrono::milliseconds by);
    int pendingSleeps() const;

private:
    struct Sleeper {
        std::chrono::milliseconds due;
        QPointer<QObject> handle;
        std::function<void()> wake;
    };
    WallTime now_ = WallTime(std::chrono::hours(493'000));
    std::chrono::milliseconds elapsed_{0};
    std::vector<Sleeper> sleepers_;
};

// A connection that never reached a bus, as when there is no system or session bus.
QDBusConnection missingBus();

// A login manager and a session screen saver on a private bus, and what they were asked.
class InhibitBus {
public:
    InhibitBus() = default;
    ~InhibitBus();
    InhibitBus(const InhibitBus&) = delete;
    InhibitBus& operator=(const InhibitBus&) = delete;

    // `screenSaver` false leaves the session without one.
    bool start(bool loginManager, bool screenSaver);
    QDBusConnection connection() const { return bus_.connection(QStringLiteral("keepawake")); }
    const QString& address() const { return bus_.address(); }

    // The "what" of each lock the login manager holds for us.
    QStringList heldLocks() const;
    // The arguments of each call of `method` the screen saver received.
    std::vector<QVariantList> screenSaverCalls(const QString& method) const;

private:
    PrivateBus bus_;
    std::unique_ptr<QProcess> screenSaver_;
};

} // namespace tallowmere::test
