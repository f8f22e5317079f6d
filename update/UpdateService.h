#pragma once

#include "update/AvailableUpdate.h"
#include "update/UpdateEnvironment.h"
#include "update/UpdateState.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QTemporaryFile>

#include <memory>
#include <optional>

class QNetworkReply;

namespace tallowmere {

// Tells whether the feed offers a newer build than the running one, and installs it on request:
// download, unpack, hand the swap to a detached script, quit.
class UpdateService : public QObject {
    Q_OBJECT
public:
    explicit UpdateService(UpdateEnvironment environment, QObject* parent = nullptr);
    ~UpdateService() override;

    const UpdateState& state() const { return state_; }
    // Every change of state goes through here; observers hear only of real changes.
    void setState(UpdateState state);

    // Fetches the feed and compares its build with ours. A failed check that the user did not
    // ask for falls back to idle without a message. Refused while checking, downloading or
    // installing.
    void checkForUpdates(bool userInitiated);

    // Installs the update held while available; does nothing in any other state.
    void installUpdate();

    // The Tallowmere.app folder this copy runs from, or nothing when it must not replace itself.
    std::optional<QString> installedApp() const;

signals:
    void stateChanged();

private:
    void finishCheck(QNetworkReply* reply, bool userInitiated);
    void applyFeed(const QByteArray& body, bool userInitiated);
    void startDownload(const AvailableUpdate& update, const QString& app);
    void finishDownload(QNetworkReply* reply, const QString& app, const QByteArray& signature);
    void startInstaller(const QString& archivePath, const QString& app, const QByteArray& signature);
    void fail(const QString& message);
    QString temporaryPath(const QString& name) const;

    UpdateEnvironment environment_;
    QNetworkAccessManager network_;
    UpdateState state_ = UpdateState::idle();
    std::unique_ptr<QTemporaryFile> download_;
    QString downloadWriteError_;
    QString workFolder_; // private to this user; made when an installation starts
};

} // namespace tallowmere
