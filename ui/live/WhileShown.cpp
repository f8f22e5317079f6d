#include "ui/live/WhileShown.h"

#include "monitors/MonitoringService.h"

#include <QEvent>
#include <QPointer>
#include <QWidget>

namespace tallowmere {

namespace {

class VisibilityWatch : public QObject {
public:
    VisibilityWatch(QWidget* widget, std::function<void(bool)> onChange)
        : QObject(widget)
        , onChange_(std::move(onChange))
    {
        widget->installEventFilter(this);
        if (widget->isVisible())
            set(true);
    }

    ~VisibilityWatch() override { set(false); }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show || event->type() == QEvent::Hide)
            set(static_cast<QWidget*>(watched)->isVisible());
        return false;
    }

private:
    void set(bool shown)
    {
        if (shown == shown_)
            return;
        shown_ = shown;
        onChange_(shown);
    }

    std::function<void(bool)> onChange_;
    bool shown_ = false;
};

} // namespace

void whileShown(QWidget* widget, std::function<void(bool shown)> onChange)
{
    new VisibilityWatch(widget, std::move(onChange));
}

void demandWhileShown(QWidget* widget, MonitoringService* service)
{
    if (!service)
        return;
    // The service may go first at exit; a guarded pointer keeps the last hide harmless.
    whileShown(widget, [guard = QPointer<MonitoringService>(service)](bool shown) {
        if (!guard)
            return;
        guard->setPageActive(shown);
        guard->updateMonitoring();
    });
}

} // namespace tallowmere
