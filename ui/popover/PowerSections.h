#pragma once

#include "ui/components/Theme.h"

#include <QWidget>

class QLabel;

namespace tallowmere {

class HoverButton;
class KeepAwakeService;
class PowerScheduleService;
class Switch;

// "Sleep & Wake": "Sleep Now", and the daily wake with its switch, hour and minute steppers,
// AM/PM toggle and "Repeats every day".
class SleepWakeSection : public QWidget {
    Q_OBJECT
public:
    SleepWakeSection(const Theme& theme, PowerScheduleService& power, QWidget* parent = nullptr);

    // The hint beside "Sleep Now": the keyboard's sleep key as the desktop names it.
    static QString sleepShortcutHint();

private:
    void refresh();

    PowerScheduleService& power_;
    Switch* wakeSwitch_;
    QLabel* wakeTime_;
    QLabel* clock_;
    HoverButton* meridiem_;
    QLabel* problem_;
    HoverButton* retry_;
};

// "Keep Awake": the on/off switch with the session's status, three modes and four durations.
class KeepAwakeSection : public QWidget {
    Q_OBJECT
public:
    KeepAwakeSection(const Theme& theme, KeepAwakeService& keepAwake, QWidget* parent = nullptr);

private:
    void refresh();

    const Theme& theme_;
    KeepAwakeService& keepAwake_;
    Switch* switch_;
    QLabel* status_;
    QList<HoverButton*> modes_;
    QList<HoverButton*> chips_;
};

} // namespace tallowmere
