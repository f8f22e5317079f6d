#pragma once

#include "ui/components/Theme.h"

#include <QWidget>

class QLabel;

namespace tallowmere {

class AreaGraph;
class BatteryMonitoringService;
class CPUMonitoringService;
class DiskMonitoringService;
class MemoryMonitoringService;
class NetworkMonitoringService;
class PopoverCard;
class ProgressBar;

// The "System" cards: CPU, memory, disk, network, and the battery when there is one. The cards
// follow the monitors while they are on screen and catch up when they come back.
class SystemSection : public QWidget {
    Q_OBJECT
public:
    SystemSection(const Theme& theme, CPUMonitoringService& cpu, MemoryMonitoringService& memory,
                  DiskMonitoringService& disk, NetworkMonitoringService& network, BatteryMonitoringService& battery,
                  QWidget* parent = nullptr);

    void refresh();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void refreshCpu();
    void refreshMemory();
    void refreshDisk();
    void refreshNetwork();
    void refreshBattery();
    void whenShown(void (SystemSection::*refresher)());

    CPUMonitoringService& cpu_;
    MemoryMonitoringService& memory_;
    DiskMonitoringService& disk_;
    NetworkMonitoringService& network_;
    BatteryMonitoringService& battery_;

    PopoverCard* cpuCard_;
    AreaGraph* cpuGraph_;
    PopoverCard* memoryCard_;
    AreaGraph* memoryGraph_;
    PopoverCard* diskCard_;
    ProgressBar* diskBar_;
    PopoverCard* networkCard_;
    AreaGraph* networkGraph_;
    QLabel* networkPeak_;
    QLabel* networkSession_;
    PopoverCard* batteryCard_;
};

} // namespace tallowmere
