#include "update/InstallScript.h"

namespace tallowmere {

namespace {

// Every path stands between double quotes, so a folder name with spaces is one word.
constexpr const char* scriptTemplate = R"(#!/bin/bash
set -e
while /bin/kill -0 {PID} 2>/dev/null; do sleep 0.2; done
BACKUP="{APP}.old"
/bin/rm -rf "$BACKUP"
/bin/mv "{APP}" "$BACKUP"
if /bin/cp -R "{NEW}" "{APP}"; then
    /bin/rm -rf "$BACKUP"
    /usr/bin/nohup "{APP}/bin/tallowmere" >/dev/null 2>&1 </dev/null &
else
    /bin/rm -rf "{APP}"
    /bin/mv "$BACKUP" "{APP}"
    /usr/bin/nohup "{APP}/bin/tallowmere" >/dev/null 2>&1 </dev/null &
fi)";

} // namespace

QString doubleQuotedShellText(const QString& text)
{
    QString escaped;
    escaped.reserve(text.size());
    for (QChar c : text) {
        if (c == u'$' || c == u'`' || c == u'"' || c == u'\\')
            escaped.append(u'\\');
        escaped.append(c);
    }
    return escaped;
}

QString installScriptText(qint64 pid, const QString& app, const QString& newApp)
{
    const QString pidText = QString::number(pid);
    const QString appText = doubleQuotedShellText(app);
    const QString newText = doubleQuotedShellText(newApp);
    // One pass over the template, so a path that happens to contain "{NEW}" stays as it is.
    const QString pattern = QString::fromUtf8(scriptTemplate);
    QString script;
    qsizetype from = 0;
    while (from < pattern.size()) {
        const qsizetype open = pattern.indexOf(u'{', from);
        if (open < 0)
            break;
        script += QStringView(pattern).mid(from, open - from);
        const QStringView rest = QStringView(pattern).mid(open);
        if (rest.startsWith(u"{PID}"))
            script += pidText;
        else if (rest.startsWith(u"{APP}"))
            script += appText;
        else if (rest.startsWith(u"{NEW}"))
            script += newText;
        else {
            script += u'{';
            from = open + 1;
            continue;
        }
        from = open + 5;
    }
    script += QStringView(pattern).mid(from);
    return script;
}

QStringList installScriptLaunchArguments(const QString& scriptPath)
{
    return {QStringLiteral("-c"),
            QStringLiteral("nohup /bin/bash \"%1\" >/dev/null 2>&1 &").arg(doubleQuotedShellText(scriptPath))};
}

} // namespace tallowmere
