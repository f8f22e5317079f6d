#pragma once

#include "tests/support/TestSupport.h"

#include <QFile>
#include <QString>

namespace tallowmere::test {

// Writes an executable /bin/sh script.
inline QString writeScript(const QString& path, const QByteArray& body)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write("#!/bin/sh\n" + body);
    file.setPermissions(file.permissions() | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther);
    return path;
}

// A stand-in for systemctl that appends its arguments to `log` and, like the real one, links
// an enabled timer into timers.target.wants below `unitDirectory` and unlinks a disabled one.
inline QString writeRecordingSystemctl(const QString& path, const QString& log, const QString& unitDirectory)
{
    const QByteArray wants = (unitDirectory + QStringLiteral("/timers.target.wants")).toUtf8();
    return writeScript(path, "echo \"$*\" >> '" + log.toUtf8() + "'\n"
                             "case \"$1\" in\n"
                             "  enable) mkdir -p '" + wants + "' && ln -sf \"../$3\" '" + wants + "'/\"$3\" ;;\n"
                             "  disable) rm -f '" + wants + "'/\"$3\" ;;\n"
                             "esac\n"
                             "exit ${SYSTEMCTL_STATUS:-0}\n");
}

} // namespace tallowmere::test
