#include "update/UpdateService.h"

#include "core/Detached.h"
#include "update/AppcastParser.h"
#include "update/PrivateFolder.h"
#include "update/UpdateError.h"
#include "update/UpdateInstaller.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUuid>

#include <utility>

namespace tallowmere {

namespace {

// Without a limit a stalled server would keep a check "under way" for ever, refusing new ones.
constexpr int transferTimeoutMs = 60'000;
constexpr const char* insecureRedirectProperty = "insecureRedirect";

QString freshUuid()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

// Nothing for a 2xx HTTP answer, else the text to report: the transport's own description
// when no answer came, the server message for a non-2xx status or something that isn't HTTP.
std::optional<QString> responseFailure(QNetworkReply& reply)
{
    if (reply.property(insecureRedirectProperty).toBool())
        return updateErrorMessage(UpdateError::insecureAddress);
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && (status.toInt() < 200 || status.toInt() > 299))
        return updateErrorMessage(UpdateError::badResponse);
    if (reply.error() != QNetworkReply::NoError)
        return reply.errorString();
    if (!status.isValid())
        return updateErrorMessage(UpdateError::badResponse);
    return std::nullopt;
}

QNetworkRequest plainRequest(const QUrl& url)
{
    QNetworkRequest request(url);
    request.setTransferTimeout(transferTimeoutMs);
    // Redirects are followed only to addresses we would fetch from directly.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::UserVerifiedRedirectPolicy);
    return request;
}

QNetworkReply* fetch(QNetworkAccessManager& network, const QUrl& url)
{
    QNetworkReply* reply = network.get(plainRequest(url));
    QObject::connect(reply, &QNetworkReply::redirected, reply, [reply](const QUrl& target) {
        if (isAllowedUpdateAddress(target))
            emit reply->redirectAllowed();
        else {
            reply->setProperty(insecureRedirectProperty, true);
            reply->abort();
        }
    });
    return reply;
}

} // namespace

UpdateService::UpdateService(UpdateEnvironment environment, QObject* parent)
    : QObject(parent)
    , environment_(std::move(environment))
{
}

UpdateService::~UpdateService()
{
    // Replies still running go with the access manager, after our own members; they must not
    // call back into a half-destroyed service on the way.
    for (QNetworkReply* reply : network_.findChildren<QNetworkReply*>())
        reply->disconnect(this);
}

void UpdateService::setState(UpdateState state)
{
    if (state_ == state)
        return;
    state_ = std::move(state);
    emit stateChanged();
}

std::optional<QString> UpdateService::installedApp() const
{
    return installedAppFolder(environment_.programPath);
}

void UpdateService::checkForUpdates(bool userInitiated)
{
    using Kind = UpdateState::Kind;
    if (state_.is(Kind::downloading) || state_.is(Kind::checking) || state_.is(Kind::installing))
        return;
    // A build without a feed asks nobody anything.
    if (environment_.feedUrl.isEmpty()) {
        if (userInitiated)
            fail(updateErrorMessage(UpdateError::noFeed));
        return;
    }
    if (!isAllowedUpdateAddress(environment_.feedUrl)) {
        setState(userInitiated ? UpdateState::failed(updateErrorMessage(UpdateError::insecureAddress)) : UpdateState::idle());
        return;
    }
    setState(UpdateState::checking());
    QNetworkReply* reply = fetch(network_, environment_.feedUrl);
    connect(reply, &QNetworkReply::finished, this, [this, reply, userInitiated] {
        reply->deleteLater();
        finishCheck(reply, userInitiated);
    });
}

void UpdateService::finishCheck(QNetworkReply* reply, bool userInitiated)
{
    if (std::optional<QString> failure = responseFailure(*reply)) {
        setState(userInitiated ? UpdateState::failed(*failure) : UpdateState::idle());
        return;
    }
    applyFeed(reply->readAll(), userInitiated);
}

void UpdateService::applyFeed(const QByteArray& body, bool userInitiated)
{
    runDetached(
        this, [body] { return AppcastParser::parse(body); },
        [this, userInitiated](AppcastParser::Result result) {
            if (const UpdateError* error = std::get_if<UpdateError>(&result)) {
                setState(userInitiated ? UpdateState::failed(updateErrorMessage(*error)) : UpdateState::idle());
                return;
            }
            AvailableUpdate update = std::get<AvailableUpdate>(std::move(result));
            // Only the build numbers decide; version texts are for people.
            if (environment_.runningBuild >= update.build)
                setState(UpdateState::upToDate());
            else
                setState(UpdateState::available(std::move(update)));
        });
}

void UpdateService::installUpdate()
{
    if (!state_.is(UpdateState::Kind::available))
        return;
    const AvailableUpdate update = *state_.availableUpdate();
    const std::optional<QString> app = installedApp();
    if (!app) {
        fail(QStringLiteral("This copy of Tallowmere is not installed in a Tallowmere.app folder, so it can't "
                            "replace itself. Update it the way you installed it."));
        return;
    }
    // The swap renames the installed folder; find out now rather than after we have quit.
    const QString parent = QFileInfo(*app).absolutePath();
    if (!QFileInfo(parent).isWritable()) {
        fail(QStringLiteral("Tallowmere can't replace itself because the folder %1 is not writable.").arg(parent));
        return;
    }
    if (!isAllowedUpdateAddress(update.downloadURL)) {
        fail(updateErrorMessage(UpdateError::insecureAddress));
        return;
    }
    const std::optional<QString> folder = makePrivateFolder(environment_.runtimeDirectory, environment_.temporaryDirectory);
    if (!folder) {
        fail(QStringLiteral("Couldn't create a private folder for the update in %1.").arg(environment_.temporaryDirectory));
        return;
    }
    workFolder_ = *folder;
    setState(UpdateState::downloading(0));
    startDownload(update, *app);
}

void UpdateService::startDownload(const AvailableUpdate& update, const QString& app)
{
    download_ = std::make_unique<QTemporaryFile>(temporaryPath(QStringLiteral("TallowmereUpdate-XXXXXX.download")));
    if (!download_->open()) {
        fail(download_->errorString());
        download_.reset();
        return;
    }
    downloadWriteError_.clear();
    QNetworkReply* reply = fetch(network_, update.downloadURL);
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] {
        const QByteArray chunk = reply->readAll();
        if (download_->write(chunk) != chunk.size()) {
            downloadWriteError_ = download_->errorString();
            reply->abort();
        }
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply, app, signature = update.signature] {
        reply->deleteLater();
        finishDownload(reply, app, signature);
    });
}

void UpdateService::finishDownload(QNetworkReply* reply, const QString& app, const QByteArray& signature)
{
    std::unique_ptr<QTemporaryFile> download = std::move(download_);
    if (!downloadWriteError_.isEmpty()) {
        fail(downloadWriteError_);
        return;
    }
    if (std::optional<QString> failure = responseFailure(*reply)) {
        fail(*failure);
        return;
    }
    const QByteArray rest = reply->readAll();
    if (download->write(rest) != rest.size() || !download->flush()) {
        fail(download->errorString());
        return;
    }
    const QString archivePath = temporaryPath(QStringLiteral("TallowmereUpdate-%1.zip").arg(freshUuid()));
    QFile::remove(archivePath);
    if (!download->rename(archivePath)) {
        fail(download->errorString());
        return;
    }
    download->setAutoRemove(false);
    download->close();
    startInstaller(archivePath, app, signature);
}

void UpdateService::startInstaller(const QString& archivePath, const QString& app, const QByteArray& signature)
{
    setState(UpdateState::installing());
    InstallJob job;
    job.archivePath = archivePath;
    job.unpackFolder = temporaryPath(QStringLiteral("TallowmereUpdate-%1").arg(freshUuid()));
    job.scriptPath = temporaryPath(QStringLiteral("tallowmere-update-%1.sh").arg(freshUuid()));
    job.installedApp = app;
    job.processId = environment_.processId;
    job.signature = signature;
    job.publicKey = environment_.publicKey;
    runDetached(
        this, [job] { return unpackAndStartInstaller(job); },
        [this](std::optional<QString> failure) {
            if (failure) {
                fail(*failure);
                return;
            }
            // The script waits for this process to end; let the current event finish first.
            QTimer::singleShot(0, this, [this] {
                if (environment_.quit)
                    environment_.quit();
            });
        });
}

void UpdateService::fail(const QString& message)
{
    setState(UpdateState::failed(message));
}

QString UpdateService::temporaryPath(const QString& name) const
{
    return QDir(workFolder_).filePath(name);
}

} // namespace tallowmere
