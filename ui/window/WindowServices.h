#pragma once

#include "core/LaunchAtLogin.h"
#include "ui/pages/SpecPages.h"

#include <functional>

namespace tallowmere {

class AppSettings;
class BatteryMonitoringService;
class CameraMonitoringService;
class CPUMonitoringService;
class DiskMonitoringService;
class InventoryPage;
class MemoryMonitoringService;
class NetworkMonitoringService;
class PreferencesStore;
class StatsServer;
class UpdateService;

// What the main window is handed by the composition root. The live services are passed on to
// the pages that show live cards; any of them may be absent in a test.
struct WindowServices {
    PreferencesStore& preferences;
    AppSettings& settings;
    StatsServer& statsServer;
    UpdateService& updateService;
    LaunchAtLogin launchAtLogin;
    // Gathers the inventory: at creation and again on Refresh.
    std::function<PageInputs()> gatherInputs;
    // Fills the live-card area of a page that has one, once, when the page is first built;
    // unset, the page gets its own live cards.
    std::function<void(SpecCategory, InventoryPage&)> addLiveCards{};

    CPUMonitoringService* cpu = nullptr;
    MemoryMonitoringService* memory = nullptr;
    DiskMonitoringService* disk = nullptr;
    NetworkMonitoringService* network = nullptr;
    BatteryMonitoringService* battery = nullptr;
    CameraMonitoringService* camera = nullptr;
};

// This machine's uptime, root file system and battery around the given inventory.
PageInputs gatherMachineInputs(SystemInfo info = SystemInfo::current());

} // namespace tallowmere
