#pragma once

#include "core/PreferencesStore.h"
#include "history/NetworkMonitoringService.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/DiskMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "power/BatteryMonitoringService.h"
#include "power/KeepAwakeService.h"
#include "power/PowerScheduleService.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TestSupport.h"
#include "ui/popover/MenuBarStatsPopover.h"

#include <QTemporaryDir>

namespace tallowmere::test {

// The eight services of the tray on this machine's real readings, with private preferences,
// a private usage store, recorded service-manager commands, no login manager and a battery
// record the test chooses. The mixer hooks record what the popover asks of them.
struct TrayTestKit {
    QTemporaryDir dir;

    WakeTools recordingTools() const
    {
        const QByteArray record = "echo \"$0 $*\" >> '" + dir.filePath(QStringLiteral("commands.log")).toUtf8() + "'\n";
        WakeTools tools;
        tools.user = QStringLiteral("tester");
        tools.helper = writeScript(dir.filePath(QStringLiteral("helper")), record);
        // The user dismisses the password dialog: the wake is stored but not installed.
        tools.pkexec = writeScript(dir.filePath(QStringLiteral("pkexec")), record + "exit 126\n");
        tools.systemctl = writeScript(dir.filePath(QStringLiteral("systemctl")), record);
        tools.systemUnitDirectory = dir.filePath(QStringLiteral("units"));
        tools.oldUserUnitDirectory = dir.filePath(QStringLiteral("user-units"));
        return tools;
    }

    PreferencesStore store{dir.filePath(QStringLiteral("preferences.json"))};
    CPUMonitoringService cpu;
    MemoryMonitoringService memory;
    DiskMonitoringService disk;
    NetworkMonitoringService network{std::make_unique<NetworkUsageStore>(dir.path())};
    BatteryInfo batteryReading = BatteryInfo::noBattery();
    BatteryMonitoringService battery{missingBus(),
                                     [this] { return batteryReading; }, BatteryMonitoringService::Timing{}};
    PowerScheduleService power{store, recordingTools()};
    KeepAwakeService keepAwake{store, missingBus(), missingBus()};

    // The command lines pkexec and systemctl were started with, oldest first.
    QStringList commands() const
    {
        QFile log(dir.filePath(QStringLiteral("commands.log")));
        log.open(QIODevice::ReadOnly);
        return QString::fromUtf8(log.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

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
