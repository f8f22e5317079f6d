#pragma once

#include "core/PreferencesStore.h"

#include <QHash>
#include <QString>

#include <initializer_list>
#include <utility>

// Reads with the fallbacks the program's owners of each key agreed on: every reader applies
// its own default, and a stored value of the wrong type counts as absent.
namespace tallowmere::prefs {

bool flagOr(const PreferencesStore& store, QLatin1StringView key, bool fallback);

// A Boolean, or a number standing for one (0 is false); anything else gives the fallback.
bool flagOrNumberOr(const PreferencesStore& store, QLatin1StringView key, bool fallback);

qint64 integerOr(const PreferencesStore& store, QLatin1StringView key, qint64 fallback);

// Below 1 becomes 0, above 59 becomes 59, then down to a multiple of 15.
int normalisedQuarterMinute(qint64 minute);

// One of the names listed, else the fallback (also for texts that name nothing).
template <class Enum>
Enum choiceOr(const PreferencesStore& store, QLatin1StringView key,
              std::initializer_list<std::pair<QLatin1StringView, Enum>> names, Enum fallback)
{
    const TypedRead<QString> read = store.readString(key);
    if (!read.found())
        return fallback;
    for (const auto& [name, value] : names) {
        if (read.value == name)
            return value;
    }
    return fallback;
}

// Whole maps: an entry of the wrong type counts as missing; the others are kept.
QHash<QString, double> numberMap(const PreferencesStore& store, QLatin1StringView key);
QHash<QString, bool> flagMap(const PreferencesStore& store, QLatin1StringView key);

} // namespace tallowmere::prefs
