#pragma once

#include <QByteArray>
#include <QHostAddress>

#include <chrono>
#include <future>
#include <vector>

namespace tallowmere::test {

struct ClientResult {
    bool connected = false;
    QByteArray received; // all the server sent before closing
};

// A plain socket client on a worker thread, so the server keeps running on this one: writes
// each piece with a pause between them, may close its sending side, then reads until the
// server closes or `readTimeout` passes in silence.
struct ClientPlan {
    quint16 port = 0;
    std::vector<QByteArray> pieces;
    std::chrono::milliseconds pause{30};
    bool closeAfterSending = false;
    std::chrono::milliseconds readTimeout{5000};
    QHostAddress address = QHostAddress(QHostAddress::LocalHost);
};

std::future<ClientResult> startClient(ClientPlan plan);
// Runs the event loop until the client is done.
ClientResult finish(std::future<ClientResult>& client);
ClientResult exchange(quint16 port, const QByteArray& request);

// Status line, headers in order, body.
struct ParsedResponse {
    QByteArray statusLine;
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body;
};
ParsedResponse parseResponse(const QByteArray& bytes);

} // namespace tallowmere::test
