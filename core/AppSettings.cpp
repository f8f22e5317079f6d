#include "core/AppSettings.h"

#include "core/Property.h"
#include "core/PreferenceKeys.h"
#include "core/PreferenceReaders.h"

namespace tallowmere {

AppSettings::AppSettings(PreferencesStore& store, QObject* parent)
    : QObject(parent)
    , store_(store)
    , menuBarEnabled_(prefs::flagOr(store, keys::menuBarEnabled, false))
    , localServerEnabled_(prefs::flagOr(store, keys::localServerEnabled, false))
    , networkRecordingEnabled_(prefs::flagOrNumberOr(store, keys::networkRecordingEnabled, true))
{
}

void AppSettings::setMenuBarEnabled(bool enabled)
{
    store_.setValue(keys::menuBarEnabled, enabled);
    assignProperty(this, menuBarEnabled_, enabled, &AppSettings::menuBarEnabledChanged);
}

void AppSettings::setLocalServerEnabled(bool enabled)
{
    store_.setValue(keys::localServerEnabled, enabled);
    assignProperty(this, localServerEnabled_, enabled, &AppSettings::localServerEnabledChanged);
}

void AppSettings::setNetworkRecordingEnabled(bool enabled)
{
    store_.setValue(keys::networkRecordingEnabled, enabled);
    assignProperty(this, networkRecordingEnabled_, enabled, &AppSettings::networkRecordingEnabledChanged);
}

} // namespace tallowmere
