#include "monitors/NetworkReverseLookup.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace tallowmere {

std::optional<QString> reverseLookup(const QString& ip)
{
    const QByteArray text = ip.toLatin1();
    sockaddr_storage address{};
    socklen_t length = 0;
    if (ip.contains(u':')) {
        auto* v6 = reinterpret_cast<sockaddr_in6*>(&address);
        v6->sin6_family = AF_INET6;
        length = sizeof(sockaddr_in6);
        if (::inet_pton(AF_INET6, text.constData(), &v6->sin6_addr) != 1)
            return std::nullopt;
    } else {
        auto* v4 = reinterpret_cast<sockaddr_in*>(&address);
        v4->sin_family = AF_INET;
        length = sizeof(sockaddr_in);
        if (::inet_pton(AF_INET, text.constData(), &v4->sin_addr) != 1)
            return std::nullopt;
    }
    char host[1025] = {};
    if (::getnameinfo(reinterpret_cast<const sockaddr*>(&address), length, host, sizeof host, nullptr, 0,
                      NI_NAMEREQD) != 0)
        return std::nullopt;
    if (host[0] == '\0')
        return std::nullopt;
    return QString::fromUtf8(host);
}

} // namespace tallowmere
