#pragma once

#include <QWidget>

class QLabel;

namespace tallowmere {

class CPUMonitoringService;
class DiskMonitoringService;
class MemoryMonitoringService;

// The program's main window: live processor, memory and disk figures while it is on screen.
class MainWindow : public QWidget {
    Q_OBJECT
public:
    MainWindow(CPUMonitoringService& cpu, MemoryMonitoringService& memory, DiskMonitoringService& disk,
               QWidget* parent = nullptr);

signals:
    void closed();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void setPagesActive(bool active);
    void refreshCpu();
    void refreshMemory();
    void refreshDisk();

    CPUMonitoringService& cpu_;
    MemoryMonitoringService& memory_;
    DiskMonitoringService& disk_;
    QLabel* cpuLabel_;
    QLabel* memoryLabel_;
    QLabel* diskLabel_;
};

} // namespace tallowmere
