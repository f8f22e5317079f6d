#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>

namespace tallowmere {

// Whether a typed read found a value of the asked type, no value, or a value of another type.
enum class ReadStatus { found, missing, wrongType };

template <class T>
struct TypedRead {
    ReadStatus status = ReadStatus::missing;
    T value{};

    bool found() const { return status == ReadStatus::found; }
    T valueOr(T fallback) const { return found() ? value : fallback; }
};

// The per-user preferences: a JSON object in one file, read once, rewritten atomically on
// every assignment. A file that does not parse is kept aside and the store starts empty; a
// file that cannot be written keeps the value in memory and says why once on stderr.
class PreferencesStore {
public:
    explicit PreferencesStore(QString filePath);

    // $XDG_CONFIG_HOME/Tallowmere/preferences.json
    static QString defaultPath();

    const QString& filePath() const { return filePath_; }

    bool contains(const QString& key) const { return values_.contains(key); }
    QJsonValue value(const QString& key) const { return values_.value(key); }

    TypedRead<bool> readBool(const QString& key) const;
    TypedRead<qint64> readInteger(const QString& key) const;
    TypedRead<double> readDouble(const QString& key) const;
    TypedRead<QString> readString(const QString& key) const;
    TypedRead<QJsonObject> readObject(const QString& key) const;

    // Stores the value and writes the whole file at once. Returns false when the file could
    // not be written; the value is kept for this run either way.
    bool setValue(const QString& key, const QJsonValue& value);
    bool remove(const QString& key);

    // The reason of the last failed load or write, empty when all went well.
    const QString& lastError() const { return lastError_; }

private:
    void load();
    bool save();

    QString filePath_;
    QJsonObject values_;
    QString lastError_;
    bool warnedAboutWrite_ = false;
};

} // namespace tallowmere
