#include "ui/window/MainWindow.h"

#include "monitors/CPUMonitoringService.h"
#include "monitors/DiskMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

namespace tallowmere {

MainWindow::MainWindow(CPUMonitoringService& cpu, MemoryMonitoringService& memory, DiskMonitoringService& disk,
                       QWidget* parent)
    : QWidget(parent)
    , cpu_(cpu)
    , memory_(memory)
    , disk_(disk)
    , cpuLabel_(new QLabel(this))
    , memoryLabel_(new QLabel(this))
    , diskLabel_(new QLabel(this))
{
    setWindowTitle(QStringLiteral("Tallowmere"));
    auto* layout = new QVBoxLayout(this);
    QFont big = font();
    big.setPointSizeF(big.pointSizeF() * 1.6);
    for (QLabel* label : {cpuLabel_, memoryLabel_, diskLabel_}) {
        label->setFont(big);
        layout->addWidget(label);
    }
    layout->addStretch();

    // Opens at 1280 x 860, centred on the screen it appears on.
    resize(1280, 860);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());

    const CPUMonitor& cpuMonitor = cpu_.monitor();
    connect(&cpuMonitor, &CPUMonitor::currentUsageChanged, this, &MainWindow::refreshCpu);
    connect(&memory_.monitor(), &MemoryMonitor::usedGBChanged, this, &MainWindow::refreshMemory);
    connect(&memory_.monitor(), &MemoryMonitor::totalGBChanged, this, &MainWindow::refreshMemory);
    connect(&disk_.monitor(), &DiskMonitor::freeGBChanged, this, &MainWindow::refreshDisk);
    connect(&disk_.monitor(), &DiskMonitor::readBytesPerSecChanged, this, &MainWindow::refreshDisk);
    connect(&disk_.monitor(), &DiskMonitor::writeBytesPerSecChanged, this, &MainWindow::refreshDisk);
    refreshCpu();
    refreshMemory();
    refreshDisk();
}

void MainWindow::refreshCpu()
{
    const CPUMonitor& m = cpu_.monitor();
    cpuLabel_->setText(QStringLiteral("CPU  %1 %  (user %2 %, system %3 %)")
                           .arg(m.currentUsage(), 0, 'f', 1)
                           .arg(m.userUsage(), 0, 'f', 1)
                           .arg(m.systemUsage(), 0, 'f', 1));
}

void MainWindow::refreshMemory()
{
    const MemoryMonitor& m = memory_.monitor();
    memoryLabel_->setText(QStringLiteral("Memory  %1 GB of %2 GB used")
                              .arg(m.usedGB(), 0, 'f', 1)
                              .arg(m.totalGB(), 0, 'f', 1));
}

void MainWindow::refreshDisk()
{
    const DiskMonitor& m = disk_.monitor();
    diskLabel_->setText(QStringLiteral("Disk  %1 GB free of %2 GB  (read %3 MB/s, write %4 MB/s)")
                            .arg(m.freeGB(), 0, 'f', 1)
                            .arg(m.totalGB(), 0, 'f', 1)
                            .arg(m.readBytesPerSec() / 1048576.0, 0, 'f', 2)
                            .arg(m.writeBytesPerSec() / 1048576.0, 0, 'f', 2));
}

void MainWindow::setPagesActive(bool active)
{
    for (MonitoringService* service : {static_cast<MonitoringService*>(&cpu_), static_cast<MonitoringService*>(&memory_),
                                       static_cast<MonitoringService*>(&disk_)}) {
        service->setPageActive(active);
        service->updateMonitoring();
    }
}

void MainWindow::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    setPagesActive(true);
}

void MainWindow::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    setPagesActive(false);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    QWidget::closeEvent(event);
    emit closed();
}

} // namespace tallowmere
