#pragma once

#include "app/AppEnvironment.h"
#include "app/SnapshotGatherer.h"
#include "audio/AudioVolumeService.h"
#include "core/AppSettings.h"
#include "core/PreferencesStore.h"
#include "hardware/CameraMonitoringService.h"
#include "hardware/SystemInfo.h"
#include "history/NetworkMonitoringService.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/DiskMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "power/BatteryMonitoringService.h"
#include "power/KeepAwakeService.h"
#include "power/PowerScheduleService.h"
#include "server/StatsServer.h"
#include "ui/tray/MenuBarController.h"
#include "update/UpdateService.h"

#include <QObject>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace tallowmere {

class AppLifecycle;

// Creates every service exactly once, in a fixed order, hands each what it needs, and applies
// the three switches at launch and whenever they change. Nothing else creates a service.
class AppServices : public QObject {
    Q_OBJECT
public:
    explicit AppServices(AppEnvironment environment, QObject* parent = nullptr);
    ~AppServices() override;

    // The process-wide instance, built on first use in the environment given to
    // setSharedEnvironment() (this machine's when none was). destroyShared() ends it before
    // the application object goes.
    static AppServices& shared();
    static void setSharedEnvironment(AppEnvironment environment);
    static void destroyShared();

    // Start-up wiring; a second call does nothing.
    void launch(AppLifecycle& lifecycle);
    bool hasLaunched() const { return launched_; }

    void applyMenuBarEnabled(bool enabled);
    void applyLocalServerEnabled(bool enabled);
    void applyNetworkRecordingEnabled(bool enabled);

    // The switches as this run applies them (a headless override wins over the stored one).
    bool effectiveLocalServerEnabled() const;
    bool effectiveNetworkRecordingEnabled() const;
    bool effectiveMenuBarEnabled() const;

    // The machine's inventory, with the audio devices the sound server knows.
    SystemInfo systemInfo() const;

    const AppEnvironment& environment() const { return environment_; }
    PreferencesStore& preferences() { return preferences_; }

    // Members, in construction order:
    //  1 settings  2 cpuService  3 memoryService  4 diskService  5 batteryService
    //  6 audioService  7 powerService  8 keepAwakeService  9 networkService
    //  10 cameraService  11 statsServer  12 updateService  13 menuBarController
    AppSettings& settings() { return *settings_; }
    CPUMonitoringService& cpuService() { return *cpuService_; }
    MemoryMonitoringService& memoryService() { return *memoryService_; }
    DiskMonitoringService& diskService() { return *diskService_; }
    BatteryMonitoringService& batteryService() { return *batteryService_; }
    AudioVolumeService& audioService() { return *audioService_; }
    PowerScheduleService& powerService() { return *powerService_; }
    KeepAwakeService& keepAwakeService() { return *keepAwakeService_; }
    NetworkMonitoringService& networkService() { return *networkService_; }
    CameraMonitoringService& cameraService() { return *cameraService_; }
    StatsServer& statsServer() { return *statsServer_; }
    UpdateService& updateService() { return *updateService_; }
    // What the server's documents are built from (not a service of its own).
    SnapshotGatherer& snapshotGatherer() { return *snapshotGatherer_; }
    MenuBarController& menuBarController() { return *menuBarController_; }
    // The eight services the tray item and its popover show.
    TrayServices trayServices();

private:
    // The services whose loops follow the menu-bar and server switches, in the order they
    // are switched: CPU, memory, disk, network.
    std::vector<MonitoringService*> demandServices() const;
    void watchSwitches();
    // The tray item follows the menu-bar switch: installed while it is on.
    void applyStatusItem(bool enabled);

    AppEnvironment environment_;
    PreferencesStore preferences_;
    bool launched_ = false;

    std::unique_ptr<AppSettings> settings_;
    std::unique_ptr<CPUMonitoringService> cpuService_;
    std::unique_ptr<MemoryMonitoringService> memoryService_;
    std::unique_ptr<DiskMonitoringService> diskService_;
    std::unique_ptr<BatteryMonitoringService> batteryService_;
    std::unique_ptr<AudioVolumeService> audioService_;
    std::unique_ptr<PowerScheduleService> powerService_;
    std::unique_ptr<KeepAwakeService> keepAwakeService_;
    std::unique_ptr<NetworkMonitoringService> networkService_;
    std::unique_ptr<CameraMonitoringService> cameraService_;
    std::unique_ptr<SnapshotGatherer> snapshotGatherer_;
    std::unique_ptr<StatsServer> statsServer_;
    std::unique_ptr<UpdateService> updateService_;
    std::unique_ptr<MenuBarController> menuBarController_;
};

} // namespace tallowmere
