#pragma once

#include "ui/popover/PopoverAudio.h"

#include <QWidget>

#include <functional>
#include <optional>

namespace tallowmere {

class AudioSection;
class BatteryMonitoringService;
class CPUMonitoringService;
class DiskMonitoringService;
class KeepAwakeService;
class MemoryMonitoringService;
class NetworkMonitoringService;
class PowerScheduleService;
class StripWidget;
class SystemSection;

// The eight services the tray and its popover are built on.
struct TrayServices {
    CPUMonitoringService* cpu = nullptr;
    MemoryMonitoringService* memory = nullptr;
    DiskMonitoringService* disk = nullptr;
    NetworkMonitoringService* network = nullptr;
    BatteryMonitoringService* battery = nullptr;
    std::optional<PopoverAudio> audio;
    PowerScheduleService* power = nullptr;
    KeepAwakeService* keepAwake = nullptr;

    bool complete() const
    {
        return cpu && memory && disk && network && battery && audio && power && keepAwake;
    }
};

// The dark dashboard that drops from the tray: the strip at its head, then the System cards,
// the per-app volume mixer, Sleep & Wake, Keep Awake and the two footer buttons, in a
// scrolling frameless window of 360 x 820 that closes when it loses focus.
class MenuBarStatsPopover : public QWidget {
    Q_OBJECT
public:
    static constexpr QSize kSize{360, 820};

    MenuBarStatsPopover(const TrayServices& services, QWidget* parent = nullptr);

    std::function<void()> onOpenApp;
    std::function<void()> onQuit;

    // Shows the popover with its top centre under `anchor` (a screen point), kept on screen.
    void popUp(QPoint anchor);
    StripWidget* strip() const { return strip_; }

signals:
    void closed();

protected:
    bool event(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QWidget* buildContent(const TrayServices& services);
    void refreshStrip();
    void readStrip();

    TrayServices services_;
    StripWidget* strip_ = nullptr;
};

} // namespace tallowmere
