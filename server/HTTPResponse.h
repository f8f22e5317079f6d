#pragma once

#include <QByteArray>

namespace tallowmere {

struct HTTPResponse {
    QByteArray status;      // e.g. "200 OK"
    QByteArray contentType; // e.g. "application/json"
    QByteArray body;

    static HTTPResponse text(QByteArray status, QByteArray body = {})
    {
        return {std::move(status), QByteArrayLiteral("text/plain"), std::move(body)};
    }
    static HTTPResponse json(QByteArray body)
    {
        return {QByteArrayLiteral("200 OK"), QByteArrayLiteral("application/json"), std::move(body)};
    }
};

// The bytes on the wire: status line, the five fixed headers, blank line, body. Every
// answer closes its connection, which the head announces.
QByteArray frameResponse(const HTTPResponse& response);

} // namespace tallowmere
