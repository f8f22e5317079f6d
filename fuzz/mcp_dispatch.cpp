// One POST body through the MCP endpoint, as an agent would send it.
#include "server/MCPEndpoint.h"

#include <cstdint>

using namespace tallowmere;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const MCPEndpoint endpoint([] {
        StatsSnapshot snapshot;
        snapshot.timestamp = QStringLiteral("2026-01-01T00:00:00Z");
        return snapshot;
    });
    (void)endpoint.handleMCP(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    return 0;
}
