#include "power/WakeInstaller.h"

#include "core/ChildProcess.h"
#include "core/Log.h"
#include "power/WakeUnits.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <pwd.h>
#include <unistd.h>

namespace tallowmere {

namespace {

// pkexec's own statuses: the password dialog was dismissed, or authorisation failed.
constexpr int pkexecDismissed = 126;
constexpr int pkexecRefused = 127;

// polkit may keep its password dialog open as long as the user likes.
constexpr int authorisationTimeoutMs = 10 * 60 * 1000;

QString loginName()
{
    const passwd* entry = getpwuid(getuid());
    return entry ? QString::fromLocal8Bit(entry->pw_name) : QString();
}

QString defaultHelper()
{
    // Beside the program in a build tree or a relocatable folder, else where `make install` puts it.
    const QString dir = QCoreApplication::applicationDirPath();
    const QString beside = dir + QStringLiteral("/tallowmere-wake-helper");
    if (QFileInfo(beside).isExecutable())
        return beside;
    // Clean, because pkexec matches the polkit action by the exact path it is given.
    return QDir::cleanPath(dir + QStringLiteral("/../libexec/tallowmere/tallowmere-wake-helper"));
}

bool installedAsScheduled(const WakeTools& tools, int hour, int minute)
{
    const std::string user = tools.user.toStdString();
    const QString timer = QString::fromStdString(wake::timerName(user));
    const QString dir = tools.systemUnitDirectory + u'/';
    QFile file(dir + timer);
    return file.open(QIODevice::ReadOnly)
        && file.read(4096) == QByteArray::fromStdString(wake::timerUnit(user, {hour, minute}))
        && QFileInfo::exists(dir + QStringLiteral("timers.target.wants/") + timer);
}

QString problemOf(const ChildResult& result)
{
    if (!result.started)
        return QStringLiteral("Administrator rights cannot be asked for: pkexec is not installed.");
    switch (result.exitCode) {
    case pkexecDismissed: return QStringLiteral("The administrator password was not given.");
    case pkexecRefused: return QStringLiteral("Administrator rights were refused.");
    default: return QStringLiteral("The system did not accept the wake timer.");
    }
}

} // namespace

WakeTools WakeTools::ofRunningProgram()
{
    WakeTools tools;
    tools.helper = defaultHelper();
    tools.user = loginName();
    tools.systemUnitDirectory = QString::fromUtf8(wake::systemUnitDirectory.data(), wake::systemUnitDirectory.size());
    tools.oldUserUnitDirectory =
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QStringLiteral("/systemd/user");
    return tools;
}

WakeOutcome installedWake(const WakeTools& tools, bool enabled, int hour, int minute)
{
    if (!enabled) {
        const QString timer = QString::fromStdString(wake::timerName(tools.user.toStdString()));
        if (!QFileInfo::exists(tools.systemUnitDirectory + u'/' + timer))
            return {};
        return {true, QStringLiteral("A wake timer is still set although the schedule is off.")};
    }
    if (installedAsScheduled(tools, hour, minute))
        return {true, {}};
    return {false, QStringLiteral("The wake timer is not installed.")};
}

WakeOutcome applyWake(const WakeTools& tools, bool enabled, int hour, int minute)
{
    if (!wake::isValidUserName(tools.user.toStdString()))
        return {false, QStringLiteral("Your login name cannot be used for a wake timer.")};
    const WakeOutcome now = installedWake(tools, enabled, hour, minute);
    if (now.problem.isEmpty())
        return now;
    if (!QFileInfo(tools.helper).isExecutable())
        return {now.installed, QStringLiteral("The wake helper is not installed.")};

    QStringList arguments{tools.helper};
    if (enabled)
        arguments << QStringLiteral("install") << tools.user
                  << QString::fromStdString(wake::formatClockTime({hour, minute}));
    else
        arguments << QStringLiteral("remove") << tools.user;
    const ChildResult result = runChild(tools.pkexec, arguments, authorisationTimeoutMs);
    if (result.started && result.exitCode == 0)
        return {enabled, {}};
    logWarning(QStringLiteral("wake helper: %1 gave status %2").arg(tools.pkexec).arg(result.exitCode));
    return {now.installed, problemOf(result)};
}

void removeOldUserTimer(const WakeTools& tools)
{
    const QString timer = tools.oldUserUnitDirectory + QStringLiteral("/tallowmere-wake.timer");
    if (!QFileInfo::exists(timer))
        return;
    const QString user = QStringLiteral("--user");
    runChild(tools.systemctl, {user, QStringLiteral("disable"), QStringLiteral("--now"), QStringLiteral("tallowmere-wake.timer")});
    QFile::remove(timer);
    QFile::remove(tools.oldUserUnitDirectory + QStringLiteral("/tallowmere-wake.service"));
    runChild(tools.systemctl, {user, QStringLiteral("daemon-reload")});
}

} // namespace tallowmere
