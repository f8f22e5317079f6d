#include "power/BatteryMonitoringService.h"

#include "power/BatteryUPowerReader.h"

#include <QTimer>

namespace tallowmere {

namespace {

const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString logindService = QStringLiteral("org.freedesktop.login1");
const QString logindPath = QStringLiteral("/org/freedesktop/login1");
const QString logindManager = QStringLiteral("org.freedesktop.login1.Manager");

} // namespace

BatteryMonitoringService::BatteryMonitoringService(QDBusConnection systemBus, QString sysfsRoot, QObject* parent)
    : BatteryMonitoringService(
          systemBus, [systemBus, sysfsRoot] { return BatteryInfo::current(systemBus, sysfsRoot); }, Timing{},
          realScheduler(), parent)
{
}

BatteryMonitoringService::BatteryMonitoringService(QDBusConnection systemBus, Reader reader, Timing timing,
                                                   std::shared_ptr<Scheduler> scheduler, QObject* parent)
    : QObject(parent)
    , bus_(std::move(systemBus))
    , reader_(std::move(reader))
    , timing_(timing)
    , scheduler_(std::move(scheduler))
    , battery_(reader_())
{
}

BatteryMonitoringService::~BatteryMonitoringService()
{
    halt();
}

void BatteryMonitoringService::start()
{
    started_ = true;
    updateRunning();
}

void BatteryMonitoringService::stop()
{
    started_ = false;
    updateRunning();
}

void BatteryMonitoringService::setPageActive(bool active)
{
    pageActive_ = active;
    updateRunning();
}

void BatteryMonitoringService::updateRunning()
{
    const bool wanted = started_ || pageActive_;
    if (wanted && !refreshTask_) {
        // The loop's first round is the reading at start.
        refreshTask_ = LoopTask::start(timing_.refreshPeriod, [this] { refresh(); }, scheduler_);
        connectSignals();
    } else if (!wanted && refreshTask_) {
        halt();
    }
}

void BatteryMonitoringService::halt()
{
    refreshTask_.reset();
    wakeRetrySleep_.reset();
    wakeRetryRounds_ = 0;
    disconnectSignals();
}

void BatteryMonitoringService::refresh()
{
    publish(reader_());
}

void BatteryMonitoringService::publish(BatteryInfo info)
{
    if (info == battery_)
        return;
    battery_ = std::move(info);
    emit batteryChanged();
}

void BatteryMonitoringService::onPowerSourceChanged()
{
    // UPower sends a burst of signals per update (one per changed object); read once for it.
    if (changeQueued_ || !isRunning())
        return;
    changeQueued_ = true;
    QTimer::singleShot(0, this, [this] {
        changeQueued_ = false;
        if (isRunning())
            refresh();
    });
}

void BatteryMonitoringService::onPrepareForSleep(bool goingToSleep)
{
    if (goingToSleep || !isRunning())
        return;
    refresh();
    if (isRunning())
        startWakeRetries();
}

void BatteryMonitoringService::startWakeRetries()
{
    // A second wake during a burst starts it over.
    wakeRetryRounds_ = 0;
    armWakeRetry();
}

void BatteryMonitoringService::armWakeRetry()
{
    wakeRetrySleep_ = scheduler_->sleep(timing_.wakeRetryInterval, [this] { wakeRetryRound(); });
}

void BatteryMonitoringService::wakeRetryRound()
{
    // The ended sleep is let go after the round, which may arm the next one.
    const std::unique_ptr<QObject> ended = std::move(wakeRetrySleep_);
    ++wakeRetryRounds_;
    refresh();
    if (!isRunning())  // stopped by someone told of the change
        return;
    if (battery_.menuBarTimeText() || wakeRetryRounds_ >= timing_.wakeRetries)
        wakeRetryRounds_ = 0;
    else
        armWakeRetry();
}

void BatteryMonitoringService::connectSignals()
{
    if (signalsConnected_ || !bus_.isConnected())
        return;
    signalsConnected_ = true;
    const QString upower = QLatin1StringView(battery::upowerService);
    const QString upowerPath = QLatin1StringView(battery::upowerPath);
    const QString upowerInterface = QLatin1StringView(battery::upowerInterface);
    // Changes arrive on the daemon and on each device object: listen on every path.
    bus_.connect(upower, QString(), propertiesInterface, QStringLiteral("PropertiesChanged"), this,
                           SLOT(onPowerSourceChanged()));
    bus_.connect(upower, upowerPath, upowerInterface, QStringLiteral("DeviceAdded"), this,
                       SLOT(onPowerSourceChanged()));
    bus_.connect(upower, upowerPath, upowerInterface, QStringLiteral("DeviceRemoved"), this,
                       SLOT(onPowerSourceChanged()));
    bus_.connect(logindService, logindPath, logindManager, QStringLiteral("PrepareForSleep"), this,
                       SLOT(onPrepareForSleep(bool)));
}

void BatteryMonitoringService::disconnectSignals()
{
    if (!signalsConnected_)
        return;
    signalsConnected_ = false;
    const QString upower = QLatin1StringView(battery::upowerService);
    const QString upowerPath = QLatin1StringView(battery::upowerPath);
    const QString upowerInterface = QLatin1StringView(battery::upowerInterface);
    bus_.disconnect(upower, QString(), propertiesInterface, QStringLiteral("PropertiesChanged"), this,
                    SLOT(onPowerSourceChanged()));
    bus_.disconnect(upower, upowerPath, upowerInterface, QStringLiteral("DeviceAdded"), this,
                    SLOT(onPowerSourceChanged()));
    bus_.disconnect(upower, upowerPath, upowerInterface, QStringLiteral("DeviceRemoved"), this,
                    SLOT(onPowerSourceChanged()));
    bus_.disconnect(logindService, logindPath, logindManager, QStringLiteral("PrepareForSleep"), this,
                    SLOT(onPrepareForSleep(bool)));
}

} // namespace tallowmere
