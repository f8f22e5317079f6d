#include "power/PowerScheduleUnits.h"

#include "core/ChildProcess.h"
#include "core/Log.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

namespace tallowmere {

namespace {

const QString systemctl = QStringLiteral("systemctl");

bool writeUnit(const QString& path, const QByteArray& text)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
        logWarning(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
        return false;
    }
    return true;
}

} // namespace

CommandRunner childProcessRunner()
{
    return [](const QString& program, const QStringList& arguments) {
        const ChildResult result = runChild(program, arguments);
        return result.started ? result.exitCode : -1;
    };
}

QByteArray wakeTimerUnit(int hour, int minute)
{
    return QByteArrayLiteral("[Unit]\n"
                             "Description=Tallowmere daily wake\n"
                             "\n"
                             "[Timer]\n")
        + QByteArray("OnCalendar=*-*-* ") + QString::asprintf("%02d:%02d:00", hour, minute).toLatin1() + '\n'
        + QByteArrayLiteral("WakeSystem=true\n"
                            "Unit=tallowmere-wake.service\n"
                            "\n"
                            "[Install]\n"
                            "WantedBy=timers.target\n");
}

QByteArray wakeServiceUnit()
{
    // The wake itself is the point; the service only gives the timer something to start.
    return QByteArrayLiteral("[Unit]\n"
                             "Description=Tallowmere daily wake\n"
                             "\n"
                             "[Service]\n"
                             "Type=oneshot\n"
                             "ExecStart=/bin/true\n");
}

QString defaultUserUnitDirectory()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QStringLiteral("/systemd/user");
}

void applyWakeSchedule(const QString& unitDirectory, bool enabled, int hour, int minute, const CommandRunner& run)
{
    const QString timerPath = unitDirectory + u'/' + wakeTimerName;
    const QString servicePath = unitDirectory + u'/' + wakeServiceName;
    const QString userFlag = QStringLiteral("--user");
    if (enabled) {
        QDir().mkpath(unitDirectory);
        writeUnit(servicePath, wakeServiceUnit());
        writeUnit(timerPath, wakeTimerUnit(hour, minute));
        // The reload also moves an already running timer to the new time.
        run(systemctl, {userFlag, QStringLiteral("daemon-reload")});
        run(systemctl, {userFlag, QStringLiteral("enable"), QStringLiteral("--now"), QString(wakeTimerName)});
        return;
    }
    run(systemctl, {userFlag, QStringLiteral("disable"), QStringLiteral("--now"), QString(wakeTimerName)});
    QFile::remove(timerPath);
    QFile::remove(servicePath);
    run(systemctl, {userFlag, QStringLiteral("daemon-reload")});
}

} // namespace tallowmere
