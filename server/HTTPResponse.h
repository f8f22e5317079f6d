#pragma once

#include <QByteArray>

#include <utility>
#include <vector>

namespace tallowmere {

struct HTTPResponse {
    QByteArray status;      // e.g. "200 OK"
    QByteArray contentType; // e.g. "application/json"
    QByteArray body;
    std::vector<std::pair<QByteArray, QByteArray>> headers = {}; // sent after the fixed ones

    static HTTPResponse text(QByteArray status, QByteArray body = {})
    {
        return {std::move(status), QByteArrayLiteral("text/plain"), std::move(body)};
    }
    static HTTPResponse json(QByteArray body)
    {
        return {QByteArrayLiteral("200 OK"), QByteArrayLiteral("application/json"), std::move(body)};
    }
};

// The bytes on the wire: status line, Content-Type and Content-Length (none for 204),
// `Vary: Origin` (every answer depends on it), the response's own headers, `Connection:
// close`, blank line, body. Every answer closes its connection, which the head announces.
QByteArray frameResponse(const HTTPResponse& response);

} // namespace tallowmere
