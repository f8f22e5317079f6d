#include "core/PreferencesStore.h"

#include "core/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QSaveFile>
#include <QStandardPaths>

#include <cmath>

namespace tallowmere {

PreferencesStore::PreferencesStore(QString filePath)
    : filePath_(std::move(filePath))
{
    load();
}

QString PreferencesStore::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/Tallowmere/preferences.json");
}

void PreferencesStore::load()
{
    QFile file(filePath_);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly)) {
        lastError_ = QStringLiteral("cannot read preferences %1: %2").arg(filePath_, file.errorString());
        logWarning(lastError_);
        return;
    }
    const QByteArray bytes = file.readAll();
    file.close();

    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error == QJsonParseError::NoError && document.isObject()) {
        values_ = document.object();
        return;
    }

    // Keep the unreadable file for the user to look at instead of overwriting it later.
    const QString aside = filePath_ + QStringLiteral(".corrupt");
    QFile::remove(aside);
    const bool kept = QFile::rename(filePath_, aside);
    lastError_ = QStringLiteral("preferences %1 are not a JSON object (%2); %3 and starting from defaults")
                     .arg(filePath_,
                          error.error == QJsonParseError::NoError ? QStringLiteral("not an object") : error.errorString(),
                          kept ? QStringLiteral("kept it as ") + aside : QStringLiteral("could not move it aside"));
    logWarning(lastError_);
}

bool PreferencesStore::save()
{
    const QFileInfo info(filePath_);
    QString reason;
    if (!QDir().mkpath(info.absolutePath())) {
        reason = QStringLiteral("cannot create folder %1").arg(info.absolutePath());
    } else {
        QSaveFile file(filePath_);
        if (file.open(QIODevice::WriteOnly)) {
            file.write(QJsonDocument(values_).toJson(QJsonDocument::Indented));
            if (file.commit()) {
                lastError_.clear();
                warnedAboutWrite_ = false;
                return true;
            }
        }
        reason = file.errorString();
    }
    lastError_ = QStringLiteral("cannot save preferences to %1: %2; the change holds until the program quits")
                     .arg(filePath_, reason);
    if (!warnedAboutWrite_) {
        logWarning(lastError_);
        warnedAboutWrite_ = true;
    }
    return false;
}

bool PreferencesStore::setValue(const QString& key, const QJsonValue& value)
{
    values_.insert(key, value);
    return save();
}

bool PreferencesStore::remove(const QString& key)
{
    values_.remove(key);
    return save();
}

namespace {

template <class T, class Accept, class Convert>
TypedRead<T> typedRead(const QJsonObject& values, const QString& key, Accept accept, Convert convert)
{
    const auto it = values.constFind(key);
    if (it == values.constEnd())
        return {ReadStatus::missing, T{}};
    if (!accept(*it))
        return {ReadStatus::wrongType, T{}};
    return {ReadStatus::found, convert(*it)};
}

bool isWholeNumber(const QJsonValue& v)
{
    if (!v.isDouble())
        return false;
    const double d = v.toDouble();
    return std::isfinite(d) && std::trunc(d) == d && std::fabs(d) < 9.0e15;
}

} // namespace

TypedRead<bool> PreferencesStore::readBool(const QString& key) const
{
    return typedRead<bool>(values_, key, [](const QJsonValue& v) { return v.isBool(); },
                           [](const QJsonValue& v) { return v.toBool(); });
}

TypedRead<qint64> PreferencesStore::readInteger(const QString& key) const
{
    return typedRead<qint64>(values_, key, isWholeNumber,
                             [](const QJsonValue& v) { return static_cast<qint64>(v.toDouble()); });
}

TypedRead<double> PreferencesStore::readDouble(const QString& key) const
{
    return typedRead<double>(values_, key, [](const QJsonValue& v) { return v.isDouble(); },
                             [](const QJsonValue& v) { return v.toDouble(); });
}

TypedRead<QString> PreferencesStore::readString(const QString& key) const
{
    return typedRead<QString>(values_, key, [](const QJsonValue& v) { return v.isString(); },
                              [](const QJsonValue& v) { return v.toString(); });
}

TypedRead<QJsonObject> PreferencesStore::readObject(const QString& key) const
{
    return typedRead<QJsonObject>(values_, key, [](const QJsonValue& v) { return v.isObject(); },
                                  [](const QJsonValue& v) { return v.toObject(); });
}

} // namespace tallowmere
