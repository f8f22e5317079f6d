#include "app/AppLifecycle.h"
#include "app/AppServices.h"
#include "app/CommandLine.h"
#include "app/HeadlessSeam.h"
#include "app/PictureCommand.h"
#include "app/SingleInstance.h"
#include "app/WindowSeam.h"
#include "core/Log.h"
#include "core/SignalQuit.h"
#include "app/SnapshotCapture.h"
#include "history/HistoryCommand.h"
#include "history/NetworkUsageStore.h"
#include "update/CheckUpdateCommand.h"

#include <QApplication>
#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>
#include <optional>

using namespace tallowmere;

namespace {

QStringList argumentList(int argc, char** argv)
{
    QStringList list;
    for (int i = 0; i < argc; ++i)
        list << QString::fromLocal8Bit(argv[i]);
    return list;
}

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        || qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

AppEnvironment servicesEnvironment(const RunOptions& run)
{
    AppEnvironment environment = AppEnvironment::forThisMachine();
    environment.localServerOverride = run.server;
    environment.recordingOverride = run.record;
    if (run.port)
        environment.serverPort = *run.port;
    return environment;
}

// Claims the one running copy for this user. Returns the exit status when this start must end
// here: a windowed start hands the running copy a reopen, a headless one refuses to run twice.
std::optional<int> claimInstance(SingleInstance& instance, bool windowed)
{
    QString error;
    switch (instance.claim(&error)) {
    case SingleInstance::Claim::ours:
        return std::nullopt;
    case SingleInstance::Claim::unavailable:
        logWarning(QStringLiteral("cannot make sure this is the only running copy (%1); carrying on").arg(error));
        return std::nullopt;
    case SingleInstance::Claim::anotherRuns:
        break;
    }
    if (windowed && instance.handOverReopen()) {
        logInfo(QStringLiteral("already running; asked the running copy to show its window"));
        return 0;
    }
    logWarning(QStringLiteral("another copy is already running for this user; this one exits"));
    return 1;
}

int runHeadless(int argc, char** argv, const RunOptions& run)
{
    QCoreApplication app(argc, argv);
    SingleInstance instance;
    if (const std::optional<int> status = claimInstance(instance, false))
        return *status;
    SignalQuit signalQuit;
    AppEnvironment environment = servicesEnvironment(run);
    environment.hasMenuBar = false;
    AppServices::setSharedEnvironment(environment);
    int result = 0;
    {
        HeadlessSeam seam;
        AppLifecycle lifecycle(seam);
        QObject::connect(&lifecycle, &AppLifecycle::launched, [] {
            AppServices& services = AppServices::shared();
            if (services.effectiveLocalServerEnabled() && !services.statsServer().isRunning())
                logWarning(QStringLiteral("the statistics server did not start: %1")
                               .arg(services.statsServer().lastError().value_or(QStringLiteral("unknown error"))));
            logInfo(QStringLiteral("running headless; statistics server %1, network recording %2; stop with Ctrl+C")
                        .arg(services.statsServer().isRunning()
                                 ? QStringLiteral("on (%1)").arg(services.statsServer().endpointAddress())
                                 : QStringLiteral("off"),
                             services.effectiveNetworkRecordingEnabled() ? QStringLiteral("on") : QStringLiteral("off")));
        });
        lifecycle.onLaunchFinished();
        result = app.exec();
    }
    AppServices::destroyShared();
    return result;
}

int runSnapshot(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    // The container is built but not launched: nothing but the snapshot's own sampling runs.
    AppServices services(AppEnvironment::forThisMachine());
    const QByteArray document = captureSnapshot(services.snapshotGatherer());
    std::fwrite(document.constData(), 1, static_cast<size_t>(document.size()), stdout);
    std::fputc('\n', stdout);
    return 0;
}

int runHistory(int argc, char** argv, const QString& range)
{
    QCoreApplication app(argc, argv);
    const HistoryCommandResult result = runHistoryCommand(range, NetworkUsageStore::defaultDirectory());
    if (result.status != 0)
        std::fprintf(stderr, "tallowmere: %s\n", qPrintable(result.error));
    else
        std::printf("%s\n", result.json.constData());
    return result.status;
}

int runCheckUpdate(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    return runCheckUpdateCommand(out);
}

int runPictures(int argc, char** argv, const RunOptions& run)
{
    // Pictures need no display: they are drawn off screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int result = runPictureCommand(run.picturesDirectory);
    AppServices::destroyShared();
    return result;
}

int runWithWindow(int argc, char** argv, const RunOptions& run)
{
    QApplication app(argc, argv);
    // The lifecycle decides what closing the last window means (see AppLifecycle).
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setApplicationDisplayName(QStringLiteral("Tallowmere"));

    SingleInstance instance;
    if (const std::optional<int> status = claimInstance(instance, true))
        return *status;

    SignalQuit signalQuit;
    AppServices::setSharedEnvironment(servicesEnvironment(run));
    int result = 0;
    {
        AppLifecycle* lifecyclePointer = nullptr;
        WindowSeam seam([&lifecyclePointer] {
            if (lifecyclePointer)
                lifecyclePointer->onWindowClosed();
        });
        AppLifecycle lifecycle(seam);
        lifecyclePointer = &lifecycle;
        QObject::connect(&instance, &SingleInstance::reopenRequested, &lifecycle, &AppLifecycle::onReopen);
        lifecycle.onLaunchFinished();
        result = app.exec();
    }
    AppServices::destroyShared();
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    const CommandLineResult parsed = parseCommandLine(argumentList(argc, argv));
    if (!parsed.options) {
        std::fprintf(stderr, "tallowmere: %s\n", qPrintable(parsed.error));
        return 2;
    }
    RunOptions run = *parsed.options;
    switch (run.mode) {
    case RunOptions::Mode::help:
        std::fputs(qPrintable(commandLineHelp()), stdout);
        return 0;
    case RunOptions::Mode::headless:
        return runHeadless(argc, argv, run);
    case RunOptions::Mode::snapshot:
        return runSnapshot(argc, argv);
    case RunOptions::Mode::checkUpdate:
        return runCheckUpdate(argc, argv);
    case RunOptions::Mode::pictures:
        return runPictures(argc, argv, run);
    case RunOptions::Mode::history:
        return runHistory(argc, argv, run.historyRange);
    case RunOptions::Mode::gui:
        if (!hasDisplay()) {
            std::fputs("[Tallowmere] no display found (neither DISPLAY nor WAYLAND_DISPLAY is set); running headless\n",
                       stderr);
            return runHeadless(argc, argv, run);
        }
        return runWithWindow(argc, argv, run);
    }
    return 0;
}
