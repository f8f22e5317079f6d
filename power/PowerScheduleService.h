#pragma once

#include "power/WakeInstaller.h"

#include <QMutex>
#include <QObject>
#include <QThreadPool>

#include <optional>

namespace tallowmere {

class PreferencesStore;

// One daily wake time. Every assignment that passes the clamping rules stores all three
// values and hands the schedule to the system again. Installing the wake timer needs an
// administrator, so it runs on a worker thread of its own, and changes made while polkit asks
// for the password are folded into one request carrying the latest values. `wakeInstalled`
// and `wakeProblem` say what the system really holds; the stored schedule never depends on it.
class PowerScheduleService : public QObject {
    Q_OBJECT
public:
    explicit PowerScheduleService(PreferencesStore& store, WakeTools tools = WakeTools::ofRunningProgram(),
                                  QObject* parent = nullptr);
    ~PowerScheduleService() override;

    bool wakeEnabled() const { return wakeEnabled_; }
    int wakeHour() const { return wakeHour_; }
    int wakeMinute() const { return wakeMinute_; }
    // The system's wake timer is in place (it may be, left over, while the schedule is off).
    bool wakeInstalled() const { return outcome_.installed; }
    // Empty when the system mirrors the schedule; otherwise one sentence for the user.
    const QString& wakeProblem() const { return outcome_.problem; }

    void setWakeEnabled(bool enabled);
    // Clamped to 0…23.
    void setWakeHour(int hour);
    // Cut down to a multiple of 15, then clamped to 0…45.
    void setWakeMinute(int minute);

    // Moves the wake time by a signed number of minutes around the clock.
    void adjustTime(qint64 byMinutes);

    // Tries once more to bring the system in line, e.g. after a cancelled password dialog.
    void applyAgain();

    // Suspends the machine now.
    void sleepNow();

    // Blocks until every command handed out so far has run and its outcome is published.
    void waitForCommands();

signals:
    void wakeEnabledChanged();
    void wakeHourChanged();
    void wakeMinuteChanged();
    void wakeInstalledChanged();
    void wakeProblemChanged();

private:
    struct Schedule {
        bool enabled;
        int hour;
        int minute;
    };

    void storeAndApply();
    void applyPending();
    void publish(const WakeOutcome& outcome);

    PreferencesStore& store_;
    const WakeTools tools_;
    QThreadPool commands_;
    QMutex pendingMutex_;
    std::optional<Schedule> pending_; // the latest schedule not yet taken by the worker

    bool wakeEnabled_;
    int wakeHour_;
    int wakeMinute_;
    WakeOutcome outcome_;
};

} // namespace tallowmere
