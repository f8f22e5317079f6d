#include "app/AppDelegate.h"
#include "app/AppServices.h"
#include "app/CommandLine.h"
#include "app/HeadlessSeam.h"
#include "app/SingleInstance.h"
#include "app/WindowSeam.h"
#include "core/Log.h"
#include "core/SignalQuit.h"
#include "history/HistoryCommand.h"
#include "history/NetworkUsageStore.h"
#include "server/SnapshotCapture.h"
#include "update/CheckUpdateCommand.h"

#include <QApplication>
#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

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

AppServices::Options servicesOptions(const RunOptions& run)
{
    AppServices::Options options;
    options.localServerOverride = run.server;
    options.recordingOverride = run.record;
    if (run.port)
        options.serverPort = *run.port;
    return options;
}

int runHeadless(int argc, char** argv, const RunOptions& run)
{
    QCoreApplication app(argc, argv);
    SignalQuit signalQuit;
    AppServices::Options options = servicesOptions(run);
    options.hasMenuBar = false;
    AppServices::setSharedOptions(options);
    int result = 0;
    {
        HeadlessSeam seam;
        AppDelegate delegate(seam);
        QObject::connect(&delegate, &AppDelegate::launched, [] {
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
        delegate.applicationDidFinishLaunching();
        result = app.exec();
    }
    AppServices::destroyShared();
    return result;
}

int runSnapshot(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    // The container is built but not launched: nothing but the snapshot's own sampling runs.
    AppServices services;
    const QByteArray document = captureSnapshot(
        {&services.cpuService(), &services.memoryService(), &services.diskService(), &services.networkService()});
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

int runWithWindow(int argc, char** argv, const RunOptions& run)
{
    QApplication app(argc, argv);
    // The lifecycle decides what closing the last window means (see AppDelegate).
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setApplicationDisplayName(QStringLiteral("Tallowmere"));

    SingleInstance instance;
    if (instance.handOverToRunningInstance()) {
        logInfo(QStringLiteral("already running; asked the running copy to show its window"));
        return 0;
    }
    QString listenError;
    if (!instance.listen(&listenError))
        logWarning(QStringLiteral("cannot watch for a second start (%1); carrying on").arg(listenError));

    SignalQuit signalQuit;
    AppServices::setSharedOptions(servicesOptions(run));
    int result = 0;
    {
        AppDelegate* delegatePointer = nullptr;
        WindowSeam seam([&delegatePointer] {
            if (delegatePointer)
                delegatePointer->windowWillClose();
        });
        AppDelegate delegate(seam);
        delegatePointer = &delegate;
        QObject::connect(&instance, &SingleInstance::reopenRequested, &delegate,
                         [&] { delegate.applicationShouldHandleReopen(seam.hasVisibleWindow()); });
        delegate.applicationDidFinishLaunching();
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
