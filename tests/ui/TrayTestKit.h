#pragma once

#include "core/PreferencesStore.h"
#include "history/NetworkMonitoringService.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/DiskMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "power/BatteryMonitoringService.h"
#include "power/KeepAwakeService.h"
#include "power/PowerScheduleService.h"
#include "ui/popover/MenuBarStatsPopover.h"

#include <QTemporaryDir>

namespace tallowmere::test {

// The eight services of the tray on this machine's real readings, with private preferences,
// a private usage store, recorded service-manager commands, no login manager and a battery
// record the test chooses. The mixer hooks record what the popover asks of them.
struct TrayTestKit {
    QTemporaryDir dir;
    PreferencesStore store{dir.filePath(QStringLiteral("preferences.json"))};
    CPUMonitoringService cpu;
    MemoryMonitoringService memory;
    DiskMonitoringService disk;
    NetworkMonitoringService network{std::make_unique<NetworkUsageStore>(dir.path())};
    BatteryInfo batteryReading = BatteryInfo::noBattery();
    BatteryMonitoringService battery{QDBusConnection(QStringLiteral("tallowmere-no-such-bus")),
                                     [this] { return batteryReading; }, BatteryMonitoringService::Timing{}};
    QStringList commands;
    PowerScheduleService power{store,
                               [this](const QString& program, const QStringList& arguments) {
                                   commands << program + u' ' + arguments.join(u' ');
                                   return 0;
                               },
                               dir.filePath(QStringLiteral("units"))};
    KeepAwakeService keepAwake{store, QDBusConnection(QStringLiteral("tallowmere-no-such-bus")),
                               QDBusConnection(QStringLiteral("tallowmere-no-such-bus"))};

    QList<AudioRowData> sessions;
    std::function<void()> sessionsChanged;
    int audioStarts = 0;
    int audioStops = 0;
    QList<std::pair<QString, double>> volumes;
    QStringList mutes;

    TrayServices services()
    {
        PopoverAudio audio{
            .sessions = [this] { return sessions; },
            .start = [this] { ++audioStarts; },
            .stop = [this] { ++audioStops; },
            .setVolume = [this](const QString& id, double percent) { volumes.append({id, percent}); },
            .toggleMute = [this](const QString& id) { mutes << id; },
            .watch = [this](QObject*, std::function<void()> changed) {
                sessionsChanged = std::move(changed);
                return QMetaObject::Connection();
            },
        };
        return {&cpu, &memory, &disk, &network, &battery, std::move(audio), &power, &keepAwake};
    }
};

} // namespace tallowmere::test
