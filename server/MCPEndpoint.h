#pragma once

#include "server/HTTPResponse.h"
#include "server/StatsSnapshot.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tallowmere {

// Builds a fresh snapshot whenever a caller needs one.
using SnapshotSource = std::function<StatsSnapshot()>;

// JSON-RPC 2.0 over one HTTP request per message (or batch), with six read-only tools that
// answer sections of the live snapshot. Nothing is remembered between requests.
class MCPEndpoint {
public:
    struct Tool {
        const char* name;
        const char* description;
        QByteArray (*encode)(const StatsSnapshot&);
    };

    explicit MCPEndpoint(SnapshotSource snapshot) : snapshot_(std::move(snapshot)) {}

    // The whole exchange for one POST body.
    HTTPResponse handleMCP(const QByteArray& body) const;

    // The response object for one message, or nothing for a message that gets no answer.
    std::optional<nlohmann::json> handleRPC(const nlohmann::json& message) const;

    // The response object for "tools/call"; `params` is null when the message had no object.
    nlohmann::json handleToolCall(const nlohmann::json& id, const nlohmann::json* params) const;

    static const std::vector<Tool>& tools();

    static constexpr const char* serverName = "system-stats";
    static constexpr const char* serverVersion = "1.0.0";
    static constexpr const char* defaultProtocolVersion = "2025-06-18";
    // Documents nested deeper than this are refused as unreadable rather than risking the
    // stack while echoing an id back.
    static constexpr int maxNesting = 512;

private:
    SnapshotSource snapshot_;
};

} // namespace tallowmere
