#include "audio/AudioVolumeService.h"

#include "audio/AudioDetection.h"
#include "audio/MprisTracks.h"
#include "audio/ProcessInfo.h"
#include "core/Detached.h"
#include "core/Property.h"

#include <QCoreApplication>

#include <cmath>

namespace tallowmere {

struct AudioVolumeService::Detection {
    PulseSnapshot snapshot;
    QList<AudioPlayingApp> apps;
    std::shared_ptr<const DesktopEntryIndex> entries;
};

AudioVolumeService::AudioVolumeService(PreferencesStore& preferences, AudioEnvironment environment, QObject* parent)
    : QObject(parent)
    , overrides_(preferences)
    , environment_(std::move(environment))
    , client_(std::make_unique<PulseClient>(environment_.server))
    , mixer_([client = client_.get()](std::uint32_t index, int channels, float gain) {
        client->setStreamVolume(index, channels, gain);
    })
{
    connect(client_.get(), &PulseClient::connectedChanged, this, &AudioVolumeService::onConnectedChanged);
    connect(client_.get(), &PulseClient::snapshotReady, this, &AudioVolumeService::detect);
    // A stream that appears gets its stored volume at once, whether or not anyone looks.
    connect(client_.get(), &PulseClient::streamsAppeared, this, [this] { requestRound(); });
}

AudioVolumeService::~AudioVolumeService() = default;

void AudioVolumeService::start()
{
    wanted_ = true;
    if (monitorTask_)
        return;
    if (!isMixerAvailable_) {
        setSessions({});
        return;
    }
    startPolling();
}

void AudioVolumeService::stop()
{
    wanted_ = false;
    monitorTask_.reset();
}

void AudioVolumeService::refresh(std::function<void()> applied)
{
    requestRound(std::move(applied));
}

void AudioVolumeService::startPolling()
{
    monitorTask_ = LoopTask::startAsync(environment_.period, [this](LoopTask::Done done) { requestRound(std::move(done)); });
}

void AudioVolumeService::onConnectedChanged(bool connected)
{
    assignProperty(this, isMixerAvailable_, connected, &AudioVolumeService::isMixerAvailableChanged);
    if (!connected) {
        monitorTask_.reset();
        setSessions({});
        return;
    }
    // The streams already playing count as appearing now.
    if (wanted_ && !monitorTask_)
        startPolling();
    else
        requestRound();
}

void AudioVolumeService::requestRound(LoopTask::Done done)
{
    if (done)
        waiting_.push_back(std::move(done));
    client_->requestSnapshot();
}

void AudioVolumeService::detect(const PulseSnapshot& snapshot)
{
    const quint64 round = ++roundsStarted_;
    // Reading processes, desktop entries and media players runs off the main thread.
    auto work = [snapshot, entries = entries_, env = environment_, withTracks = isPolling(),
                 ownPid = static_cast<int>(QCoreApplication::applicationPid())]() mutable {
        if (!entries)
            entries = std::make_shared<const DesktopEntryIndex>(
                DesktopEntryIndex::scan(env.dataDirs.isEmpty() ? DesktopEntryIndex::dataDirs() : env.dataDirs));
        MprisTracks tracks(env.sessionBus);
        audio::DetectionContext context;
        context.ownPid = ownPid;
        context.ownId = env.ownId;
        context.process = [root = env.procRoot](int pid) { return readProcessInfo(root, pid); };
        context.entries = entries.get();
        if (withTracks && !snapshot.playback.isEmpty())
            context.nowPlaying = [&tracks](int pid) { return tracks.trackOf(pid); };
        Detection detection{snapshot, audio::detectPlayingApps(snapshot, context), entries};
        return detection;
    };
    runDetached(this, std::move(work), [this, round](const Detection& detection) { applyRound(round, detection); });
}

void AudioVolumeService::applyRound(quint64 round, const Detection& detection)
{
    entries_ = detection.entries;
    if (round > roundsApplied_) {
        roundsApplied_ = round;
        if (isPolling())
            setSessions(sessionsFor(detection.apps, detection.snapshot));
        mixer_.update(detection.apps, detection.snapshot, [this](const QString& id) { return overrides_.gain(id); });
    }
    std::vector<LoopTask::Done> waiting;
    waiting.swap(waiting_);
    for (const LoopTask::Done& done : waiting)
        done();
}

QList<AudioAppSession> AudioVolumeService::sessionsFor(const QList<AudioPlayingApp>& apps,
                                                        const PulseSnapshot& snapshot) const
{
    QList<AudioAppSession> sessions;
    sessions.reserve(apps.size());
    for (const AudioPlayingApp& app : apps) {
        const std::optional<double> stored = overrides_.volume(app.id);
        const bool muted = overrides_.muted(app.id).value_or(false);
        double volume = stored.value_or(100.0);
        // A stream already handled shows its real volume, which may have been set elsewhere.
        const std::uint32_t first = app.objectIDs.constFirst();
        if (!muted && (mixer_.isHandled(first) || !stored)) {
            for (const PlaybackStream& stream : snapshot.playback) {
                if (stream.index == first)
                    volume = AudioOverrides::clampPercent(std::round(stream.volume * 1000.0) / 10.0);
            }
        }
        sessions.append({app.id, app.pid, app.name, app.subtitle, app.icon, volume, muted});
    }
    return sessions;
}

void AudioVolumeService::setSessions(QList<AudioAppSession> sessions)
{
    assignProperty(this, sessions_, std::move(sessions), &AudioVolumeService::sessionsChanged);
}

void AudioVolumeService::setVolume(const QString& id, double percent)
{
    const double stored = overrides_.setVolume(id, percent);
    for (qsizetype i = 0; i < sessions_.size(); ++i) {
        if (sessions_[i].id != id)
            continue;
        QList<AudioAppSession> sessions = sessions_;
        sessions[i].volume = stored;
        const bool muted = sessions[i].isMuted;
        setSessions(std::move(sessions));
        if (!muted)
            mixer_.setGain(id, static_cast<float>(stored / 100.0));
        return;
    }
}

void AudioVolumeService::toggleMute(const QString& id)
{
    for (qsizetype i = 0; i < sessions_.size(); ++i) {
        if (sessions_[i].id != id)
            continue;
        QList<AudioAppSession> sessions = sessions_;
        AudioAppSession& session = sessions[i];
        session.isMuted = !session.isMuted;
        overrides_.setMuted(id, session.isMuted);
        const float gain = session.isMuted ? 0.0f : static_cast<float>(session.volume / 100.0);
        setSessions(std::move(sessions));
        mixer_.setGain(id, gain);
        return;
    }
}

} // namespace tallowmere
