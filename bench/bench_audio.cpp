// Main-thread cost of one audio session refresh with 20 applications playing, and the proof
// that an idle program whose popover is closed sends the sound server nothing. Both run
// against a private PulseAudio server with a null output, started here.
#include "audio/AudioVolumeService.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <ctime>
#include <memory>
#include <vector>

using namespace tallowmere;
using namespace std::chrono_literals;

namespace {

constexpr int playingApps = 20;

double threadCpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

// Runs the event loop, sleeping between events, until `done` holds or the time is up.
void spinUntil(const std::function<bool()>& done, int timeoutMs = 10000)
{
    QElapsedTimer timer;
    timer.start();
    QTimer wake; // checks now and then even when nothing arrives
    wake.start(20);
    while (!done() && timer.elapsed() < timeoutMs)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

// A private server with a null output and `playingApps` applications playing silence.
struct PlayingMachine {
    QTemporaryDir dir;
    QProcess server;
    std::vector<std::unique_ptr<QProcess>> players;

    QByteArray address() const { return "unix:" + dir.filePath(QStringLiteral("native")).toUtf8(); }

    PlayingMachine()
    {
        QDir(dir.path()).mkpath(QStringLiteral("runtime"));
        QDir(dir.path()).mkpath(QStringLiteral("applications"));
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), dir.filePath(QStringLiteral("runtime")));
        env.insert(QStringLiteral("HOME"), dir.path());
        env.insert(QStringLiteral("PULSE_SERVER"), QString::fromUtf8(address()));
        server.setProcessEnvironment(env);
        server.setStandardErrorFile(QProcess::nullDevice());
        server.start(QStringLiteral("pulseaudio"),
                     {QStringLiteral("-n"), QStringLiteral("--daemonize=no"), QStringLiteral("--use-pid-file=no"),
                      QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--system=false"),
                      QStringLiteral("--load=module-native-protocol-unix auth-anonymous=1 socket=") + dir.filePath(QStringLiteral("native")),
                      QStringLiteral("--load=module-null-sink sink_name=out")});
        server.waitForStarted();
        spinUntil([&] { return QFile::exists(dir.filePath(QStringLiteral("native"))); });
        for (int i = 0; i < playingApps; ++i) {
            const QString id = QStringLiteral("org.example.App%1").arg(i);
            QFile entry(dir.filePath(QStringLiteral("applications/%1.desktop").arg(id)));
            entry.open(QIODevice::WriteOnly);
            entry.write(QStringLiteral("[Desktop Entry]\nType=Application\nName=App %1\nExec=app%1\n").arg(i).toUtf8());
            auto player = std::make_unique<QProcess>();
            player->setProcessEnvironment(env);
            player->start(QStringLiteral("pacat"), {QStringLiteral("--raw"), QStringLiteral("--rate=8000"),
                                                    QStringLiteral("--property=application.id=") + id,
                                                    QStringLiteral("/dev/zero")});
            players.push_back(std::move(player));
        }
    }

    ~PlayingMachine()
    {
        for (auto& player : players)
            player->kill();
        for (auto& player : players)
            player->waitForFinished();
        server.kill();
        server.waitForFinished();
    }

    std::unique_ptr<AudioVolumeService> service(PreferencesStore& preferences)
    {
        AudioEnvironment env;
        env.server.server = address();
        env.dataDirs = {dir.path()};
        env.period = 1h; // rounds are asked for by the benchmark
        return std::make_unique<AudioVolumeService>(preferences, env);
    }
};

void BM_AudioRefreshMainThread(benchmark::State& state)
{
    PlayingMachine machine;
    QTemporaryDir config;
    PreferencesStore preferences(config.filePath(QStringLiteral("preferences.json")));
    auto service = machine.service(preferences);
    spinUntil([&] { return service->isMixerAvailable(); });
    service->start();
    spinUntil([&] { return service->sessions().size() == playingApps; });

    double wallSeconds = 0;
    for (auto _ : state) {
        QEventLoop round;
        QElapsedTimer wall;
        wall.start();
        const double before = threadCpuSeconds();
        service->refresh([&] { round.quit(); });
        round.exec();
        state.SetIterationTime(threadCpuSeconds() - before);
        wallSeconds += wall.nsecsElapsed() / 1e9;
    }
    state.counters["sessions"] = double(service->sessions().size());
    state.counters["wall_ms_per_round"] = wallSeconds * 1000.0 / double(state.iterations());
}
BENCHMARK(BM_AudioRefreshMainThread)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(200);

void BM_AudioIdleWithPopoverClosed(benchmark::State& state)
{
    PlayingMachine machine;
    QTemporaryDir config;
    PreferencesStore preferences(config.filePath(QStringLiteral("preferences.json")));
    auto service = machine.service(preferences);
    spinUntil([&] { return service->isMixerAvailable(); });
    // The round that sees the streams already playing at start.
    spinUntil([&] { return service->mixer().streamCount() == playingApps; });

    for (auto _ : state) {
        const quint64 requestsBefore = service->client().requestCount();
        const double cpuBefore = threadCpuSeconds();
        QElapsedTimer idle;
        idle.start();
        QEventLoop quiet;
        QTimer::singleShot(5000, &quiet, &QEventLoop::quit);
        quiet.exec();
        state.counters["requests_in_5s"] = double(service->client().requestCount() - requestsBefore);
        state.counters["main_cpu_ms_in_5s"] = (threadCpuSeconds() - cpuBefore) * 1000.0;
        state.SetIterationTime(idle.nsecsElapsed() / 1e9);
    }
}
BENCHMARK(BM_AudioIdleWithPopoverClosed)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
