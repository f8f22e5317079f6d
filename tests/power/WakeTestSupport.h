#pragma once

#include "tests/support/TestSupport.h"

#include <QString>

namespace tallowmere::test {

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
