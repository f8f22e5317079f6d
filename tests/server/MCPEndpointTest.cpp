#include "server/MCPEndpoint.h"
#include "tests/server/SnapshotSamples.h"

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using json = nlohmann::json;

class MCPEndpointTest : public ::testing::Test {
protected:
    MCPEndpoint endpoint{[this] {
        ++snapshotsBuilt;
        return test::fullSnapshot();
    }};
    int snapshotsBuilt = 0;

    HTTPResponse post(const std::string& body) { return endpoint.handleMCP(QByteArray::fromStdString(body)); }

    json postJSON(const std::string& body)
    {
        const HTTPResponse response = post(body);
        EXPECT_EQ(response.status, "200 OK");
        EXPECT_EQ(response.contentType, "application/json");
        return json::parse(response.body.toStdString());
    }
};

TEST_F(MCPEndpointTest, InitializeEchoesTheRequestedVersionOrGivesTheDefault)
{
    const json echoed = postJSON(R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":"2024-11-05"}})");
    EXPECT_EQ(echoed["jsonrpc"], "2.0");
    EXPECT_EQ(echoed["id"], 1);
    EXPECT_EQ(echoed["result"]["protocolVersion"], "2024-11-05");
    EXPECT_EQ(echoed["result"]["capabilities"], (json{{"tools", {{"listChanged", false}}}}));
    EXPECT_EQ(echoed["result"]["serverInfo"], (json{{"name", "system-stats"}, {"version", "1.0.0"}}));

    for (const char* body : {R"({"id":1,"method":"initialize"})",
                             R"({"id":1,"method":"initialize","params":{"protocolVersion":7}})",
                             R"({"id":1,"method":"initialize","params":[1]})"})
        EXPECT_EQ(postJSON(body)["result"]["protocolVersion"], "2025-06-18") << body;
}

TEST_F(MCPEndpointTest, PingAndToolListAndIdsOfAnyKindComeBackUnchanged)
{
    EXPECT_EQ(postJSON(R"({"id":"abc","method":"ping"})"),
              (json{{"jsonrpc", "2.0"}, {"id", "abc"}, {"result", json::object()}}));
    const json nullId = postJSON(R"({"id":null,"method":"ping"})");
    ASSERT_TRUE(nullId.contains("id"));
    EXPECT_TRUE(nullId["id"].is_null());
    EXPECT_EQ(postJSON(R"({"id":[1,{"a":2.5}],"method":"ping"})")["id"], json::parse(R"([1,{"a":2.5}])"));
    EXPECT_TRUE(postJSON(R"({"id":-7,"method":"ping"})")["id"].is_number_integer());

    const json tools = postJSON(R"({"id":2,"method":"tools/list","params":{"cursor":"x"}})")["result"]["tools"];
    ASSERT_EQ(tools.size(), 6u);
    const std::vector<std::string> names = {"get_system_stats", "get_cpu_usage",     "get_memory_usage",
                                            "get_disk_usage",   "get_network_usage", "get_battery"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(tools[i]["name"], names[i]);
        EXPECT_EQ(tools[i]["inputSchema"], (json{{"type", "object"}, {"properties", json::object()}}));
        EXPECT_FALSE(tools[i]["description"].get<std::string>().empty());
    }
    EXPECT_EQ(tools[3]["description"], "Disk capacity in GB and current read/write throughput.");
    EXPECT_EQ(snapshotsBuilt, 0); // listing builds no snapshot
}

TEST_F(MCPEndpointTest, ToolCallAnswersThePrettyPrintedSection)
{
    const json response =
        postJSON(R"({"jsonrpc":"2.0","id":3,"method":"tools/call","params":{"name":"get_cpu_usage","arguments":{"x":1}}})");
    const json& result = response["result"];
    EXPECT_EQ(result["isError"], false);
    ASSERT_EQ(result["content"].size(), 1u);
    EXPECT_EQ(result["content"][0]["type"], "text");
    EXPECT_EQ(result["content"][0]["text"],
              "{\n  \"systemPercent\" : 4.25,\n  \"usagePercent\" : 12.5,\n  \"userPercent\" : 8.25\n}");

    const auto textOf = [&](const char* tool) {
        const json r = postJSON(std::string(R"({"id":4,"method":"tools/call","params":{"name":")") + tool + "\"}}");
        return json::parse(r["result"]["content"][0]["text"].get<std::string>());
    };
    const StatsSnapshot expected = test::fullSnapshot();
    EXPECT_EQ(textOf("get_system_stats"), toJSON(expected));
    EXPECT_EQ(textOf("get_memory_usage"), toJSON(expected.memory));
    EXPECT_EQ(textOf("get_disk_usage"), toJSON(expected.disk));
    EXPECT_EQ(textOf("get_network_usage"), toJSON(expected.network));
    EXPECT_EQ(textOf("get_battery"), toJSON(expected.battery));
    EXPECT_EQ(snapshotsBuilt, 6); // a fresh snapshot per call
}

TEST_F(MCPEndpointTest, ErrorsCarryTheirCodesAndMessages)
{
    const auto error = [&](const std::string& body) { return postJSON(body)["error"]; };
    EXPECT_EQ(error(R"({"id":5,"method":"tools/call","params":{"name":"foo"}})"),
              (json{{"code", -32602}, {"message", "Unknown tool: foo"}}));
    for (const char* body : {R"({"id":5,"method":"tools/call"})",
                             R"({"id":5,"method":"tools/call","params":{}})",
                             R"({"id":5,"method":"tools/call","params":{"name":3}})",
                             R"({"id":5,"method":"tools/call","params":{"other":"get_cpu_usage"}})",
                             R"({"id":5,"method":"tools/call","params":"get_cpu_usage"})"})
        EXPECT_EQ(error(body), (json{{"code", -32602}, {"message", "Missing tool name"}})) << body;
    EXPECT_EQ(error(R"({"id":6,"method":"resources/list"})"),
              (json{{"code", -32601}, {"message", "Method not found: resources/list"}}));
    const json full = postJSON(R"({"id":6,"method":"resources/list"})");
    EXPECT_EQ(full["id"], 6);
    EXPECT_FALSE(full.contains("result"));
}

TEST_F(MCPEndpointTest, NotificationsAndMessagesWithoutMethodGetNoAnswer)
{
    for (const char* body : {R"({"jsonrpc":"2.0","method":"notifications/initialized"})",
                             R"({"method":"tools/call","params":{"name":"foo"}})", // no id: not even an error
                             R"({"id":1})", R"({"id":1,"method":5})", R"({})"}) {
        const HTTPResponse response = post(body);
        EXPECT_EQ(response.status, "202 Accepted") << body;
        EXPECT_EQ(response.contentType, "text/plain");
        EXPECT_TRUE(response.body.isEmpty());
    }
}

TEST_F(MCPEndpointTest, BatchesAnswerTheirRequestsInOrder)
{
    const json answers = postJSON(R"([{"id":1,"method":"ping"},{"method":"notifications/initialized"},
                                      {"id":2,"method":"nope"}])");
    ASSERT_TRUE(answers.is_array());
    ASSERT_EQ(answers.size(), 2u);
    EXPECT_EQ(answers[0]["id"], 1);
    EXPECT_EQ(answers[1]["error"]["code"], -32601);

    for (const char* body : {R"([{"method":"a"},{"method":"b"}])", "[]"}) {
        const HTTPResponse response = post(body);
        EXPECT_EQ(response.status, "202 Accepted") << body;
        EXPECT_TRUE(response.body.isEmpty());
    }
}

TEST_F(MCPEndpointTest, BodiesThatAreNotUsableGiveBadRequest)
{
    const std::string deep = std::string(100000, '[') + std::string(100000, ']');
    for (const std::string& body : {std::string("42"), std::string("\"text\""), std::string("[{\"id\":1,\"method\":\"ping\"},3]"),
                                    std::string("{\"id\":1,"), std::string(""), std::string("null"),
                                    std::string("{\"id\":1,\"method\":\"ping\"} trailing"),
                                    std::string("{\"id\":\"\xFF\",\"method\":\"ping\"}"), deep}) {
        const HTTPResponse response = post(body);
        EXPECT_EQ(response.status, "400 Bad Request") << body.substr(0, 40);
        EXPECT_EQ(response.contentType, "text/plain");
        EXPECT_TRUE(response.body.isEmpty());
    }
    // Nesting within bounds is still fine, and brackets inside strings do not count.
    const std::string nested = R"({"id":)" + std::string(100, '[') + std::string(100, ']') +
                               R"(,"method":"ping","x":")" + std::string(5000, '[') + R"("})";
    EXPECT_EQ(post(nested).status, "200 OK");
}

} // namespace
} // namespace tallowmere
