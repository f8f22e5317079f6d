#include "server/MCPEndpoint.h"

#include "server/JSONText.h"

namespace tallowmere {

namespace {

using json = nlohmann::json;

json success(const json& id, json result)
{
    return {{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}};
}

json failure(const json& id, int code, const std::string& message)
{
    return {{"jsonrpc", "2.0"}, {"id", id}, {"error", {{"code", code}, {"message", message}}}};
}

// Deepest nesting of arrays and objects in the text, counted outside strings.
int nestingDepth(const QByteArray& text)
{
    int depth = 0;
    int deepest = 0;
    bool inString = false;
    bool escaped = false;
    for (const char c : text) {
        if (inString) {
            if (escaped)
                escaped = false;
            else if (c == '\\')
                escaped = true;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            deepest = std::max(deepest, ++depth);
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return deepest;
}

json initializeResult(const json& message)
{
    std::string version = MCPEndpoint::defaultProtocolVersion;
    const auto params = message.find("params");
    if (params != message.end() && params->is_object()) {
        const auto requested = params->find("protocolVersion");
        if (requested != params->end() && requested->is_string())
            version = requested->get<std::string>();
    }
    return {{"protocolVersion", version},
            {"capabilities", {{"tools", {{"listChanged", false}}}}},
            {"serverInfo", {{"name", MCPEndpoint::serverName}, {"version", MCPEndpoint::serverVersion}}}};
}

json toolList()
{
    json list = json::array();
    for (const auto& tool : MCPEndpoint::tools()) {
        list.push_back({{"name", tool.name},
                        {"description", tool.description},
                        {"inputSchema", {{"type", "object"}, {"properties", json::object()}}}});
    }
    return {{"tools", std::move(list)}};
}

HTTPResponse accepted()
{
    return HTTPResponse::text(QByteArrayLiteral("202 Accepted"));
}

HTTPResponse badRequest()
{
    return HTTPResponse::text(QByteArrayLiteral("400 Bad Request"));
}

} // namespace

const std::vector<MCPEndpoint::Tool>& MCPEndpoint::tools()
{
    static const std::vector<Tool> table = {
        {"get_system_stats",
         "Full live system snapshot: CPU, memory, disk, network, battery, and hardware/OS info.",
         [](const StatsSnapshot& s) { return encodeJSON(s); }},
        {"get_cpu_usage", "Current CPU usage percentages (total, user, system).",
         [](const StatsSnapshot& s) { return encodeJSON(s.cpu); }},
        {"get_memory_usage", "Current memory usage in GB and percentage.",
         [](const StatsSnapshot& s) { return encodeJSON(s.memory); }},
        {"get_disk_usage", "Disk capacity in GB and current read/write throughput.",
         [](const StatsSnapshot& s) { return encodeJSON(s.disk); }},
        {"get_network_usage", "Current network download/upload rates and session totals.",
         [](const StatsSnapshot& s) { return encodeJSON(s.network); }},
        {"get_battery", "Battery level, charging state, and health.",
         [](const StatsSnapshot& s) { return encodeJSON(s.battery); }},
    };
    return table;
}

HTTPResponse MCPEndpoint::handleMCP(const QByteArray& body) const
{
    if (nestingDepth(body) > maxNesting)
        return badRequest();
    const json document = json::parse(body.constBegin(), body.constEnd(), nullptr, false);
    if (document.is_discarded())
        return badRequest();

    if (document.is_object()) {
        const auto response = handleRPC(document);
        if (!response)
            return accepted();
        return HTTPResponse::json(compactJSONOrEmpty(*response));
    }
    if (document.is_array()) {
        for (const auto& element : document) {
            if (!element.is_object())
                return badRequest();
        }
        json responses = json::array();
        for (const auto& element : document) {
            if (auto response = handleRPC(element))
                responses.push_back(std::move(*response));
        }
        if (responses.empty())
            return accepted();
        return HTTPResponse::json(compactJSONOrEmpty(responses));
    }
    return badRequest();
}

std::optional<json> MCPEndpoint::handleRPC(const json& message) const
{
    const auto method = message.find("method");
    if (method == message.end() || !method->is_string())
        return std::nullopt;
    const auto id = message.find("id");
    if (id == message.end())
        return std::nullopt; // a notification: accepted, never answered

    const auto& name = method->get_ref<const std::string&>();
    if (name == "initialize")
        return success(*id, initializeResult(message));
    if (name == "ping")
        return success(*id, json::object());
    if (name == "tools/list")
        return success(*id, toolList());
    if (name == "tools/call") {
        const auto params = message.find("params");
        const bool usable = params != message.end() && params->is_object();
        return handleToolCall(*id, usable ? &*params : nullptr);
    }
    return failure(*id, -32601, "Method not found: " + name);
}

json MCPEndpoint::handleToolCall(const json& id, const json* params) const
{
    if (!params || params->empty())
        return failure(id, -32602, "Missing tool name");
    const auto name = params->find("name");
    if (name == params->end() || !name->is_string())
        return failure(id, -32602, "Missing tool name");

    const auto& wanted = name->get_ref<const std::string&>();
    for (const auto& tool : tools()) {
        if (wanted != tool.name)
            continue;
        const QByteArray text = tool.encode(snapshot_());
        json content = json::array({{{"type", "text"}, {"text", text.toStdString()}}});
        return success(id, {{"content", std::move(content)}, {"isError", false}});
    }
    return failure(id, -32602, "Unknown tool: " + wanted);
}

} // namespace tallowmere
