#pragma once

#include <QProcess>
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
// output named "out", never exiting when idle. $PLAY in the environment of the programs it
// runs is a pacat command line playing a steady 440 Hz tone at half scale.
class PulseServer {
public:
    PulseServer();
    ~PulseServer() { kill(); }
    PulseServer(const PulseServer&) = delete;
    PulseServer& operator=(const PulseServer&) = delete;

    // Starts (again) on the same socket and waits until it answers.
    bool start();
    void kill() { daemon_.reset(); }

    QByteArray address() const { return "unix:" + path(QStringLiteral("native")).toUtf8(); }
    QString path(const QString& name) const { return dir_.filePath(name); }

    // Plays the tone with one stream property, e.g. "application.id=org.example.Radio".
    Player play(const QString& property) const;
    // A copy of the shell named `program` (so it has a name of its own) running `script`.
    Player runApplication(const QString& program, const QString& script) const;

    // How many playing streams have every channel at this linear gain, as pactl reports them.
    int streamsAt(double gain) const;
    // Root-mean-square amplitude (0...1) of what the null output plays.
    double level() const;

private:
    QProcessEnvironment environment() const;
    Player run(const QString& program, const QStringList& arguments) const;
    QByteArray runTool(const QString& program, const QStringList& arguments, int ms) const;

    QTemporaryDir dir_;
    std::unique_ptr<Player> daemon_;
};

} // namespace tallowmere::test
