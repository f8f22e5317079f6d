#include "app/AppServices.h"

#include "app/AppLifecycle.h"
#include "app/ForegroundSeam.h"
#include "hardware/SystemInfo.h"
#include "power/BatteryInfo.h"

namespace tallowmere {

namespace {
std::unique_ptr<AppServices>& sharedInstance()
{
    static std::unique_ptr<AppServices> instance;
    return instance;
}

std::optional<AppEnvironment>& sharedEnvironment()
{
    static std::optional<AppEnvironment> environment;
    return environment;
}

// The readers below turn the environment's roots, bus and clock into each service's sources.

std::unique_ptr<CPUMonitor> makeCPUMonitor(const AppEnvironment& env)
{
    return std::make_unique<CPUMonitor>(linuxCPUSources(env.roots.proc.toStdString()));
}

std::unique_ptr<MemoryMonitor> makeMemoryMonitor(const AppEnvironment& env)
{
    return std::make_unique<MemoryMonitor>(linuxMemorySources(env.roots.proc.toStdString(), env.roots.sys.toStdString()));
}

std::unique_ptr<DiskMonitor> makeDiskMonitor(const AppEnvironment& env)
{
    DiskSources sources = linuxDiskSources(env.roots.proc.toStdString(), env.roots.sys.toStdString());
    sources.now = env.clock;
    return std::make_unique<DiskMonitor>(std::move(sources));
}

std::unique_ptr<NetworkMonitoringService> makeNetworkService(const AppEnvironment& env)
{
    NetworkMonitorSources sources = NetworkMonitorSources::system(env.roots.proc.toStdString(), env.roots.sys.toStdString());
    sources.clock = env.clock;
    return std::make_unique<NetworkMonitoringService>(std::make_unique<NetworkUsageStore>(env.roots.data, env.clock),
                                                      std::make_unique<NetworkMonitor>(std::move(sources)));
}

std::unique_ptr<SnapshotGatherer> makeSnapshotGatherer(const AppEnvironment& env,
                                                       SnapshotGatherer::SystemReader system,
                                                       SnapshotServices services)
{
    auto gatherer = std::make_unique<SnapshotGatherer>(
        [bus = env.systemBus, sys = env.roots.sys] { return BatteryInfo::current(bus, sys); },
        std::move(system));
    gatherer->setServices(std::move(services));
    return gatherer;
}

AudioEnvironment makeAudioEnvironment(const AppEnvironment& env)
{
    AudioEnvironment audio;
    audio.sessionBus = env.sessionBus;
    audio.procRoot = env.roots.proc;
    return audio;
}

UpdateEnvironment makeUpdateEnvironment(const AppEnvironment& env)
{
    UpdateEnvironment update = UpdateEnvironment::ofRunningProgram();
    update.feedUrl = env.feedUrl;
    return update;
}
} // namespace

AppServices::AppServices(AppEnvironment environment, QObject* parent)
    : QObject(parent)
    , environment_(std::move(environment))
    , preferences_(environment_.preferencesPath())
    , settings_(std::make_unique<AppSettings>(preferences_))
    , cpuService_(std::make_unique<CPUMonitoringService>(makeCPUMonitor(environment_)))
    , memoryService_(std::make_unique<MemoryMonitoringService>(makeMemoryMonitor(environment_)))
    , diskService_(std::make_unique<DiskMonitoringService>(makeDiskMonitor(environment_)))
    , batteryService_(std::make_unique<BatteryMonitoringService>(environment_.systemBus, environment_.roots.sys))
    , audioService_(std::make_unique<AudioVolumeService>(preferences_, makeAudioEnvironment(environment_)))
    , powerService_(std::make_unique<PowerScheduleService>(preferences_))
    , keepAwakeService_(
          std::make_unique<KeepAwakeService>(preferences_, environment_.systemBus, environment_.sessionBus))
    , networkService_(makeNetworkService(environment_))
    , cameraService_(std::make_unique<CameraMonitoringService>(
          nullptr, CameraRoots{environment_.roots.dev, environment_.roots.sys, environment_.roots.proc}))
    , snapshotGatherer_(makeSnapshotGatherer(
          environment_, [this] { return systemInfo(); },
          {cpuService_.get(), memoryService_.get(), diskService_.get(), networkService_.get()}))
    , statsServer_(std::make_unique<StatsServer>(environment_.serverPort,
                                                 [g = snapshotGatherer_.get()] { return g->makeSnapshot(); }))
    , updateService_(std::make_unique<UpdateService>(makeUpdateEnvironment(environment_)))
    , menuBarController_(std::make_unique<MenuBarController>())
{
}

AppServices::~AppServices() = default;

SystemInfo AppServices::systemInfo() const
{
    SystemInfoSources sources;
    sources.procRoot = environment_.roots.proc;
    sources.sysRoot = environment_.roots.sys;
    sources.audioDevices = [client = &audioService_->client()] { return client->deviceDescriptions(); };
    return SystemInfo::current(sources);
}

AppServices& AppServices::shared()
{
    auto& instance = sharedInstance();
    if (!instance) {
        auto& environment = sharedEnvironment();
        instance = std::make_unique<AppServices>(environment ? *environment : AppEnvironment::forThisMachine());
    }
    return *instance;
}

void AppServices::setSharedEnvironment(AppEnvironment environment)
{
    sharedEnvironment() = std::move(environment);
}

void AppServices::destroyShared()
{
    sharedInstance().reset();
}

bool AppServices::effectiveLocalServerEnabled() const
{
    return environment_.localServerOverride.value_or(settings_->localServerEnabled());
}

bool AppServices::effectiveMenuBarEnabled() const
{
    return environment_.hasMenuBar && settings_->menuBarEnabled();
}

bool AppServices::effectiveNetworkRecordingEnabled() const
{
    return environment_.recordingOverride.value_or(settings_->networkRecordingEnabled());
}

void AppServices::launch(AppLifecycle& lifecycle)
{
    if (launched_)
        return;
    launched_ = true;

    lifecycle.seam().createMainWindow(*this);

    AppSettings* settings = settings_.get();
    lifecycle.shouldStayAlive = [settings] {
        return settings->menuBarEnabled() || settings->networkRecordingEnabled() || settings->localServerEnabled();
    };

    menuBarController_->setServices(trayServices());
    menuBarController_->openMainWindow = [&lifecycle] { lifecycle.onReopen(); };
    applyMenuBarEnabled(effectiveMenuBarEnabled());
    applyStatusItem(effectiveMenuBarEnabled());
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
    if (enabled) {
        snapshotGatherer_->cacheSystem(); // once; every later snapshot reuses it
        statsServer_->start();
    } else {
        statsServer_->stop();
    }
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
    AudioVolumeService* service = audioService_.get();
    PopoverAudio audio{
        .sessions =
            [service] {
                QList<AudioRowData> rows;
                for (const AudioAppSession& s : service->sessions())
                    rows.append({s.id, s.name, s.subtitle, s.volume, s.isMuted});
                return rows;
            },
        .start = [service] { service->start(); },
        .stop = [service] { service->stop(); },
        .setVolume = [service](const QString& id, double percent) { service->setVolume(id, percent); },
        .toggleMute = [service](const QString& id) { service->toggleMute(id); },
        .watch =
            [service](QObject* context, std::function<void()> changed) {
                return QObject::connect(service, &AudioVolumeService::sessionsChanged, context, std::move(changed));
            },
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
