#include "server/MCPEndpoint.h"
#include "tests/server/SnapshotSamples.h"

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using json = nlohmann::json;

class MCPEndpointTest : public ::testing::Test {
protected:
    int snapshots = 0;
    MCPEndpoint endpoint{[this] {
        ++snapshots;
        return test::fullSnapshot();
    }};

    HTTPResponse post(const std::string& body) { return endpoint.handleMCP(QByteArray::fromStdString(body)); }
    json answer(const std::string& body)
    {
        const HTTPResponse response = post(body);
        EXPECT_EQ(response.status + ' ' + response.contentType, "200 OK application/json") << body;
        return json::parse(response.body.toStdString());
    }
};

TEST_F(MCPEndpointTest, InitializePingAndToolList)
{
    const json init = answer(R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":"2024-11-05"}})");
    EXPECT_EQ(init, json::parse(R"({"jsonrpc":"2.0","id":1,"result":{"protocolVersion":"2024-11-05",
        "capabilities":{"tools":{"listChanged":false}},"serverInfo":{"name":"system-stats","version":"1.0.0"}}})"));
    for (const char* body : {R"({"id":1,"method":"initialize"})", R"({"id":1,"method":"initialize","params":{"protocolVersion":7}})"})
        EXPECT_EQ(answer(body)["result"]["protocolVersion"], "2025-06-18") << body;

    // Ids of any kind come back unchanged; null counts as present.
    for (const char* id : {"\"abc\"", "null", "-7", "2.5", "[1,{\"a\":2}]"})
        EXPECT_EQ(answer(std::string(R"({"method":"ping","id":)") + id + "}"),
                  (json{{"jsonrpc", "2.0"}, {"id", json::parse(id)}, {"result", json::object()}}));

    const json tools = answer(R"({"id":2,"method":"tools/list"})")["result"]["tools"];
    std::vector<std::string> names;
    for (const json& tool : tools) {
        names.push_back(tool["name"]);
        EXPECT_EQ(tool["inputSchema"], (json{{"type", "object"}, {"properties", json::object()}}));
    }
    EXPECT_EQ(names, (std::vector<std::string>{"get_system_stats", "get_cpu_usage", "get_memory_usage",
                                               "get_disk_usage", "get_network_usage", "get_battery"}));
    EXPECT_EQ(snapshots, 0);
}

TEST_F(MCPEndpointTest, EachToolAnswersItsSectionAsPrettyText)
{
    const json cpu = answer(R"({"id":3,"method":"tools/call","params":{"name":"get_cpu_usage","arguments":{"x":1}}})");
    EXPECT_EQ(cpu["result"], (json{{"isError", false},
                                  {"content", {{{"type", "text"}, {"text", encodeJSON(test::fullSnapshot().cpu).toStdString()}}}}}));
    const StatsSnapshot s = test::fullSnapshot();
    const std::vector<std::pair<std::string, json>> tools = {{"get_system_stats", toJSON(s)}, {"get_memory_usage", toJSON(s.memory)},
        {"get_disk_usage", toJSON(s.disk)}, {"get_network_usage", toJSON(s.network)}, {"get_battery", toJSON(s.battery)}};
    for (const auto& [tool, expected] : tools) {
        const json r = answer(R"({"id":4,"method":"tools/call","params":{"name":")" + tool + "\"}}");
        EXPECT_EQ(json::parse(r["result"]["content"][0]["text"].get<std::string>()), expected) << tool;
    }
    EXPECT_EQ(snapshots, 6); // a fresh snapshot for every call
}

TEST_F(MCPEndpointTest, ErrorCodesAndMessages)
{
    const auto error = [&](const std::string& body) { return answer(body)["error"]; };
    EXPECT_EQ(error(R"({"id":5,"method":"tools/call","params":{"name":"foo"}})"), (json{{"code", -32602}, {"message", "Unknown tool: foo"}}));
    for (const char* params : {"", R"(,"params":{})", R"(,"params":{"name":3})", R"(,"params":"get_cpu_usage")"})
        EXPECT_EQ(error(std::string(R"({"id":5,"method":"tools/call")") + params + "}"),
                  (json{{"code", -32602}, {"message", "Missing tool name"}})) << params;
    const json unknown = answer(R"({"id":6,"method":"resources/list"})");
    EXPECT_EQ(unknown, (json{{"jsonrpc", "2.0"}, {"id", 6}, {"error", {{"code", -32601}, {"message", "Method not found: resources/list"}}}}));
}

TEST_F(MCPEndpointTest, NotificationsBatchesAndUnusableBodies)
{
    const auto statusOf = [&](const std::string& body) {
        const HTTPResponse r = post(body);
        EXPECT_TRUE(r.body.isEmpty()) << body.substr(0, 40);
        EXPECT_EQ(r.contentType, "text/plain");
        return r.status;
    };
    // No id (even with an unknown tool), or no usable method: no answer at all.
    for (const char* body : {R"({"method":"notifications/initialized"})", R"({"method":"tools/call","params":{"name":"foo"}})",
                             R"({"id":1})", R"({"id":1,"method":5})", R"([{"method":"a"},{"method":"b"}])", "[]"})
        EXPECT_EQ(statusOf(body), "202 Accepted") << body;

    const json batch = answer(R"([{"id":1,"method":"ping"},{"method":"notifications/initialized"},{"id":2,"method":"nope"}])");
    ASSERT_EQ(batch.size(), 2u);
    EXPECT_EQ(batch[0]["id"], 1);
    EXPECT_EQ(batch[1]["error"]["code"], -32601);

    const std::string deep = std::string(100000, '[') + std::string(100000, ']');
    for (const std::string& body : {std::string("42"), std::string("\"text\""), std::string(R"([{"id":1,"method":"ping"},3])"),
                                    std::string("{\"id\":1,"), std::string(), std::string("{\"id\":\"\xFF\",\"method\":\"ping\"}"), deep})
        EXPECT_EQ(statusOf(body), "400 Bad Request") << body.substr(0, 40);
    // Brackets inside strings do not count as nesting.
    EXPECT_EQ(post(R"({"id":1,"method":"ping","x":")" + std::string(5000, '[') + "\"}").status, "200 OK");
}

} // namespace
} // namespace tallowmere
