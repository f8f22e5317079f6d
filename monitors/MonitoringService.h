#pragma once

#include <QObject>

#include <memory>

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

// A service that owns one monitor with a single main loop: the loop runs exactly while some
// consumer wants the figures. Stopping clears nothing the monitor has published.
template <class Monitor>
class MonitorOwningService : public MonitoringService {
public:
    explicit MonitorOwningService(std::unique_ptr<Monitor> monitor, QObject* parent = nullptr)
        : MonitoringService(parent)
        , monitor_(std::move(monitor))
    {
    }

    Monitor& monitor() const { return *monitor_; }

    void updateMonitoring() override
    {
        if (isActive())
            monitor_->startMonitoring();
        else
            monitor_->stopMonitoring();
    }

private:
    std::unique_ptr<Monitor> monitor_;
};

} // namespace tallowmere
