#include "server/StatsServer.h"

#include "server/ConnectionPool.h"

#include "core/Property.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTimer>

namespace tallowmere {

namespace {

// Hands each accepted socket straight to the connection pool instead of wrapping it in a
// QTcpSocket: one request per connection needs nothing of that machinery.
class LoopbackListener : public QTcpServer {
public:
    LoopbackListener(ConnectionPool& pool, QObject* parent) : QTcpServer(parent), pool_(pool) {}

protected:
    void incomingConnection(qintptr fd) override { pool_.adopt(static_cast<int>(fd)); }

private:
    ConnectionPool& pool_;
};

// Running out of descriptors passes when connections close; it must not end the server.
constexpr auto kResumeAfterResourceError = std::chrono::milliseconds(200);

} // namespace

StatsServer::StatsServer(quint16 port, SnapshotSource snapshot, QObject* parent)
    : QObject(parent)
    , port_(port)
    , snapshot_(snapshot)
    , router_(std::move(snapshot))
    , connections_(std::make_unique<ConnectionPool>(
          [this](const HTTPRequest& request) { return router_.route(request, listeningPort()); }))
{
}

StatsServer::~StatsServer() = default;

StatsSnapshot StatsServer::makeSnapshot() const
{
    return snapshot_();
}

quint16 StatsServer::listeningPort() const
{
    return listener4_ ? listener4_->serverPort() : port_;
}

QString StatsServer::endpointAddress() const
{
    return QStringLiteral("http://127.0.0.1:%1/mcp").arg(port_);
}

std::unique_ptr<QTcpServer> StatsServer::makeListener()
{
    auto listener = std::make_unique<LoopbackListener>(*connections_, nullptr);
    QTcpServer* raw = listener.get();
    connect(raw, &QTcpServer::acceptError, this, [this, raw] { onAcceptError(raw); });
    return listener;
}

void StatsServer::start()
{
    if (listener4_)
        return;

    // QTcpServer allows the address to be reused, so a restart right after a stop binds
    // again although old connections linger in TIME_WAIT.
    auto listener4 = makeListener();
    if (!listener4->listen(QHostAddress::LocalHost, port_)) {
        setLastError(listener4->errorString());
        return;
    }
    // ::1 on the same port (the chosen one when asked for any). A machine without IPv6
    // simply has no second listener; someone else holding the port there is a failure,
    // since clients resolving "localhost" would reach them instead.
    auto listener6 = makeListener();
    if (!listener6->listen(QHostAddress::LocalHostIPv6, listener4->serverPort())) {
        if (listener6->serverError() == QAbstractSocket::AddressInUseError) {
            setLastError(listener6->errorString());
            return;
        }
        listener6.reset();
    }
    listener4_ = std::move(listener4);
    listener6_ = std::move(listener6);
    setRunning(true);
    setLastError(std::nullopt);
}

void StatsServer::stop()
{
    listener4_.reset();
    listener6_.reset();
    setRunning(false);
}

void StatsServer::onAcceptError(QTcpServer* listener)
{
    // QTcpServer has paused accepting on this listener.
    if (listener->serverError() == QAbstractSocket::SocketResourceError) {
        QTimer::singleShot(kResumeAfterResourceError, listener, [listener] { listener->resumeAccepting(); });
        return;
    }
    fail(listener->errorString());
}

void StatsServer::fail(const QString& message)
{
    setLastError(message);
    // The listener whose signal is being handled must outlive this call.
    if (listener4_)
        listener4_.release()->deleteLater();
    if (listener6_)
        listener6_.release()->deleteLater();
    setRunning(false);
}

void StatsServer::setRunning(bool running)
{
    assignProperty(this, isRunning_, running, &StatsServer::isRunningChanged);
}

void StatsServer::setLastError(std::optional<QString> error)
{
    assignProperty(this, lastError_, std::move(error), &StatsServer::lastErrorChanged);
}

} // namespace tallowmere
