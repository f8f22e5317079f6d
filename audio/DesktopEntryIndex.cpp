#include "audio/DesktopEntryIndex.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace tallowmere {

namespace {

// The program of an Exec= line: its first word, after any `env NAME=value` prefix.
QString programOf(const QString& exec)
{
    const QStringList words = exec.split(u' ', Qt::SkipEmptyParts);
    qsizetype i = 0;
    if (i < words.size() && QFileInfo(words[i]).fileName() == QLatin1StringView("env")) {
        ++i;
        while (i < words.size() && words[i].contains(u'='))
            ++i;
    }
    if (i >= words.size())
        return {};
    QString program = words[i];
    program.remove(u'"');
    return QFileInfo(program).fileName();
}

} // namespace

std::optional<DesktopEntry> parseDesktopEntry(const QString& id, const QByteArray& text)
{
    DesktopEntry entry{id, {}, std::nullopt, {}, {}};
    bool inMainGroup = false;
    QString type;
    for (const QByteArray& rawLine : text.split('\n')) {
        const QString line = QString::fromUtf8(rawLine).trimmed();
        if (line.startsWith(u'[')) {
            inMainGroup = line == QLatin1StringView("[Desktop Entry]");
            continue;
        }
        const qsizetype eq = line.indexOf(u'=');
        if (!inMainGroup || eq <= 0)
            continue;
        const QString key = line.left(eq).trimmed();
        const QString value = line.mid(eq + 1).trimmed();
        if (key == QLatin1StringView("Name"))
            entry.name = value;
        else if (key == QLatin1StringView("Icon") && !value.isEmpty())
            entry.icon = value;
        else if (key == QLatin1StringView("Exec"))
            entry.executable = programOf(value);
        else if (key == QLatin1StringView("StartupWMClass"))
            entry.startupWMClass = value;
        else if (key == QLatin1StringView("Type"))
            type = value;
        else if (key == QLatin1StringView("Hidden") && value == QLatin1StringView("true"))
            return std::nullopt;
    }
    if (type != QLatin1StringView("Application"))
        return std::nullopt;
    return entry;
}

void DesktopEntryIndex::add(const DesktopEntry& entry)
{
    const QString id = entry.id.toLower();
    if (byId_.contains(id))
        return;
    const qsizetype position = entries_.size();
    entries_.append(entry);
    byId_.insert(id, position);
    for (const QString& key : {id, entry.executable.toLower(), entry.startupWMClass.toLower()}) {
        if (!key.isEmpty() && !byExecutable_.contains(key))
            byExecutable_.insert(key, position);
    }
}

const DesktopEntry* DesktopEntryIndex::findById(const QString& id) const
{
    const auto it = byId_.constFind(id.toLower());
    return it == byId_.constEnd() ? nullptr : &entries_[*it];
}

const DesktopEntry* DesktopEntryIndex::findByExecutable(const QString& executable) const
{
    const auto it = byExecutable_.constFind(executable.toLower());
    return it == byExecutable_.constEnd() ? nullptr : &entries_[*it];
}

DesktopEntryIndex DesktopEntryIndex::scan(const QStringList& dataDirs)
{
    DesktopEntryIndex index;
    for (const QString& dir : dataDirs) {
        const QString root = dir + QStringLiteral("/applications");
        QDirIterator it(root, {QStringLiteral("*.desktop")}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            QString id = QDir(root).relativeFilePath(path);
            id.chop(8); // ".desktop"
            id.replace(u'/', u'-');
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly))
                continue;
            if (const auto entry = parseDesktopEntry(id, file.read(64 * 1024)))
                index.add(*entry);
        }
    }
    return index;
}

QStringList DesktopEntryIndex::dataDirs()
{
    QString home = qEnvironmentVariable("XDG_DATA_HOME");
    if (home.isEmpty())
        home = QDir::homePath() + QStringLiteral("/.local/share");
    QString system = qEnvironmentVariable("XDG_DATA_DIRS");
    if (system.isEmpty())
        system = QStringLiteral("/usr/local/share:/usr/share");
    return QStringList{home} + system.split(u':', Qt::SkipEmptyParts);
}

} // namespace tallowmere
