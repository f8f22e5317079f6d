#pragma once

#include "core/LoopTask.h"
#include "power/BatteryInfo.h"

#include <QDBusConnection>
#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

namespace tallowmere {

// Keeps a current BatteryInfo: a refresh every 15 s while started, another whenever UPower
// reports a change, and a burst of retries after the machine wakes (the estimate of the time
// left is often missing for a while after resume). Publishes only when the reading changes.
class BatteryMonitoringService : public QObject {
    Q_OBJECT
public:
    using Reader = std::function<BatteryInfo()>;

    struct Timing {
        std::chrono::milliseconds refreshPeriod{15000};
        std::chrono::milliseconds wakeRetryInterval{5000};
        int wakeRetries = 6;
    };

    // Reads UPower on `systemBus` and the power-supply class below `sysfsRoot`; listens on
    // `systemBus` for UPower's changes and logind's resume signal.
    explicit BatteryMonitoringService(QDBusConnection systemBus, QString sysfsRoot = QStringLiteral("/sys"),
                                      QObject* parent = nullptr);
    // The periodic refresh and the retries after a wake sleep on `scheduler`.
    BatteryMonitoringService(QDBusConnection systemBus, Reader reader, Timing timing,
                             std::shared_ptr<Scheduler> scheduler = realScheduler(), QObject* parent = nullptr);
    ~BatteryMonitoringService() override;

    const BatteryInfo& battery() const { return battery_; }

    // Idempotent; both on the main thread. stop() keeps the last value.
    void start();
    void stop();
    // The battery page keeps the readings going while it is on screen, also when nothing
    // else has started the service.
    void setPageActive(bool active);
    bool pageActive() const { return pageActive_; }
    // Started or wanted by the page: refreshing and listening.
    bool isRunning() const { return refreshTask_ != nullptr; }
    bool isRetryingAfterWake() const { return wakeRetrySleep_ != nullptr; }

signals:
    void batteryChanged();

private slots:
    void onPowerSourceChanged();
    void onPrepareForSleep(bool goingToSleep);

private:
    void updateRunning();
    void halt();
    void refresh();
    void publish(BatteryInfo info);
    void startWakeRetries();
    void armWakeRetry();
    void wakeRetryRound();
    void connectSignals();
    void disconnectSignals();

    QDBusConnection bus_;
    Reader reader_;
    Timing timing_;
    std::shared_ptr<Scheduler> scheduler_;
    BatteryInfo battery_;
    std::unique_ptr<LoopTask> refreshTask_;
    bool started_ = false;
    bool pageActive_ = false;
    bool signalsConnected_ = false;
    bool changeQueued_ = false;
    std::unique_ptr<QObject> wakeRetrySleep_;  // set while a retry is due
    int wakeRetryRounds_ = 0;
};

} // namespace tallowmere
