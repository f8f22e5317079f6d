#include "server/HTTPResponse.h"

namespace tallowmere {

QByteArray frameResponse(const HTTPResponse& response)
{
    QByteArray out;
    out.reserve(160 + response.contentType.size() + response.body.size());
    out += "HTTP/1.1 ";
    out += response.status;
    // A 204 carries neither a body nor the headers that describe one.
    if (!response.status.startsWith("204")) {
        out += "\r\nContent-Type: ";
        out += response.contentType;
        out += "\r\nContent-Length: ";
        out += QByteArray::number(response.body.size());
    }
    out += "\r\nVary: Origin";
    for (const auto& [name, value] : response.headers) {
        out += "\r\n";
        out += name;
        out += ": ";
        out += value;
    }
    out += "\r\nConnection: close\r\n\r\n";
    out += response.body;
    return out;
}

} // namespace tallowmere
