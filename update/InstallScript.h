#pragma once

#include <QString>
#include <QStringList>

namespace tallowmere {

// The shell script that swaps the installed copy once this process has exited: it waits for
// `pid` to disappear, moves `app` aside to "<app>.old" (removing an earlier backup first),
// copies `newApp` into its place and starts its bin/tallowmere; when the copy fails it puts
// the old copy back and starts that instead.
QString installScriptText(qint64 pid, const QString& app, const QString& newApp);

// The arguments for /bin/bash that run `scriptPath` under nohup in the background with its
// output discarded, so the script outlives this process.
QStringList installScriptLaunchArguments(const QString& scriptPath);

// `text` made safe to stand between double quotes in a shell script: the characters the shell
// still interprets there ($ ` " \) are escaped, everything else stays as it is.
QString doubleQuotedShellText(const QString& text);

} // namespace tallowmere
