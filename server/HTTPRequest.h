#pragma once

#include <QByteArray>
#include <QString>

#include <map>

namespace tallowmere {

struct HTTPRequest {
    QString method; // as sent, case-sensitive
    QString path;   // as sent, query string included
    std::map<QString, QString> headers; // names lower-cased and trimmed, values trimmed
    QByteArray body;

    // The header's value, or an empty string when it was not sent.
    QString header(const QString& lowerCaseName) const;
};

// How far no request may grow, so that no client can make the server hold unbounded memory.
struct RequestLimits {
    qsizetype maxHeadBytes = 32 * 1024;
    qsizetype maxBodyBytes = 1024 * 1024;
};

// Collects the bytes of one request as they arrive and says when it is complete.
class RequestReader {
public:
    enum class Status {
        incomplete,   // more bytes are needed
        complete,     // take() gives the request
        malformed,    // the head can never become a request
        headTooLarge, // no end of head within the limit
        bodyTooLarge, // the announced body exceeds the limit
    };

    explicit RequestReader(RequestLimits limits = {}) : limits_(limits) {}

    Status append(const char* data, qsizetype size);
    Status append(const QByteArray& data) { return append(data.constData(), data.size()); }
    Status status() const { return status_; }

    // The finished request; only after append() answered `complete`.
    HTTPRequest take();

private:
    Status parseHead(qsizetype headEnd);
    Status checkBody();

    RequestLimits limits_;
    QByteArray buffer_;
    qsizetype searchFrom_ = 0;
    qsizetype bodyStart_ = -1; // set once the head has been parsed
    qsizetype bodyLength_ = 0;
    HTTPRequest request_;
    Status status_ = Status::incomplete;
};

// The value of a Content-Length header: a non-negative decimal integer, else 0.
qsizetype parseContentLength(const QString& value);

} // namespace tallowmere
