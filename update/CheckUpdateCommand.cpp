#include "update/CheckUpdateCommand.h"

#include "core/BuildInfo.h"
#include "update/UpdateService.h"

#include <QEventLoop>
#include <QTextStream>

namespace tallowmere {

namespace {

int report(QTextStream& out, const UpdateState& state, qint64 runningBuild)
{
    switch (state.kind()) {
    case UpdateState::Kind::upToDate:
        out << "You're up to date. (version " << build::version << ", build " << runningBuild << ")\n";
        return checkUpdateExit::upToDate;
    case UpdateState::Kind::available: {
        const AvailableUpdate& update = *state.availableUpdate();
        const QString name = update.version.isEmpty() ? QStringLiteral("build %1").arg(update.build)
                                                      : QStringLiteral("%1 (build %2)").arg(update.version).arg(update.build);
        out << "Update Available: " << name << '\n';
        out << "Download: " << update.downloadURL.toString() << '\n';
        if (!update.releaseNotes.isEmpty())
            out << '\n' << update.releaseNotes << '\n';
        return checkUpdateExit::available;
    }
    case UpdateState::Kind::failed:
        out << state.failureMessage() << '\n';
        return checkUpdateExit::failed;
    default:
        out << "The update check did not finish.\n";
        return checkUpdateExit::failed;
    }
}

} // namespace

int runCheckUpdateCommand(QTextStream& out)
{
    return runCheckUpdateCommand(out, UpdateEnvironment::ofRunningProgram());
}

int runCheckUpdateCommand(QTextStream& out, UpdateEnvironment environment)
{
    const qint64 runningBuild = environment.runningBuild;
    UpdateService service(std::move(environment));
    QEventLoop loop;
    QObject::connect(&service, &UpdateService::stateChanged, &loop, [&] {
        if (!service.state().is(UpdateState::Kind::checking))
            loop.quit();
    });
    service.checkForUpdates(true);
    if (service.state().is(UpdateState::Kind::checking))
        loop.exec();
    const int code = report(out, service.state(), runningBuild);
    out.flush();
    return code;
}

} // namespace tallowmere
