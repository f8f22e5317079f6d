#include "audio/AudioDetection.h"

#include <QCollator>
#include <QHash>

#include <algorithm>

namespace tallowmere::audio {

namespace {

const DesktopEntry* entryOfStream(const PlaybackStream& stream, const DesktopEntryIndex& entries)
{
    for (const QString* id : {&stream.portalAppId, &stream.applicationId}) {
        if (id->isEmpty())
            continue;
        if (const DesktopEntry* entry = entries.findById(*id))
            return entry;
    }
    return nullptr;
}

} // namespace

std::optional<StreamOwner> attributeStream(const PlaybackStream& stream, const DetectionContext& context)
{
    if (stream.pid < 2 || !context.entries)
        return std::nullopt;
    int parentsLeft = maxParents;
    int pid = stream.pid;
    std::optional<ProcessInfo> info = context.process(pid);
    const DesktopEntry* entry = entryOfStream(stream, *context.entries);
    while (!entry) {
        if (!info)
            return std::nullopt;
        entry = context.entries->findByExecutable(info->executable);
        if (entry)
            break;
        if (parentsLeft-- == 0 || info->parent < 2 || info->parent == pid)
            return std::nullopt;
        pid = info->parent;
        info = context.process(pid);
    }
    // Helper processes of a browser run its own program; the topmost one is the browser.
    while (info && parentsLeft-- > 0 && info->parent >= 2 && info->parent != pid) {
        const std::optional<ProcessInfo> parent = context.process(info->parent);
        if (!parent || parent->executable != info->executable)
            break;
        pid = info->parent;
        info = parent;
    }
    return StreamOwner{pid, *entry};
}

QList<AudioPlayingApp> detectPlayingApps(const PulseSnapshot& snapshot, const DetectionContext& context)
{
    QList<AudioPlayingApp> apps;
    QHash<int, qsizetype> byOwner;
    for (const PlaybackStream& stream : snapshot.playback) {
        if (stream.corked || stream.pid == context.ownPid || snapshot.recordingPids.contains(stream.pid))
            continue;
        const std::optional<StreamOwner> owner = attributeStream(stream, context);
        if (!owner || owner->pid == context.ownPid
            || (!context.ownId.isEmpty() && owner->entry.id.compare(context.ownId, Qt::CaseInsensitive) == 0))
            continue;
        if (const auto it = byOwner.constFind(owner->pid); it != byOwner.constEnd()) {
            apps[*it].objectIDs.append(stream.index);
            continue;
        }
        AudioPlayingApp app;
        app.pid = owner->pid;
        app.objectIDs = {stream.index};
        app.id = owner->entry.id;
        app.name = !owner->entry.name.isEmpty() ? owner->entry.name
                 : !stream.applicationName.isEmpty() ? stream.applicationName
                                                     : QStringLiteral("App %1").arg(owner->pid);
        app.icon = owner->entry.icon;
        byOwner.insert(owner->pid, apps.size());
        apps.append(app);
    }
    for (AudioPlayingApp& app : apps)
        app.subtitle = subtitleFor(app.id, context.nowPlaying ? context.nowPlaying(app.pid) : std::nullopt);
    sortByName(apps);
    return apps;
}

bool isBrowserId(const QString& id)
{
    static const QStringList browsers{
        QStringLiteral("firefox"),         QStringLiteral("org.mozilla.firefox"), QStringLiteral("librewolf"),
        QStringLiteral("chromium"),        QStringLiteral("org.chromium.chromium"), QStringLiteral("google-chrome"),
        QStringLiteral("com.google.chrome"), QStringLiteral("brave-browser"),     QStringLiteral("com.brave.browser"),
        QStringLiteral("microsoft-edge"),  QStringLiteral("com.microsoft.edge"),  QStringLiteral("vivaldi"),
        QStringLiteral("com.vivaldi.vivaldi"), QStringLiteral("opera"),           QStringLiteral("org.gnome.epiphany"),
        QStringLiteral("epiphany"),        QStringLiteral("falkon"),              QStringLiteral("org.kde.falkon"),
    };
    const QString lower = id.toLower();
    return std::any_of(browsers.begin(), browsers.end(), [&](const QString& browser) { return lower.startsWith(browser); });
}

QString subtitleFor(const QString& id, const std::optional<QString>& track)
{
    if (track)
        return *track;
    if (isBrowserId(id))
        return QStringLiteral("Browser tab");
    return QStringLiteral("Playing audio");
}

std::optional<QString> formatTrack(const QStringList& artists, const QString& title)
{
    const QString artist = artists.join(QStringLiteral(", ")).trimmed();
    const QString name = title.trimmed();
    if (name.isEmpty())
        return std::nullopt;
    return artist.isEmpty() ? name : artist + QStringLiteral(" \u2014 ") + name;
}

void sortByName(QList<AudioPlayingApp>& apps)
{
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(apps.begin(), apps.end(),
                     [&](const AudioPlayingApp& a, const AudioPlayingApp& b) { return collator.compare(a.name, b.name) < 0; });
}

} // namespace tallowmere::audio
