#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdint>
#include <memory>

namespace tallowmere::test {

// A child process that is killed when this goes.
class Player {
public:
    explicit Player(std::unique_ptr<QProcess> process) : process_(std::move(process)) {}
    Player(Player&&) = default;
    ~Player()
    {
        if (process_) {
            process_->kill();
            process_->waitForFinished(3000);
        }
    }
    int pid() const { return static_cast<int>(process_->processId()); }

private:
    std::unique_ptr<QProcess> process_;
};

// A private PulseAudio server for one test: its own runtime folder and socket, one null
// output named "out", never exiting when idle. Players are pacat processes playing a steady
// 440 Hz tone at half scale.
class PulseServer {
public:
    PulseServer();
    ~PulseServer();
    PulseServer(const PulseServer&) = delete;
    PulseServer& operator=(const PulseServer&) = delete;

    // Starts (again) on the same socket and waits until it answers.
    bool start();
    void kill();

    QByteArray address() const { return "unix:" + dir_.filePath(QStringLiteral("native")).toUtf8(); }
    QString path(const QString& name) const { return dir_.filePath(name); }

    // A pacat playing the tone with these stream properties ("application.id=...").
    Player play(const QStringList& properties) const;
    // `program` (a copy of the shell, so it has a name of its own) running `script`, in which
    // $PLAY stands for a pacat command line playing the tone.
    Player runApplication(const QString& program, const QString& script) const;

    struct StreamVolume {
        int pid = 0;
        QList<std::uint32_t> channelVolumes;
    };
    // The playing streams as pactl reports them, by index.
    QHash<std::uint32_t, StreamVolume> streams() const;
    // Root-mean-square amplitude (0...1) of what the null output plays, over `ms`.
    double level(int ms = 600) const;

private:
    QProcessEnvironment environment() const;
    QString playCommand() const;

    QTemporaryDir dir_;
    std::unique_ptr<QProcess> daemon_;
};

} // namespace tallowmere::test
