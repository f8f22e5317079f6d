#pragma once

#include "server/HTTPRequest.h"
#include "server/HTTPResponse.h"
#include "server/MCPEndpoint.h"

namespace tallowmere {

// Maps one request to its answer. Requests addressed to another host or sent by a foreign
// web page are refused first (see LoopbackAccess.h). Methods are compared exactly; "/stats"
// and "/" must match whole while anything beginning with "/mcp" belongs to the MCP endpoint.
class StatsRouter {
public:
    explicit StatsRouter(SnapshotSource snapshot);

    // `port` is the one the server listens on, which a valid Host must name.
    HTTPResponse route(const HTTPRequest& request, quint16 port) const;

private:
    HTTPResponse answer(const HTTPRequest& request) const;

    SnapshotSource snapshot_;
    MCPEndpoint mcp_;
};

} // namespace tallowmere
