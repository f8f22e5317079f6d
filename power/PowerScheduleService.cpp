#include "power/PowerScheduleService.h"

#include "core/ChildProcess.h"
#include "core/Property.h"
#include "core/PreferenceKeys.h"
#include "core/PreferenceReaders.h"
#include "core/PreferencesStore.h"

#include <QCoreApplication>

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

PowerScheduleService::PowerScheduleService(PreferencesStore& store, WakeTools tools, QObject* parent)
    : QObject(parent)
    , store_(store)
    , tools_(std::move(tools))
    , wakeEnabled_(prefs::flagOr(store, keys::wakeScheduleEnabled, false))
    , wakeHour_(storedHour(store))
    , wakeMinute_(prefs::normalisedQuarterMinute(prefs::integerOr(store, keys::wakeScheduleMinute, 30)))
    , outcome_(installedWake(tools_, wakeEnabled_, wakeHour_, wakeMinute_))
{
    // One thread: requests must reach the service manager in the order they were given.
    commands_.setMaxThreadCount(1);
    commands_.start([tools = tools_] { removeOldUserTimer(tools); });
}

PowerScheduleService::~PowerScheduleService()
{
    commands_.waitForDone();
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

void PowerScheduleService::applyAgain()
{
    applyPending();
}

void PowerScheduleService::sleepNow()
{
    commands_.start([systemctl = tools_.systemctl] { runChild(systemctl, {QStringLiteral("suspend")}); });
}

void PowerScheduleService::waitForCommands()
{
    commands_.waitForDone();
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

void PowerScheduleService::storeAndApply()
{
    store_.setValue(keys::wakeScheduleEnabled, wakeEnabled_);
    store_.setValue(keys::wakeScheduleHour, wakeHour_);
    store_.setValue(keys::wakeScheduleMinute, wakeMinute_);
    applyPending();
}

void PowerScheduleService::applyPending()
{
    QMutexLocker lock(&pendingMutex_);
    const bool queued = pending_.has_value();
    pending_ = Schedule{wakeEnabled_, wakeHour_, wakeMinute_};
    if (queued)
        return; // the request already waiting will carry these values
    commands_.start([this] {
        const Schedule schedule = [this] {
            QMutexLocker lock(&pendingMutex_);
            return *std::exchange(pending_, std::nullopt);
        }();
        const WakeOutcome outcome = applyWake(tools_, schedule.enabled, schedule.hour, schedule.minute);
        QMetaObject::invokeMethod(this, [this, outcome] { publish(outcome); }, Qt::QueuedConnection);
    });
}

void PowerScheduleService::publish(const WakeOutcome& outcome)
{
    const WakeOutcome before = std::exchange(outcome_, outcome);
    if (before.installed != outcome.installed)
        emit wakeInstalledChanged();
    if (before.problem != outcome.problem)
        emit wakeProblemChanged();
}

} // namespace tallowmere
