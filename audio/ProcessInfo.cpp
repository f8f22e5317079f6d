#include "audio/ProcessInfo.h"

#include <QFile>
#include <QFileInfo>

namespace tallowmere {

std::optional<ProcessInfo> readProcessInfo(const QString& procRoot, int pid)
{
    const QString dir = procRoot + u'/' + QString::number(pid);
    QFile stat(dir + QStringLiteral("/stat"));
    if (!stat.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray text = stat.read(4096);
    // The command name sits in parentheses and may itself hold spaces and parentheses.
    const qsizetype open = text.indexOf('(');
    const qsizetype close = text.lastIndexOf(')');
    if (open < 0 || close < open)
        return std::nullopt;
    const QList<QByteArray> fields = text.mid(close + 2).split(' ');
    bool ok = false;
    const int parent = fields.size() > 1 ? fields[1].toInt(&ok) : 0;
    if (!ok)
        return std::nullopt;

    // The executable's own name is longer and truer than the command name, when readable.
    QString executable = QFileInfo(QFile::symLinkTarget(dir + QStringLiteral("/exe"))).fileName();
    if (executable.endsWith(QLatin1StringView(" (deleted)")))
        executable.chop(10);
    if (executable.isEmpty())
        executable = QString::fromUtf8(text.mid(open + 1, close - open - 1));
    return ProcessInfo{parent, executable};
}

} // namespace tallowmere
