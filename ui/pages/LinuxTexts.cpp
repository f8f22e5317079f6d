#include "ui/pages/LinuxTexts.h"

#include "hardware/SystemInfoParsers.h"

#include <QFile>

namespace tallowmere::linuxTexts {

namespace {
QByteArray readSmallFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.read(1 << 20);
}
} // namespace

std::optional<QString> rootFileSystemType(const QString& procRoot)
{
    const QList<inventory::MountEntry> mounts = inventory::parseMountInfo(readSmallFile(procRoot + QStringLiteral("/self/mountinfo")));
    // The last mount on "/" is the one in effect.
    for (auto it = mounts.crbegin(); it != mounts.crend(); ++it)
        if (it->mountPoint == QLatin1String("/") && !it->fsType.isEmpty())
            return it->fsType;
    return std::nullopt;
}

std::optional<qint64> uptimeSeconds(const QString& procRoot)
{
    const QByteArray text = readSmallFile(procRoot + QStringLiteral("/uptime"));
    bool ok = false;
    const double seconds = text.split(' ').value(0).toDouble(&ok);
    if (!ok || seconds < 0)
        return std::nullopt;
    return static_cast<qint64>(seconds);
}

QString batteryHealthNote()
{
    return QStringLiteral("Live estimate from current battery data. The system's own battery settings update their "
                          "figure periodically, so it may differ by a few percent.");
}

QString noInternalBatteryNote()
{
    return QStringLiteral("This computer is connected to AC power and has no internal battery.");
}

} // namespace tallowmere::linuxTexts
