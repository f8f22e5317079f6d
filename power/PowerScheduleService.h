#pragma once

#include "power/PowerScheduleUnits.h"

#include <QObject>
#include <QThreadPool>

namespace tallowmere {

class PreferencesStore;

// One daily wake time. Every assignment that passes the clamping rules stores all three
// values and hands the whole schedule to the service manager again, so the system's wake
// always mirrors the last values set. The commands run one after another on a worker thread
// of their own, in the order the assignments were made, so the caller never waits for them.
class PowerScheduleService : public QObject {
    Q_OBJECT
public:
    // An empty `unitDirectory` means the user's own; a null `run` means real child processes.
    explicit PowerScheduleService(PreferencesStore& store, CommandRunner run = {}, QString unitDirectory = {},
                                  QObject* parent = nullptr);
    ~PowerScheduleService() override;

    bool wakeEnabled() const { return wakeEnabled_; }
    int wakeHour() const { return wakeHour_; }
    int wakeMinute() const { return wakeMinute_; }

    void setWakeEnabled(bool enabled);
    // Clamped to 0…23.
    void setWakeHour(int hour);
    // Cut down to a multiple of 15, then clamped to 0…45.
    void setWakeMinute(int minute);

    // Moves the wake time by a signed number of minutes around the clock.
    void adjustTime(qint64 byMinutes);

    // Suspends the machine now.
    void sleepNow();

    // Blocks until every command handed out so far has run.
    void waitForCommands();

    const QString& unitDirectory() const { return unitDirectory_; }

signals:
    void wakeEnabledChanged();
    void wakeHourChanged();
    void wakeMinuteChanged();

private:
    void storeAndApply();

    PreferencesStore& store_;
    CommandRunner run_;
    QString unitDirectory_;
    QThreadPool commands_;

    bool wakeEnabled_;
    int wakeHour_;
    int wakeMinute_;
};

} // namespace tallowmere
