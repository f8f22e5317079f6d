#include "tests/audio/PulseServer.h"

#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <pulse/volume.h>

#include <cmath>

namespace tallowmere::test {

namespace {
constexpr int toneRate = 8000;
const QString playCommand = QStringLiteral("pacat --raw --format=s16le --rate=8000 --channels=2 --latency-msec=50 ");
} // namespace

PulseServer::PulseServer()
{
    QDir(dir_.path()).mkpath(QStringLiteral("runtime"));
    QByteArray tone; // a minute of stereo 440 Hz at half scale
    for (int i = 0; i < toneRate * 60; ++i) {
        const auto sample = static_cast<qint16>(std::lround(0.5 * 32767 * std::sin(2 * M_PI * 440.0 * i / toneRate)));
        tone.append(reinterpret_cast<const char*>(&sample), 2).append(reinterpret_cast<const char*>(&sample), 2);
    }
    writeFile(dir_.path(), QStringLiteral("tone.raw"), tone);
    start();
}

bool PulseServer::start()
{
    // As root the server only warns; it runs in the per-user mode all the same.
    daemon_ = std::make_unique<Player>(run(QStringLiteral("pulseaudio"), {
        QStringLiteral("-n"), QStringLiteral("--daemonize=no"), QStringLiteral("--use-pid-file=no"),
        QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--system=false"), QStringLiteral("--log-level=0"),
        QStringLiteral("--load=module-native-protocol-unix auth-anonymous=1 socket=") + path(QStringLiteral("native")),
        QStringLiteral("--load=module-null-sink sink_name=out")}));
    return waitUntil([this] { return !runTool(QStringLiteral("pactl"), {QStringLiteral("info")}, 0).isEmpty(); });
}

QProcessEnvironment PulseServer::environment() const
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("PULSE_SERVER"), QString::fromUtf8(address()));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), path(QStringLiteral("runtime")));
    env.insert(QStringLiteral("HOME"), path(QStringLiteral("home")));
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    env.insert(QStringLiteral("PLAY"), playCommand + path(QStringLiteral("tone.raw")));
    return env;
}

Player PulseServer::run(const QString& program, const QStringList& arguments) const
{
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->start(program, arguments);
    process->waitForStarted(3000);
    return Player(std::move(process));
}

QByteArray PulseServer::runTool(const QString& program, const QStringList& arguments, int ms) const
{
    QProcess process;
    process.setProcessEnvironment(environment());
    process.start(program, arguments);
    // Recorders run until stopped; they start counting from their first bytes.
    if (ms > 0 && waitUntil([&] { return process.bytesAvailable() > 0; }, 3000)) {
        process.readAllStandardOutput();
        QTest::qWait(ms);
        process.terminate();
    }
    process.waitForFinished(3000);
    return process.readAllStandardOutput();
}

Player PulseServer::play(const QString& property) const
{
    const QStringList command = (playCommand + path(QStringLiteral("tone.raw"))).split(u' ', Qt::SkipEmptyParts);
    return run(command.first(), command.mid(1) << QStringLiteral("--property=") + property);
}

Player PulseServer::runApplication(const QString& program, const QString& script) const
{
    QFile::copy(QStringLiteral("/bin/dash"), path(program));
    return run(path(program), {QStringLiteral("-c"), script});
}

int PulseServer::streamsAt(double gain) const
{
    static const QRegularExpression channel(QStringLiteral(":\\s*(\\d+) /"));
    const QString wanted = QString::number(pa_sw_volume_from_linear(gain));
    int count = 0;
    for (const QByteArray& line : runTool(QStringLiteral("pactl"), {QStringLiteral("list"), QStringLiteral("sink-inputs")}, 0).split('\n')) {
        if (!line.trimmed().startsWith("Volume:"))
            continue;
        bool all = true;
        for (auto it = channel.globalMatch(QString::fromUtf8(line)); it.hasNext();)
            all = it.next().captured(1) == wanted && all;
        count += all;
    }
    return count;
}

double PulseServer::level() const
{
    const QByteArray data = runTool(QStringLiteral("parec"), {QStringLiteral("-d"), QStringLiteral("out.monitor"),
        QStringLiteral("--raw"), QStringLiteral("--format=s16le"), QStringLiteral("--rate=8000"),
        QStringLiteral("--channels=1"), QStringLiteral("--latency-msec=20")}, 400);
    // The first tenth of a second may still hold what was mixed before.
    const auto* samples = reinterpret_cast<const qint16*>(data.constData());
    double sum = 0.0;
    qsizetype count = 0;
    for (qsizetype i = toneRate / 10; i < data.size() / 2; ++i, ++count)
        sum += double(samples[i]) * samples[i];
    return count ? std::sqrt(sum / double(count)) / 32768.0 : 0.0;
}

} // namespace tallowmere::test
