#pragma once

#include <QByteArray>
#include <QHostAddress>

#include <chrono>
#include <future>
#include <vector>

namespace tallowmere::test {

struct ClientResult {
    bool connected = false;
    QByteArray received; // everything the server sent until it closed
};

// A plain socket client on a worker thread, so the server's event loop keeps running on the
// main thread: connects, writes each piece with a pause between them, optionally closes its
// sending side, then reads until the server closes or `readTimeout` passes without a byte.
struct ClientPlan {
    QHostAddress address = QHostAddress(QHostAddress::LocalHost);
    quint16 port = 0;
    std::vector<QByteArray> pieces;
    std::chrono::milliseconds pause{30};
    bool closeAfterSending = false;
    std::chrono::milliseconds readTimeout{5000};
};

std::future<ClientResult> startClient(ClientPlan plan);

// Runs the Qt event loop until the client is done (at most 20 s) and returns its result.
ClientResult finish(std::future<ClientResult>& client);

// Both in one: the whole exchange of one request with a server on this thread.
ClientResult exchange(quint16 port, const QByteArray& request);

// The parts of an HTTP response.
struct ParsedResponse {
    QByteArray statusLine;
    std::vector<std::pair<QByteArray, QByteArray>> headers; // in order, as sent
    QByteArray body;
    QByteArray header(const QByteArray& name) const;
};
ParsedResponse parseResponse(const QByteArray& bytes);

} // namespace tallowmere::test
