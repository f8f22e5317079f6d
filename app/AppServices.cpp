#include "app/AppServices.h"

#include "app/AppDelegate.h"
#include "app/ForegroundSeam.h"

namespace tallowmere {

namespace {
std::unique_ptr<AppServices>& sharedInstance()
{
    static std::unique_ptr<AppServices> instance;
    return instance;
}

AppServices::Options& sharedOptions()
{
    static AppServices::Options options;
    return options;
}
} // namespace

AppServices::AppServices(Options options, QObject* parent)
    : QObject(parent)
    , options_(std::move(options))
    , preferences_(options_.preferencesPath)
    , settings_(std::make_unique<AppSettings>(preferences_))
    , cpuService_(std::make_unique<CPUMonitoringService>())
    , memoryService_(std::make_unique<MemoryMonitoringService>())
    , diskService_(std::make_unique<DiskMonitoringService>())
    , batteryService_(std::make_unique<BatteryMonitoringService>(QDBusConnection::systemBus()))
    , powerService_(std::make_unique<PowerScheduleService>(preferences_))
    , keepAwakeService_(std::make_unique<KeepAwakeService>(preferences_, QDBusConnection::systemBus(),
                                                           QDBusConnection::sessionBus()))
    , networkService_(std::make_unique<NetworkMonitoringService>())
    , cameraService_(std::make_unique<CameraMonitoringService>())
    , statsServer_(std::make_unique<StatsServer>(options_.serverPort))
    , updateService_(std::make_unique<UpdateService>(UpdateEnvironment::ofRunningProgram()))
    , menuBarController_(std::make_unique<MenuBarController>())
{
}

AppServices::~AppServices() = default;

AppServices& AppServices::shared()
{
    auto& instance = sharedInstance();
    if (!instance)
        instance = std::make_unique<AppServices>(sharedOptions());
    return *instance;
}

void AppServices::setSharedOptions(Options options)
{
    sharedOptions() = std::move(options);
}

void AppServices::destroyShared()
{
    sharedInstance().reset();
}

bool AppServices::effectiveLocalServerEnabled() const
{
    return options_.localServerOverride.value_or(settings_->localServerEnabled());
}

bool AppServices::effectiveMenuBarEnabled() const
{
    return options_.hasMenuBar && settings_->menuBarEnabled();
}

bool AppServices::effectiveNetworkRecordingEnabled() const
{
    return options_.recordingOverride.value_or(settings_->networkRecordingEnabled());
}

void AppServices::launch(AppDelegate& delegate)
{
    if (launched_)
        return;
    launched_ = true;

    delegate.seam().createMainWindow(*this);

    AppSettings* settings = settings_.get();
    delegate.shouldStayAlive = [settings] {
        return settings->menuBarEnabled() || settings->networkRecordingEnabled() || settings->localServerEnabled();
    };

    menuBarController_->setServices(trayServices());
    menuBarController_->openMainWindow = [&delegate] { delegate.applicationShouldHandleReopen(false); };
    applyMenuBarEnabled(effectiveMenuBarEnabled());
    applyStatusItem(effectiveMenuBarEnabled());
    statsServer_->setServices({cpuService_.get(), memoryService_.get(), diskService_.get(), networkService_.get()});
    applyLocalServerEnabled(effectiveLocalServerEnabled());
    applyNetworkRecordingEnabled(effectiveNetworkRecordingEnabled());
    updateService_->checkForUpdates(false);

    watchSwitches();
}

std::vector<MonitoringService*> AppServices::demandServices() const
{
    return {cpuService_.get(), memoryService_.get(), diskService_.get(), networkService_.get()};
}

void AppServices::applyMenuBarEnabled(bool enabled)
{
    for (MonitoringService* service : demandServices()) {
        service->setMenuBarActive(enabled);
        service->updateMonitoring();
    }
    if (enabled)
        batteryService_->start();
    else
        batteryService_->stop();
}

void AppServices::applyLocalServerEnabled(bool enabled)
{
    for (MonitoringService* service : demandServices()) {
        service->setServerActive(enabled);
        service->updateMonitoring();
    }
    if (enabled)
        statsServer_->start();
    else
        statsServer_->stop();
}

void AppServices::applyNetworkRecordingEnabled(bool enabled)
{
    networkService_->setRecordingActive(enabled);
    networkService_->updateMonitoring();
}

void AppServices::applyStatusItem(bool enabled)
{
    if (enabled)
        menuBarController_->installStatusItem();
    else
        menuBarController_->removeStatusItem();
}

TrayServices AppServices::trayServices()
{
    // Until the per-application volume service joins the container the mixer lists nobody.
    PopoverAudio audio{
        .sessions = [] { return QList<AudioRowData>{}; },
        .start = [] {},
        .stop = [] {},
        .setVolume = [](const QString&, double) {},
        .toggleMute = [](const QString&) {},
        .watch = {},
    };
    return {cpuService_.get(), memoryService_.get(), diskService_.get(), networkService_.get(),
            batteryService_.get(), std::move(audio), powerService_.get(), keepAwakeService_.get()};
}

void AppServices::watchSwitches()
{
    // Later changes come from the settings page; the values at launch were applied above.
    connect(settings_.get(), &AppSettings::menuBarEnabledChanged, this,
            [this] {
                applyMenuBarEnabled(effectiveMenuBarEnabled());
                applyStatusItem(effectiveMenuBarEnabled());
            });
    connect(settings_.get(), &AppSettings::localServerEnabledChanged, this,
            [this] { applyLocalServerEnabled(settings_->localServerEnabled()); });
    connect(settings_.get(), &AppSettings::networkRecordingEnabledChanged, this,
            [this] { applyNetworkRecordingEnabled(settings_->networkRecordingEnabled()); });
}

} // namespace tallowmere
