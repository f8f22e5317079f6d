#pragma once

#include "server/HTTPRequest.h"
#include "server/HTTPResponse.h"
#include "server/MCPEndpoint.h"

namespace tallowmere {

// Maps one request to its answer. Methods are compared exactly; "/stats" and "/" must match
// whole while anything beginning with "/mcp" belongs to the MCP endpoint.
class StatsRouter {
public:
    explicit StatsRouter(SnapshotSource snapshot);

    HTTPResponse route(const HTTPRequest& request) const;

private:
    SnapshotSource snapshot_;
    MCPEndpoint mcp_;
};

} // namespace tallowmere
