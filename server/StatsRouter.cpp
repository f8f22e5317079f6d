#include "server/StatsRouter.h"

#include "server/LoopbackAccess.h"
#include "server/MetricsText.h"

namespace tallowmere {

StatsRouter::StatsRouter(SnapshotSource snapshot)
    : snapshot_(snapshot)
    , mcp_(std::move(snapshot))
{
}

HTTPResponse StatsRouter::route(const HTTPRequest& request, quint16 port) const
{
    if (std::optional<HTTPResponse> refusal = refuseForeignRequest(request, port))
        return *refusal;
    if (std::optional<HTTPResponse> preflight = answerPreflight(request))
        return *preflight;
    HTTPResponse response = answer(request);
    allowRequestingOrigin(response, request);
    return response;
}

HTTPResponse StatsRouter::answer(const HTTPRequest& request) const
{
    const QString& method = request.method;
    const QString& path = request.path;
    const bool mcpPath = path.startsWith(QLatin1String("/mcp"));

    if (method == QLatin1String("GET") && (path == QLatin1String("/stats") || path == QLatin1String("/")))
        return HTTPResponse::json(encodeJSON(snapshot_()));
    if (method == QLatin1String("GET") && path == QLatin1String("/metrics"))
        return {QByteArrayLiteral("200 OK"), metricsContentType(), metricsText(snapshot_())};
    if (method == QLatin1String("POST") && mcpPath)
        return mcp_.handleMCP(request.body);
    if (method == QLatin1String("GET") && mcpPath)
        return HTTPResponse::text(QByteArrayLiteral("405 Method Not Allowed"));
    if (method == QLatin1String("DELETE") && mcpPath)
        return HTTPResponse::text(QByteArrayLiteral("200 OK"));
    return HTTPResponse::text(QByteArrayLiteral("404 Not Found"), QByteArrayLiteral("Not Found"));
}

} // namespace tallowmere
