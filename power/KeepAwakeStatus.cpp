#include "power/KeepAwakeStatus.h"

#include <algorithm>

namespace tallowmere {

QDateTime toDateTime(WallTime time)
{
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
    return QDateTime::fromMSecsSinceEpoch(ms.count(), Qt::UTC);
}

QLatin1StringView rawName(KeepAwakeDuration duration)
{
    switch (duration) {
    case KeepAwakeDuration::tenMinutes: return QLatin1StringView("tenMinutes");
    case KeepAwakeDuration::thirtyMinutes: return QLatin1StringView("thirtyMinutes");
    case KeepAwakeDuration::oneHour: return QLatin1StringView("oneHour");
    case KeepAwakeDuration::infinite: break;
    }
    return QLatin1StringView("infinite");
}

QLatin1StringView rawName(KeepAwakeMode mode)
{
    switch (mode) {
    case KeepAwakeMode::displayOn: return QLatin1StringView("displayOn");
    case KeepAwakeMode::displayOff: return QLatin1StringView("displayOff");
    case KeepAwakeMode::lidClosed: break;
    }
    return QLatin1StringView("lidClosed");
}

std::optional<std::chrono::seconds> periodOf(KeepAwakeDuration duration)
{
    switch (duration) {
    case KeepAwakeDuration::tenMinutes: return std::chrono::seconds(600);
    case KeepAwakeDuration::thirtyMinutes: return std::chrono::seconds(1800);
    case KeepAwakeDuration::oneHour: return std::chrono::seconds(3600);
    case KeepAwakeDuration::infinite: break;
    }
    return std::nullopt;
}

QString countdownText(double seconds)
{
    // Far beyond any session length; only keeps the conversion below defined.
    const double bounded = std::clamp(seconds, 0.0, 1e9);
    const int s = static_cast<int>(bounded);
    if (s >= 3600)
        return QString::asprintf("%dh %02dm", s / 3600, (s % 3600) / 60);
    if (s >= 60)
        return QString::asprintf("%dm", (s % 3600) / 60);
    return QString::asprintf("%ds", s % 60);
}

std::optional<QString> keepAwakeStatusText(bool active, const std::optional<WallTime>& expiresAt, WallTime now)
{
    if (!active)
        return std::nullopt;
    if (!expiresAt)
        return QStringLiteral("Active · No limit");
    const double remaining = std::max(0.0, std::chrono::duration<double>(*expiresAt - now).count());
    if (remaining == 0.0)
        return QStringLiteral("Active · Ending…");
    return QStringLiteral("Active · ") + countdownText(remaining) + QStringLiteral(" left");
}

} // namespace tallowmere
