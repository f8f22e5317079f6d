#pragma once

#include "server/MCPEndpoint.h"
#include "server/StatsRouter.h"

#include <QObject>
#include <QString>

#include <memory>
#include <optional>

class QTcpServer;

namespace tallowmere {

class ConnectionPool;

// The statistics server on the loopback interface: 127.0.0.1 and, where the machine has it,
// ::1. Answers `GET /stats`, `GET /`, `GET /metrics` and the MCP endpoint at `/mcp`, one
// request per connection. start() and stop() may be called any number of times; a failure
// to listen is kept in lastError() in the system's words and the server stays stopped.
class StatsServer : public QObject {
    Q_OBJECT
public:
    static constexpr quint16 defaultPort = 8765;

    // Answers with the documents that `snapshot` builds, one for every request; the server
    // itself reads nothing of the machine.
    StatsServer(quint16 port, SnapshotSource snapshot, QObject* parent = nullptr);
    ~StatsServer() override;

    quint16 port() const { return port_; }
    // The port actually listened on: port() itself, or the one the system chose for 0.
    quint16 listeningPort() const;
    // Where agents are pointed: "http://127.0.0.1:<port>/mcp".
    QString endpointAddress() const;

    bool isRunning() const { return isRunning_; }
    const std::optional<QString>& lastError() const { return lastError_; }

    void start();
    void stop();

    StatsSnapshot makeSnapshot() const;

    const StatsRouter& router() const { return router_; }

signals:
    void isRunningChanged();
    void lastErrorChanged();

private:
    void fail(const QString& message);
    void setRunning(bool running);
    void setLastError(std::optional<QString> error);
    void onAcceptError(QTcpServer* listener);
    std::unique_ptr<QTcpServer> makeListener();

    const quint16 port_;
    SnapshotSource snapshot_;
    StatsRouter router_;
    std::unique_ptr<ConnectionPool> connections_;
    std::unique_ptr<QTcpServer> listener4_;
    std::unique_ptr<QTcpServer> listener6_;
    bool isRunning_ = false;
    std::optional<QString> lastError_;
};

} // namespace tallowmere
