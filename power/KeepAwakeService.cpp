#include "power/KeepAwakeService.h"

#include "core/Property.h"
#include "core/PreferenceKeys.h"
#include "core/PreferenceReaders.h"
#include "core/PreferencesStore.h"

#include <QCoreApplication>

namespace tallowmere {

namespace {

KeepAwakeDuration storedDuration(const PreferencesStore& store)
{
    using D = KeepAwakeDuration;
    return prefs::choiceOr(store, keys::keepAwakeDuration,
                           {{rawName(D::tenMinutes), D::tenMinutes},
                            {rawName(D::thirtyMinutes), D::thirtyMinutes},
                            {rawName(D::oneHour), D::oneHour},
                            {rawName(D::infinite), D::infinite}},
                           D::thirtyMinutes);
}

KeepAwakeMode storedMode(const PreferencesStore& store)
{
    using M = KeepAwakeMode;
    return prefs::choiceOr(store, keys::keepAwakeMode,
                           {{rawName(M::displayOn), M::displayOn},
                            {rawName(M::displayOff), M::displayOff},
                            {rawName(M::lidClosed), M::lidClosed}},
                           M::displayOn);
}

} // namespace

KeepAwakeService::KeepAwakeService(PreferencesStore& store, QDBusConnection systemBus, QDBusConnection sessionBus,
                                   std::shared_ptr<KeepAwakeClock> clock, QObject* parent)
    : QObject(parent)
    , store_(store)
    , locks_(std::move(systemBus), std::move(sessionBus))
    , clock_(clock ? std::move(clock) : std::make_shared<KeepAwakeClock>())
    , duration_(storedDuration(store))
    , mode_(storedMode(store))
{
    // SIGTERM and SIGINT also end in an orderly quit, so this covers them too.
    if (auto* app = QCoreApplication::instance())
        connect(app, &QCoreApplication::aboutToQuit, this, &KeepAwakeService::stop);
}

KeepAwakeService::~KeepAwakeService()
{
    expiryTask_.reset();
    tickTask_.reset();
    releaseAll();
}

void KeepAwakeService::setDuration(KeepAwakeDuration duration)
{
    store_.setValue(keys::keepAwakeDuration, QString(rawName(duration)));
    assignProperty(this, duration_, duration, &KeepAwakeService::durationChanged);
}

void KeepAwakeService::setMode(KeepAwakeMode mode)
{
    store_.setValue(keys::keepAwakeMode, QString(rawName(mode)));
    assignProperty(this, mode_, mode, &KeepAwakeService::modeChanged);
}

void KeepAwakeService::start()
{
    releaseAll();
    acquireForMode();
    assignProperty(this, isActive_, true, &KeepAwakeService::isActiveChanged);
    expiryTask_.reset();

    const auto period = periodOf(duration_);
    if (!period) {
        setExpiresAt(std::nullopt);
    } else {
        setExpiresAt(clock_->now() + *period);
        expiryTask_ = clock_->sleep(*period, [this] { stop(); });
    }

    tickTask_.reset();
    if (expiresAt_)
        scheduleTick();
}

void KeepAwakeService::stop()
{
    expiryTask_.reset();
    tickTask_.reset();
    releaseAll();
    assignProperty(this, isActive_, false, &KeepAwakeService::isActiveChanged);
    setExpiresAt(std::nullopt);
    assignProperty(this, countdownTick_, 0, &KeepAwakeService::countdownTickChanged);
}

std::optional<QString> KeepAwakeService::statusText() const
{
    return keepAwakeStatusText(isActive_, expiresAt_, clock_->now());
}

void KeepAwakeService::scheduleTick()
{
    tickTask_ = clock_->sleep(std::chrono::seconds(1), [this] {
        if (!isActive_ || !expiresAt_)
            return;
        ++countdownTick_;
        emit countdownTickChanged();
        scheduleTick();
    });
}

std::optional<QDateTime> KeepAwakeService::expiresAt() const
{
    if (!expiresAt_)
        return std::nullopt;
    return toDateTime(*expiresAt_);
}

void KeepAwakeService::setExpiresAt(std::optional<WallTime> expiresAt)
{
    if (expiresAt_ == expiresAt)
        return;
    expiresAt_ = std::move(expiresAt);
    emit expiresAtChanged();
}

void KeepAwakeService::acquireForMode()
{
    acquire(sleepLock_, QStringLiteral("sleep"), false);
    if (mode_ == KeepAwakeMode::displayOn)
        acquire(idleLock_, QStringLiteral("idle"), true);
    else if (mode_ == KeepAwakeMode::lidClosed)
        acquire(lidSwitchLock_, QStringLiteral("handle-lid-switch"), false);
}

void KeepAwakeService::acquire(HeldLock& lock, const QString& what, bool withScreenSaver)
{
    lock.descriptor = locks_.inhibit(what);
    // Desktops blank the screen through their screen saver, not only through the login
    // manager's idle state, so keeping the display on asks both.
    if (withScreenSaver)
        lock.screenSaverCookie = locks_.inhibitScreenSaver();
    if (lock.descriptor || lock.screenSaverCookie)
        lock.id = nextLockId();
}

void KeepAwakeService::releaseAll()
{
    release(sleepLock_);
    release(idleLock_);
    release(lidSwitchLock_);
}

void KeepAwakeService::release(HeldLock& lock)
{
    if (lock.screenSaverCookie)
        locks_.uninhibitScreenSaver(*lock.screenSaverCookie);
    lock.screenSaverCookie.reset();
    lock.descriptor.reset();
    lock.id = 0;
}

quint32 KeepAwakeService::nextLockId()
{
    // Identifiers only tell held locks apart; 0 stays reserved for "none".
    static quint32 last = 0;
    if (++last == 0)
        ++last;
    return last;
}

} // namespace tallowmere
