#include "server/LoopbackAccess.h"

#include <QString>

namespace tallowmere {

namespace {

const QString kHost = QStringLiteral("host");
const QString kOrigin = QStringLiteral("origin");

struct Authority {
    QStringView name; // "[::1]" keeps its brackets
    std::optional<QStringView> port;
};

// "name[:port]" split at the port's colon; nothing when the text cannot be an authority.
std::optional<Authority> splitAuthority(QStringView text)
{
    qsizetype nameEnd = 0;
    if (text.startsWith(u'[')) {
        nameEnd = text.indexOf(u']');
        if (nameEnd < 0)
            return std::nullopt;
        ++nameEnd;
    } else {
        nameEnd = text.indexOf(u':');
        if (nameEnd < 0)
            nameEnd = text.size();
    }
    Authority authority{text.first(nameEnd), std::nullopt};
    const QStringView rest = text.sliced(nameEnd);
    if (rest.isEmpty())
        return authority;
    if (!rest.startsWith(u':'))
        return std::nullopt;
    authority.port = rest.sliced(1);
    return authority;
}

bool isLoopbackName(QStringView name)
{
    return name.compare(u"127.0.0.1") == 0 || name.compare(u"localhost", Qt::CaseInsensitive) == 0
        || name.compare(u"[::1]") == 0;
}

// 1 to 65535 written in plain decimal digits.
bool isPortNumber(QStringView text)
{
    if (text.isEmpty() || text.size() > 5 || text.front() == u'0')
        return false;
    for (QChar c : text) {
        if (c < u'0' || c > u'9')
            return false;
    }
    return text.toInt() <= 65535;
}

const QString* findHeader(const HTTPRequest& request, const QString& name)
{
    const auto it = request.headers.find(name);
    return it == request.headers.end() ? nullptr : &it->second;
}

} // namespace

bool isLoopbackHost(QStringView host, quint16 port)
{
    const std::optional<Authority> authority = splitAuthority(host);
    if (!authority || !isLoopbackName(authority->name))
        return false;
    // No port in Host means the scheme's default, 80.
    const QString wanted = QString::number(port);
    return authority->port ? *authority->port == wanted : port == 80;
}

bool isLoopbackOrigin(QStringView origin)
{
    constexpr QStringView scheme = u"http://";
    if (!origin.startsWith(scheme, Qt::CaseInsensitive))
        return false;
    const std::optional<Authority> authority = splitAuthority(origin.sliced(scheme.size()));
    return authority && isLoopbackName(authority->name) && (!authority->port || isPortNumber(*authority->port));
}

std::optional<HTTPResponse> refuseForeignRequest(const HTTPRequest& request, quint16 port)
{
    // A request without any Host (HTTP/1.0, or a hand-written one through nc) is served:
    // browsers always send Host, so a rebound name can never arrive without one, and turning
    // such requests away would only break scripts that work today. A Host that is present
    // but empty names nothing of ours and is refused like any other.
    if (const QString* host = findHeader(request, kHost); host && !isLoopbackHost(*host, port))
        return HTTPResponse::text(QByteArrayLiteral("421 Misdirected Request"), QByteArrayLiteral("Misdirected Request"));
    // "null" (sandboxed frames, file:// pages) and empty values are foreign too.
    if (const QString* origin = findHeader(request, kOrigin); origin && !isLoopbackOrigin(*origin))
        return HTTPResponse::text(QByteArrayLiteral("403 Forbidden"), QByteArrayLiteral("Forbidden"));
    return std::nullopt;
}

std::optional<HTTPResponse> answerPreflight(const HTTPRequest& request)
{
    if (request.method != QLatin1String("OPTIONS") || !findHeader(request, kOrigin))
        return std::nullopt;
    HTTPResponse response{QByteArrayLiteral("204 No Content"), {}, {}};
    response.headers = {
        {"Access-Control-Allow-Methods", "GET, POST, DELETE"},
        {"Access-Control-Allow-Headers", "Content-Type, Accept, Mcp-Session-Id, Mcp-Protocol-Version"},
        {"Access-Control-Max-Age", "600"},
    };
    allowRequestingOrigin(response, request);
    return response;
}

void allowRequestingOrigin(HTTPResponse& response, const HTTPRequest& request)
{
    if (const QString* origin = findHeader(request, kOrigin); origin && isLoopbackOrigin(*origin))
        response.headers.insert(response.headers.begin(), {"Access-Control-Allow-Origin", origin->toUtf8()});
}

} // namespace tallowmere
