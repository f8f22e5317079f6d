#include "server/StatsRouter.h"
#include "tests/server/SnapshotSamples.h"

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

HTTPRequest request(const char* method, const char* path, QByteArray body = {})
{
    HTTPRequest r;
    r.method = QString::fromLatin1(method);
    r.path = QString::fromLatin1(path);
    r.body = std::move(body);
    return r;
}

class StatsRouterTest : public ::testing::Test {
protected:
    StatsRouter router{[] { return test::fullSnapshot(); }};
};

TEST_F(StatsRouterTest, EveryRowOfTheTable)
{
    struct Row {
        const char* method;
        const char* path;
        QByteArray status;
        QByteArray type;
        QByteArray body;
    };
    const QByteArray snapshot = encodeJSON(test::fullSnapshot());
    const std::vector<Row> rows = {
        {"GET", "/stats", "200 OK", "application/json", snapshot},
        {"GET", "/", "200 OK", "application/json", snapshot},
        {"GET", "/stats?x=1", "404 Not Found", "text/plain", "Not Found"},
        {"GET", "/stats/", "404 Not Found", "text/plain", "Not Found"},
        {"get", "/stats", "404 Not Found", "text/plain", "Not Found"},
        {"HEAD", "/", "404 Not Found", "text/plain", "Not Found"},
        {"POST", "/stats", "404 Not Found", "text/plain", "Not Found"},
        {"GET", "/mcp", "405 Method Not Allowed", "text/plain", ""},
        {"GET", "/mcp?x=1", "405 Method Not Allowed", "text/plain", ""},
        {"GET", "/mcpx/y", "405 Method Not Allowed", "text/plain", ""},
        {"DELETE", "/mcp", "200 OK", "text/plain", ""},
        {"PUT", "/mcp", "404 Not Found", "text/plain", "Not Found"},
        {"OPTIONS", "/mcp", "404 Not Found", "text/plain", "Not Found"},
        {"POST", "/mcp?x=1", "202 Accepted", "text/plain", ""},
        {"POST", "/MCP", "404 Not Found", "text/plain", "Not Found"},
        {"GET", "/nowhere", "404 Not Found", "text/plain", "Not Found"},
    };
    for (const Row& row : rows) {
        const HTTPResponse response =
            router.route(request(row.method, row.path, R"({"method":"notifications/initialized"})"));
        EXPECT_EQ(response.status, row.status) << row.method << ' ' << row.path;
        EXPECT_EQ(response.contentType, row.type) << row.method << ' ' << row.path;
        EXPECT_EQ(response.body, row.body) << row.method << ' ' << row.path;
    }
}

TEST_F(StatsRouterTest, PostToMcpReachesTheEndpoint)
{
    const HTTPResponse response = router.route(request("POST", "/mcp", R"({"id":9,"method":"ping"})"));
    EXPECT_EQ(response.status, "200 OK");
    EXPECT_EQ(response.body, R"({"id":9,"jsonrpc":"2.0","result":{}})");
    EXPECT_EQ(router.route(request("POST", "/mcp", "not json")).status, "400 Bad Request");
}

TEST_F(StatsRouterTest, MetricsAreServedAsExpositionText)
{
    const HTTPResponse response = router.route(request("GET", "/metrics"));
    EXPECT_EQ(response.status, "200 OK");
    EXPECT_EQ(response.contentType, "text/plain; version=0.0.4; charset=utf-8");
    EXPECT_TRUE(response.body.contains("\ntallowmere_cpu_usage_percent 12.5\n"));
    EXPECT_EQ(router.route(request("GET", "/metrics?x")).status, "404 Not Found");
}

} // namespace
} // namespace tallowmere
