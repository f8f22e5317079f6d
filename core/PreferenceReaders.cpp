#include "core/PreferenceReaders.h"

#include <QJsonObject>

namespace tallowmere::prefs {

bool flagOr(const PreferencesStore& store, QLatin1StringView key, bool fallback)
{
    return store.readBool(key).valueOr(fallback);
}

bool flagOrNumberOr(const PreferencesStore& store, QLatin1StringView key, bool fallback)
{
    if (const auto flag = store.readBool(key); flag.found())
        return flag.value;
    if (const auto number = store.readDouble(key); number.found())
        return number.value != 0.0;
    return fallback;
}

qint64 integerOr(const PreferencesStore& store, QLatin1StringView key, qint64 fallback)
{
    return store.readInteger(key).valueOr(fallback);
}

int normalisedQuarterMinute(qint64 minute)
{
    const qint64 clamped = minute < 1 ? 0 : (minute > 59 ? 59 : minute);
    return static_cast<int>(clamped / 15 * 15);
}

QHash<QString, double> numberMap(const PreferencesStore& store, QLatin1StringView key)
{
    QHash<QString, double> result;
    const auto object = store.readObject(key);
    if (!object.found())
        return result;
    for (auto it = object.value.constBegin(); it != object.value.constEnd(); ++it) {
        if (it->isDouble())
            result.insert(it.key(), it->toDouble());
    }
    return result;
}

QHash<QString, bool> flagMap(const PreferencesStore& store, QLatin1StringView key)
{
    QHash<QString, bool> result;
    const auto object = store.readObject(key);
    if (!object.found())
        return result;
    for (auto it = object.value.constBegin(); it != object.value.constEnd(); ++it) {
        if (it->isBool())
            result.insert(it.key(), it->toBool());
    }
    return result;
}

} // namespace tallowmere::prefs
