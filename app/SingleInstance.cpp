#include "app/SingleInstance.h"

#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

#include <unistd.h>

namespace tallowmere {

namespace {
constexpr QByteArrayView reopenRequest = "reopen\n";
constexpr QByteArrayView acknowledgement = "ok\n";
constexpr int handOverTimeoutMs = 2000;
} // namespace

SingleInstance::SingleInstance(QString name, QObject* parent)
    : QObject(parent)
    , name_(std::move(name))
{
}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::defaultName()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return folder + QStringLiteral("/tallowmere-%1.socket").arg(::getuid());
}

bool SingleInstance::handOverToRunningInstance()
{
    QLocalSocket socket;
    socket.connectToServer(name_);
    if (!socket.waitForConnected(handOverTimeoutMs))
        return false;
    socket.write(reopenRequest.data(), reopenRequest.size());
    if (!socket.waitForBytesWritten(handOverTimeoutMs))
        return false;
    // Only an answer proves a live copy took the request; a stale socket file says nothing.
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(handOverTimeoutMs))
            return false;
    }
    return socket.readLine() == acknowledgement.toByteArray();
}

bool SingleInstance::listen(QString* error)
{
    server_ = std::make_unique<QLocalServer>();
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server_->listen(name_)) {
        // A copy that crashed leaves its socket file behind; nobody answered on it above.
        QLocalServer::removeServer(name_);
        if (!server_->listen(name_)) {
            if (error)
                *error = server_->errorString();
            server_.reset();
            return false;
        }
    }
    connect(server_.get(), &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = server_->nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                if (!socket->canReadLine())
                    return;
                if (socket->readLine(64) == reopenRequest.toByteArray()) {
                    socket->write(acknowledgement.data(), acknowledgement.size());
                    socket->flush();
                    emit reopenRequested();
                }
                socket->disconnectFromServer();
            });
        }
    });
    return true;
}

} // namespace tallowmere
