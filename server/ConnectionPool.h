#pragma once

#include "server/HTTPRequest.h"
#include "server/HTTPResponse.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <map>
#include <memory>

namespace tallowmere {

// The accepted connections of the server: each carries one request and one answer and is
// then closed. All sockets are non-blocking and served from the main thread's event loop as
// bytes arrive, so a slow or silent client holds only its own buffer and never delays
// another. Every buffer is bounded, every connection has a deadline, and the number of open
// connections is capped (the oldest waiting one gives way to a newcomer).
class ConnectionPool : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<HTTPResponse(const HTTPRequest&)>;

    struct Limits {
        RequestLimits request;
        int maxConnections = 256;
        std::chrono::milliseconds deadline{10000}; // from accept to the last byte sent
    };

    explicit ConnectionPool(Handler handler, QObject* parent = nullptr);
    ConnectionPool(Handler handler, Limits limits, QObject* parent = nullptr);
    ~ConnectionPool() override;

    // Takes ownership of an accepted socket.
    void adopt(int fd);

    int openConnections() const { return static_cast<int>(connections_.size()); }
    const Limits& limits() const { return limits_; }

private:
    struct Connection;
    using Iterator = std::map<quint64, std::unique_ptr<Connection>>::iterator;

    void onReadable(quint64 id);
    void onWritable(quint64 id);
    void receive(Iterator it);
    void answer(Iterator it, const HTTPResponse& response);
    void send(Iterator it);
    void finish(Iterator it);
    void close(Iterator it);
    void sweepExpired();

    Handler handler_;
    Limits limits_;
    std::map<quint64, std::unique_ptr<Connection>> connections_; // oldest first
    quint64 nextId_ = 0;
    QTimer sweep_;
};

} // namespace tallowmere
