#pragma once

#include <QObject>

namespace tallowmere {

// The demand flags every monitoring service keeps: one per kind of consumer. Assigning a flag
// starts or stops nothing; the assigner calls updateMonitoring() afterwards.
class MonitoringService : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    bool pageActive() const { return pageActive_; }
    bool menuBarActive() const { return menuBarActive_; }
    bool serverActive() const { return serverActive_; }

    void setPageActive(bool active);
    void setMenuBarActive(bool active);
    void setServerActive(bool active);

    // True while at least one consumer wants the figures.
    virtual bool isActive() const { return pageActive_ || menuBarActive_ || serverActive_; }

    // Brings the monitor's loops in line with the flags; safe to call any number of times.
    virtual void updateMonitoring() = 0;

signals:
    void pageActiveChanged();
    void menuBarActiveChanged();
    void serverActiveChanged();

private:
    bool pageActive_ = false;
    bool menuBarActive_ = false;
    bool serverActive_ = false;
};

} // namespace tallowmere
