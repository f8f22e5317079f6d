#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

namespace tallowmere {

// What a desktop entry says about an application.
struct DesktopEntry {
    QString id; // the file's id: its path below applications/ with '/' as '-', without ".desktop"
    QString name;
    std::optional<QString> icon;
    QString executable;     // file name of the program that Exec= starts
    QString startupWMClass;

    bool operator==(const DesktopEntry&) const = default;
};

// Reads the [Desktop Entry] group; absent for hidden entries and anything that is not an application.
std::optional<DesktopEntry> parseDesktopEntry(const QString& id, const QByteArray& text);

// The installed applications, looked up by their id or by the program they run.
class DesktopEntryIndex {
public:
    // Entries found earlier win, as the XDG search order wants.
    void add(const DesktopEntry& entry);

    // Case-insensitive match of the entry's id.
    const DesktopEntry* findById(const QString& id) const;
    // The entry whose id, Exec= program or window class is this executable's file name.
    const DesktopEntry* findByExecutable(const QString& executable) const;

    // Every *.desktop below <dir>/applications for each folder, in order.
    static DesktopEntryIndex scan(const QStringList& dataDirs);
    // $XDG_DATA_HOME then $XDG_DATA_DIRS, with their defaults.
    static QStringList dataDirs();

private:
    QList<DesktopEntry> entries_;
    QHash<QString, qsizetype> byId_;
    QHash<QString, qsizetype> byExecutable_;
};

} // namespace tallowmere
