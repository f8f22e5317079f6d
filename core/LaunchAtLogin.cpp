#include "core/LaunchAtLogin.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

namespace tallowmere {

LaunchAtLogin::LaunchAtLogin(QString autostartDir, QString executable)
    : autostartDir_(std::move(autostartDir))
    , executable_(std::move(executable))
{
}

LaunchAtLogin LaunchAtLogin::forCurrentUser()
{
    return LaunchAtLogin(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
                             + QStringLiteral("/autostart"),
                         QCoreApplication::applicationFilePath());
}

QString LaunchAtLogin::entryPath() const
{
    return autostartDir_ + QStringLiteral("/tallowmere.desktop");
}

LaunchAtLogin::Status LaunchAtLogin::status() const
{
    QFile file(entryPath());
    if (!file.open(QIODevice::ReadOnly))
        return Status::notRegistered;
    // A desktop environment switches an entry off by marking it hidden rather than deleting it.
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (line.startsWith("Hidden=") && line.mid(7).trimmed().toLower() == "true")
            return Status::notRegistered;
    }
    return Status::enabled;
}

namespace {

// Exec= lines use their own quoting: a path with blanks goes in double quotes, and the
// characters that stay special inside them are escaped.
QString quotedExec(const QString& path)
{
    QString escaped;
    for (QChar c : path) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            escaped += u'\\';
        escaped += c;
    }
    return u'"' + escaped + u'"';
}

} // namespace

bool LaunchAtLogin::registerItem(QString* error)
{
    if (!QDir().mkpath(autostartDir_)) {
        if (error)
            *error = QStringLiteral("cannot create %1").arg(autostartDir_);
        return false;
    }
    QSaveFile file(entryPath());
    if (file.open(QIODevice::WriteOnly)) {
        const QString entry = QStringLiteral("[Desktop Entry]\n"
                                             "Type=Application\n"
                                             "Name=Tallowmere\n"
                                             "Comment=System monitor\n"
                                             "Exec=%1\n"
                                             "Icon=utilities-system-monitor\n"
                                             "Terminal=false\n"
                                             "X-GNOME-Autostart-enabled=true\n")
                                  .arg(quotedExec(executable_));
        file.write(entry.toUtf8());
        if (file.commit())
            return true;
    }
    if (error)
        *error = file.errorString();
    return false;
}

bool LaunchAtLogin::unregisterItem(QString* error)
{
    QFile file(entryPath());
    if (!file.exists() || file.remove())
        return true;
    if (error)
        *error = file.errorString();
    return false;
}

} // namespace tallowmere
