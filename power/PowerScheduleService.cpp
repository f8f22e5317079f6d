#include "power/PowerScheduleService.h"

#include "core/Property.h"
#include "core/PreferenceKeys.h"
#include "core/PreferenceReaders.h"
#include "core/PreferencesStore.h"

#include <algorithm>
#include <limits>

namespace tallowmere {

namespace {

int storedHour(const PreferencesStore& store)
{
    // Taken as stored, only kept inside what an int holds.
    const qint64 hour = prefs::integerOr(store, keys::wakeScheduleHour, 7);
    return static_cast<int>(std::clamp<qint64>(hour, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

} // namespace

PowerScheduleService::PowerScheduleService(PreferencesStore& store, CommandRunner run, QString unitDirectory,
                                           QObject* parent)
    : QObject(parent)
    , store_(store)
    , run_(run ? std::move(run) : childProcessRunner())
    , unitDirectory_(unitDirectory.isEmpty() ? defaultUserUnitDirectory() : std::move(unitDirectory))
    , wakeEnabled_(prefs::flagOr(store, keys::wakeScheduleEnabled, false))
    , wakeHour_(storedHour(store))
    , wakeMinute_(prefs::normalisedQuarterMinute(prefs::integerOr(store, keys::wakeScheduleMinute, 30)))
{
    // One thread: commands must reach the service manager in the order they were given.
    commands_.setMaxThreadCount(1);
}

PowerScheduleService::~PowerScheduleService()
{
    waitForCommands();
}

void PowerScheduleService::setWakeEnabled(bool enabled)
{
    assignProperty(this, wakeEnabled_, enabled, &PowerScheduleService::wakeEnabledChanged);
    storeAndApply();
}

void PowerScheduleService::setWakeHour(int hour)
{
    const int clamped = std::clamp(hour, 0, 23);
    if (clamped != hour)
        return setWakeHour(clamped);
    assignProperty(this, wakeHour_, hour, &PowerScheduleService::wakeHourChanged);
    storeAndApply();
}

void PowerScheduleService::setWakeMinute(int minute)
{
    const int corrected = std::clamp(minute / 15 * 15, 0, 45);
    if (corrected != minute)
        return setWakeMinute(corrected);
    assignProperty(this, wakeMinute_, minute, &PowerScheduleService::wakeMinuteChanged);
    storeAndApply();
}

void PowerScheduleService::adjustTime(qint64 byMinutes)
{
    constexpr qint64 day = 24 * 60;
    // Reduce first so that no delta, however large, can overflow the sum.
    const qint64 t = ((qint64(wakeHour_) * 60 + wakeMinute_ + byMinutes % day) % day + day) % day;
    setWakeHour(static_cast<int>(t / 60));
    setWakeMinute(static_cast<int>(t % 60));
}

void PowerScheduleService::sleepNow()
{
    commands_.start([run = run_] { run(QStringLiteral("systemctl"), {QStringLiteral("suspend")}); });
}

void PowerScheduleService::waitForCommands()
{
    commands_.waitForDone();
}

void PowerScheduleService::storeAndApply()
{
    store_.setValue(keys::wakeScheduleEnabled, wakeEnabled_);
    store_.setValue(keys::wakeScheduleHour, wakeHour_);
    store_.setValue(keys::wakeScheduleMinute, wakeMinute_);
    commands_.start([run = run_, dir = unitDirectory_, enabled = wakeEnabled_, hour = wakeHour_,
                     minute = wakeMinute_] { applyWakeSchedule(dir, enabled, hour, minute, run); });
}

} // namespace tallowmere
