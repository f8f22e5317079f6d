#include "core/Log.h"

#include <QDebug>

namespace tallowmere {

void logInfo(const QString& message)
{
    qInfo().noquote() << "[Tallowmere]" << message;
}

void logWarning(const QString& message)
{
    qWarning().noquote() << "[Tallowmere]" << message;
}

} // namespace tallowmere
