#pragma once

#include "audio/AudioMixerEngine.h"
#include "audio/AudioOverrides.h"
#include "audio/AudioSession.h"
#include "audio/DesktopEntryIndex.h"
#include "audio/PulseClient.h"
#include "core/LoopTask.h"

#include <QDBusConnection>
#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace tallowmere {

// Where the service finds the sound server, the media players, processes and applications.
struct AudioEnvironment {
    PulseClient::Options server;
    QDBusConnection sessionBus = QDBusConnection::sessionBus();
    QString procRoot = QStringLiteral("/proc");
    // Folders holding applications/*.desktop; empty: the XDG data folders.
    QStringList dataDirs;
    std::chrono::milliseconds period{1500};
    // The program's own desktop id; its streams are never listed.
    QString ownId = QStringLiteral("tallowmere");
};

// The applications playing sound now, each with a volume and a mute switch the user's choice
// of which is remembered across launches. The list is refreshed every 1.5 s while the
// popover's audio section is on screen; independently, every stream that appears gets its
// application's stored volume at once, and volumes stay applied when the section closes.
class AudioVolumeService : public QObject {
    Q_OBJECT
public:
    AudioVolumeService(PreferencesStore& preferences, AudioEnvironment environment = {}, QObject* parent = nullptr);
    ~AudioVolumeService() override;

    const QList<AudioAppSession>& sessions() const { return sessions_; }
    // True while a sound server answers.
    bool isMixerAvailable() const { return isMixerAvailable_; }
    bool isPolling() const { return monitorTask_ != nullptr; }

    void start();
    void stop();
    // Asks for one round now; the result is applied when the server has answered, then
    // `applied` runs.
    void refresh(std::function<void()> applied = {});

    void setVolume(const QString& id, double percent);
    void toggleMute(const QString& id);

    AudioMixerEngine& mixer() { return mixer_; }
    PulseClient& client() { return *client_; }

signals:
    void sessionsChanged();
    void isMixerAvailableChanged();

private:
    struct Detection;
    void requestRound(LoopTask::Done done = {});
    void detect(const PulseSnapshot& snapshot);
    void applyRound(quint64 round, const Detection& detection);
    QList<AudioAppSession> sessionsFor(const QList<AudioPlayingApp>& apps, const PulseSnapshot& snapshot) const;
    void setSessions(QList<AudioAppSession> sessions);
    void onConnectedChanged(bool connected);
    void startPolling();

    AudioOverrides overrides_;
    AudioEnvironment environment_;
    std::unique_ptr<PulseClient> client_;
    AudioMixerEngine mixer_;
    std::unique_ptr<LoopTask> monitorTask_;
    std::shared_ptr<const DesktopEntryIndex> entries_;
    std::vector<LoopTask::Done> waiting_;
    QList<AudioAppSession> sessions_;
    bool isMixerAvailable_ = false;
    bool wanted_ = false;
    quint64 roundsStarted_ = 0;
    quint64 roundsApplied_ = 0;
};

} // namespace tallowmere
