#include "server/HTTPResponse.h"

namespace tallowmere {

QByteArray frameResponse(const HTTPResponse& response)
{
    QByteArray out;
    out.reserve(160 + response.contentType.size() + response.body.size());
    out += "HTTP/1.1 ";
    out += response.status;
    out += "\r\nContent-Type: ";
    out += response.contentType;
    out += "\r\nContent-Length: ";
    out += QByteArray::number(response.body.size());
    out += "\r\nAccess-Control-Allow-Origin: *\r\nConnection: close\r\n\r\n";
    out += response.body;
    return out;
}

} // namespace tallowmere
