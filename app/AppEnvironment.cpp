#include "app/AppEnvironment.h"

#include "core/PreferencesStore.h"
#include "history/NetworkUsageStore.h"
#include "update/UpdateEnvironment.h"

#include <QFileInfo>

namespace tallowmere {

QString AppEnvironment::preferencesPath() const
{
    return roots.config + QStringLiteral("/preferences.json");
}

AppEnvironment AppEnvironment::forThisMachine()
{
    AppEnvironment environment;
    environment.systemBus = QDBusConnection::systemBus();
    environment.sessionBus = QDBusConnection::sessionBus();
    environment.feedUrl = updateFeedAddress();
    environment.roots.config = QFileInfo(PreferencesStore::defaultPath()).path();
    environment.roots.data = NetworkUsageStore::defaultDirectory();
    return environment;
}

} // namespace tallowmere
