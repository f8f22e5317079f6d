#include "tests/audio/PulseServer.h"

#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <cmath>

namespace tallowmere::test {

namespace {
constexpr int toneRate = 8000;
}

PulseServer::PulseServer()
{
    QDir(dir_.path()).mkpath(QStringLiteral("runtime"));
    QDir(dir_.path()).mkpath(QStringLiteral("home"));
    // A minute of stereo 440 Hz at half scale.
    QByteArray tone;
    tone.reserve(toneRate * 60 * 4);
    for (int i = 0; i < toneRate * 60; ++i) {
        const auto sample = static_cast<qint16>(std::lround(0.5 * 32767 * std::sin(2 * M_PI * 440.0 * i / toneRate)));
        for (int channel = 0; channel < 2; ++channel)
            tone.append(reinterpret_cast<const char*>(&sample), 2);
    }
    writeFile(dir_.path(), QStringLiteral("tone.raw"), tone);
    start();
}

PulseServer::~PulseServer()
{
    kill();
}

QProcessEnvironment PulseServer::environment() const
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("PULSE_SERVER"), QString::fromUtf8(address()));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), path(QStringLiteral("runtime")));
    env.insert(QStringLiteral("HOME"), path(QStringLiteral("home")));
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    env.insert(QStringLiteral("PLAY"), playCommand());
    return env;
}

bool PulseServer::start()
{
    kill();
    daemon_ = std::make_unique<QProcess>();
    daemon_->setProcessEnvironment(environment());
    daemon_->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    daemon_->setStandardOutputFile(QProcess::nullDevice());
    // As root the server only warns; it runs in the per-user mode all the same.
    daemon_->start(QStringLiteral("pulseaudio"),
                   {QStringLiteral("-n"), QStringLiteral("--daemonize=no"), QStringLiteral("--use-pid-file=no"),
                    QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--system=false"), QStringLiteral("--log-level=0"),
                    QStringLiteral("--load=module-native-protocol-unix auth-anonymous=1 socket=") + path(QStringLiteral("native")),
                    QStringLiteral("--load=module-null-sink sink_name=out")});
    if (!daemon_->waitForStarted(5000))
        return false;
    return waitUntil([this] {
        QProcess info;
        info.setProcessEnvironment(environment());
        info.start(QStringLiteral("pactl"), {QStringLiteral("info")});
        return info.waitForFinished(2000) && info.exitCode() == 0;
    });
}

void PulseServer::kill()
{
    if (!daemon_)
        return;
    daemon_->kill();
    daemon_->waitForFinished(3000);
    daemon_.reset();
}

QString PulseServer::playCommand() const
{
    return QStringLiteral("pacat --raw --format=s16le --rate=%1 --channels=2 --latency-msec=50 %2").arg(toneRate).arg(path(QStringLiteral("tone.raw")));
}

Player PulseServer::play(const QStringList& properties) const
{
    QStringList arguments = playCommand().split(u' ');
    const QString program = arguments.takeFirst();
    for (const QString& property : properties)
        arguments << QStringLiteral("--property=") + property;
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment());
    process->start(program, arguments);
    process->waitForStarted(3000);
    return Player(std::move(process));
}

Player PulseServer::runApplication(const QString& program, const QString& script) const
{
    const QString copy = path(program);
    if (!QFile::exists(copy))
        QFile::copy(QStringLiteral("/bin/dash"), copy);
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment());
    process->start(copy, {QStringLiteral("-c"), script});
    process->waitForStarted(3000);
    return Player(std::move(process));
}

QHash<std::uint32_t, PulseServer::StreamVolume> PulseServer::streams() const
{
    QProcess pactl;
    pactl.setProcessEnvironment(environment());
    pactl.start(QStringLiteral("pactl"), {QStringLiteral("list"), QStringLiteral("sink-inputs")});
    pactl.waitForFinished(3000);
    QHash<std::uint32_t, StreamVolume> result;
    std::uint32_t current = 0;
    static const QRegularExpression channelVolume(QStringLiteral(":\\s*(\\d+) /"));
    for (const QString& line : QString::fromUtf8(pactl.readAllStandardOutput()).split(u'\n')) {
        const QString text = line.trimmed();
        if (text.startsWith(QLatin1StringView("Sink Input #"))) {
            current = text.mid(12).toUInt();
            result.insert(current, {});
        } else if (text.startsWith(QLatin1StringView("Volume:"))) {
            for (auto it = channelVolume.globalMatch(text); it.hasNext();)
                result[current].channelVolumes.append(it.next().captured(1).toUInt());
        } else if (text.startsWith(QLatin1StringView("application.process.id = "))) {
            result[current].pid = text.section(u'"', 1, 1).toInt();
        }
    }
    return result;
}

double PulseServer::level(int ms) const
{
    QProcess parec;
    parec.setProcessEnvironment(environment());
    parec.start(QStringLiteral("parec"), {QStringLiteral("-d"), QStringLiteral("out.monitor"), QStringLiteral("--raw"),
                                          QStringLiteral("--format=s16le"), QStringLiteral("--rate=8000"),
                                          QStringLiteral("--channels=1"), QStringLiteral("--latency-msec=20")});
    parec.waitForStarted(3000);
    // Measured from the first recorded bytes on; connecting takes a while.
    waitUntil([&] { return parec.bytesAvailable() > 0; });
    parec.readAllStandardOutput();
    QTest::qWait(ms);
    parec.terminate();
    parec.waitForFinished(3000);
    const QByteArray data = parec.readAllStandardOutput();
    // The first tenth of a second may still hold what was mixed before.
    const qsizetype skip = std::min<qsizetype>(data.size(), 2 * 800);
    const auto* samples = reinterpret_cast<const qint16*>(data.constData() + skip);
    const qsizetype count = (data.size() - skip) / 2;
    if (count == 0)
        return 0.0;
    double sum = 0.0;
    for (qsizetype i = 0; i < count; ++i)
        sum += double(samples[i]) * samples[i];
    return std::sqrt(sum / count) / 32768.0;
}

} // namespace tallowmere::test
