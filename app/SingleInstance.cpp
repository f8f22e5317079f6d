#include "app/SingleInstance.h"

#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace tallowmere {

namespace {
constexpr QByteArrayView reopenRequest = "reopen\n";
constexpr QByteArrayView acknowledgement = "ok\n";
constexpr int handOverTimeoutMs = 2000;

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}
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

SingleInstance::Claim SingleInstance::claim(QString* error)
{
    const QByteArray lockPath = QFile::encodeName(name_ + QStringLiteral(".lock"));
    UniqueFd lock(::open(lockPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(QString::fromLocal8Bit(lockPath), systemError());
        return Claim::unavailable;
    }
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK)
            return Claim::anotherRuns;
        if (error)
            *error = QStringLiteral("%1: %2").arg(QString::fromLocal8Bit(lockPath), systemError());
        return Claim::unavailable;
    }
    lock_ = std::move(lock);
    return listen(error) ? Claim::ours : Claim::unavailable;
}

bool SingleInstance::listen(QString* error)
{
    // Holding the lock, any socket file left here belongs to a copy that has ended.
    QLocalServer::removeServer(name_);
    server_ = std::make_unique<QLocalServer>();
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server_->listen(name_)) {
        if (error)
            *error = server_->errorString();
        server_.reset();
        return false;
    }
    connect(server_.get(), &QLocalServer::newConnection, this, &SingleInstance::serve);
    return true;
}

void SingleInstance::serve()
{
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
}

bool SingleInstance::handOverReopen()
{
    QLocalSocket socket;
    socket.connectToServer(name_);
    if (!socket.waitForConnected(handOverTimeoutMs))
        return false;
    socket.write(reopenRequest.data(), reopenRequest.size());
    if (!socket.waitForBytesWritten(handOverTimeoutMs))
        return false;
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(handOverTimeoutMs))
            return false;
    }
    return socket.readLine() == acknowledgement.toByteArray();
}

} // namespace tallowmere
