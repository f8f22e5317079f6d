#include "server/StatsServer.h"
#include "tests/server/LoopbackClient.h"
#include "tests/server/SnapshotSamples.h"
#include "tests/support/TestSupport.h"

#include <QNetworkInterface>
#include <QSignalSpy>
#include <QTcpServer>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tallowmere {
namespace {

using test::exchange;
using test::parseResponse;

class StatsServerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        server.start();
        ASSERT_TRUE(server.isRunning()) << server.lastError().value_or(QString()).toStdString();
        port = server.listeningPort();
    }

    int snapshots = 0;
    StatsServer server{0, [this] {
                           ++snapshots;
                           return test::fullSnapshot();
                       }};
    quint16 port = 0;
};

bool hasIPv6Loopback()
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHostIPv6, 0);
}

TEST_F(StatsServerTest, StatsAnswerIsFramedAndTheConnectionCloses)
{
    const auto result = exchange(port, "GET /stats HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    ASSERT_TRUE(result.connected);
    const auto response = parseResponse(result.received);
    EXPECT_EQ(response.statusLine, "HTTP/1.1 200 OK");
    EXPECT_EQ(response.header("Content-Type"), "application/json");
    EXPECT_EQ(response.header("Content-Length").toLongLong(), response.body.size());
    EXPECT_EQ(response.header("Access-Control-Allow-Origin"), "*");
    EXPECT_EQ(response.header("Connection"), "close");
    EXPECT_EQ(response.headers.size(), 4u); // nothing beyond the four fixed headers
    EXPECT_EQ(response.body, encodeJSON(test::fullSnapshot()));

    // "/" is the same document.
    EXPECT_EQ(parseResponse(exchange(port, "GET / HTTP/1.1\r\n\r\n").received).body, response.body);
}

TEST_F(StatsServerTest, RouterRowsOverTheWire)
{
    struct Row {
        QByteArray request;
        QByteArray status;
        QByteArray body;
    };
    const std::vector<Row> rows = {
        {"GET /mcp HTTP/1.1\r\n\r\n", "HTTP/1.1 405 Method Not Allowed", ""},
        {"DELETE /mcp HTTP/1.1\r\n\r\n", "HTTP/1.1 200 OK", ""},
        {"PUT /mcp HTTP/1.1\r\n\r\n", "HTTP/1.1 404 Not Found", "Not Found"},
        {"OPTIONS /stats HTTP/1.1\r\n\r\n", "HTTP/1.1 404 Not Found", "Not Found"},
        {"GET /stats?x=1 HTTP/1.1\r\n\r\n", "HTTP/1.1 404 Not Found", "Not Found"},
        {"POST /mcp HTTP/1.1\r\ncontent-length: 4\r\n\r\n1234", "HTTP/1.1 400 Bad Request", ""},
    };
    for (const Row& row : rows) {
        const auto response = parseResponse(exchange(port, row.request).received);
        EXPECT_EQ(response.statusLine, row.status) << row.request.constData();
        EXPECT_EQ(response.body, row.body) << row.request.constData();
    }
    const auto metrics = parseResponse(exchange(port, "GET /metrics HTTP/1.1\r\n\r\n").received);
    EXPECT_EQ(metrics.header("Content-Type"), "text/plain; version=0.0.4; charset=utf-8");
    EXPECT_TRUE(metrics.body.startsWith("# HELP "));
}

TEST_F(StatsServerTest, SplitRequestIsAnsweredOnceTheBodyIsIn)
{
    const QByteArray body = R"({"jsonrpc":"2.0","id":7,"method":"tools/call","params":{"name":"get_cpu_usage"}})";
    for (const QByteArray& lengthName : {QByteArray("Content-Length"), QByteArray("cOnTeNt-LeNgTh")}) {
        test::ClientPlan plan;
        plan.port = port;
        plan.pieces = {"POST /mcp HTTP/1.1\r\nHost: 127.0.0.1\r", "\n" + lengthName + ": ",
                       QByteArray::number(body.size()) + "\r\n\r", "\n", body.left(10), body.mid(10)};
        auto client = test::startClient(plan);
        const auto response = parseResponse(test::finish(client).received);
        ASSERT_EQ(response.statusLine, "HTTP/1.1 200 OK") << lengthName.constData();
        const auto answer = nlohmann::json::parse(response.body.toStdString());
        EXPECT_EQ(answer["id"], 7);
        EXPECT_EQ(answer["result"]["content"][0]["text"], encodeJSON(test::fullSnapshot().cpu).toStdString());
    }
}

TEST_F(StatsServerTest, ExtraBytesAfterTheBodyDoNotSpoilTheAnswer)
{
    const QByteArray body = R"({"id":1,"method":"ping"})";
    const QByteArray request = "POST /mcp HTTP/1.1\r\nContent-Length: " + QByteArray::number(body.size()) +
                               "\r\n\r\n" + body + QByteArray(100000, 'x');
    const auto response = parseResponse(exchange(port, request).received);
    EXPECT_EQ(response.statusLine, "HTTP/1.1 200 OK");
    EXPECT_EQ(response.body, R"({"id":1,"jsonrpc":"2.0","result":{}})");
}

TEST_F(StatsServerTest, IncompleteOrMalformedRequestsGetNoAnswer)
{
    const std::vector<QByteArray> requests = {
        "GET /stats HTTP/1.1\r\nHost: 127.0", // head never ends
        "POST /mcp HTTP/1.1\r\nContent-Length: 50\r\n\r\n{\"id\":1", // body never completes
        "GARBAGE\r\n\r\n",
        QByteArray("\x00\x01\x02\xff\r\n\r\n", 8),
        "",
    };
    for (const QByteArray& request : requests) {
        test::ClientPlan plan;
        plan.port = port;
        plan.pieces = {request};
        plan.closeAfterSending = true;
        auto client = test::startClient(plan);
        const auto result = test::finish(client);
        EXPECT_TRUE(result.connected);
        EXPECT_TRUE(result.received.isEmpty()) << request.constData();
    }
    // And the server still answers.
    EXPECT_EQ(parseResponse(exchange(port, "GET /stats HTTP/1.1\r\n\r\n").received).statusLine, "HTTP/1.1 200 OK");
}

TEST_F(StatsServerTest, OversizedRequestsAreRefusedWithoutHarm)
{
    // A head that never ends is cut off at the limit rather than buffered.
    auto endless = exchange(port, "GET / HTTP/1.1\r\nX-Pad: " + QByteArray(200000, 'a'));
    EXPECT_TRUE(endless.received.isEmpty());

    // An announced body beyond the limit is refused before it is read.
    auto huge = exchange(port, "POST /mcp HTTP/1.1\r\nContent-Length: 1073741824\r\n\r\n{");
    EXPECT_EQ(parseResponse(huge.received).statusLine, "HTTP/1.1 413 Payload Too Large");

    EXPECT_EQ(parseResponse(exchange(port, "GET / HTTP/1.1\r\n\r\n").received).statusLine, "HTTP/1.1 200 OK");
}

TEST_F(StatsServerTest, SlowAndSilentClientsDoNotDelayOthers)
{
    std::vector<std::future<test::ClientResult>> idle;
    for (int i = 0; i < 20; ++i) {
        test::ClientPlan plan;
        plan.port = port;
        plan.pieces = {"GET /st"};
        plan.readTimeout = std::chrono::milliseconds(3000);
        idle.push_back(test::startClient(plan));
    }
    test::ClientPlan slow;
    slow.port = port;
    slow.pieces = {"GET ", "/stats ", "HTTP/1.1\r\n", "\r\n"};
    slow.pause = std::chrono::milliseconds(500);
    auto slowClient = test::startClient(slow);

    // Answered while twenty connections wait for the rest of their heads.
    const auto prompt = exchange(port, "GET /stats HTTP/1.1\r\n\r\n");
    EXPECT_EQ(parseResponse(prompt.received).statusLine, "HTTP/1.1 200 OK");
    EXPECT_FALSE(slowClient.wait_for(std::chrono::seconds(0)) == std::future_status::ready);

    EXPECT_EQ(parseResponse(test::finish(slowClient).received).statusLine, "HTTP/1.1 200 OK");
    for (auto& client : idle)
        EXPECT_TRUE(test::finish(client).received.isEmpty());
}

TEST_F(StatsServerTest, IPv6LoopbackIsServedWhereTheMachineHasIt)
{
    if (!hasIPv6Loopback())
        GTEST_SKIP() << "no ::1 on this machine";
    test::ClientPlan plan;
    plan.address = QHostAddress(QHostAddress::LocalHostIPv6);
    plan.port = port;
    plan.pieces = {"GET /stats HTTP/1.1\r\n\r\n"};
    auto client = test::startClient(plan);
    EXPECT_EQ(parseResponse(test::finish(client).received).statusLine, "HTTP/1.1 200 OK");
}

TEST_F(StatsServerTest, OnlyLoopbackAddressesListen)
{
    // Any other address of this machine refuses the connection.
    for (const QHostAddress& address : QNetworkInterface::allAddresses()) {
        if (address.isLoopback() || address.protocol() != QAbstractSocket::IPv4Protocol)
            continue;
        test::ClientPlan plan;
        plan.address = address;
        plan.port = port;
        plan.pieces = {"GET /stats HTTP/1.1\r\n\r\n"};
        auto client = test::startClient(plan);
        const auto result = test::finish(client);
        EXPECT_FALSE(result.connected) << address.toString().toStdString();
    }
}

TEST(StatsServerStates, StartTwiceKeepsTheListenerAndStopTwiceIsHarmless)
{
    StatsServer server(0, [] { return test::fullSnapshot(); });
    QSignalSpy running(&server, &StatsServer::isRunningChanged);
    EXPECT_FALSE(server.isRunning());
    EXPECT_EQ(server.port(), 0);
    server.start();
    ASSERT_TRUE(server.isRunning());
    const quint16 first = server.listeningPort();
    server.start();
    EXPECT_EQ(server.listeningPort(), first);
    EXPECT_EQ(running.count(), 1);
    EXPECT_EQ(parseResponse(exchange(first, "GET / HTTP/1.1\r\n\r\n").received).statusLine, "HTTP/1.1 200 OK");

    server.stop();
    server.stop();
    EXPECT_FALSE(server.isRunning());
    EXPECT_EQ(running.count(), 2);
    EXPECT_FALSE(exchange(first, "GET / HTTP/1.1\r\n\r\n").connected);
    EXPECT_FALSE(server.lastError().has_value());
}

TEST(StatsServerStates, BusyPortGivesTheSystemsErrorAndALaterStartRecovers)
{
    QTcpServer squatter;
    ASSERT_TRUE(squatter.listen(QHostAddress::LocalHost, 0));
    const quint16 port = squatter.serverPort();

    StatsServer server(port, [] { return test::fullSnapshot(); });
    QSignalSpy errors(&server, &StatsServer::lastErrorChanged);
    server.start();
    EXPECT_FALSE(server.isRunning());
    ASSERT_TRUE(server.lastError().has_value());
    EXPECT_EQ(*server.lastError(), QStringLiteral("The bound address is already in use"));
    EXPECT_EQ(errors.count(), 1);
    server.stop(); // stopping a server that never ran changes nothing
    EXPECT_TRUE(server.lastError().has_value());

    squatter.close();
    server.start();
    EXPECT_TRUE(server.isRunning());
    EXPECT_FALSE(server.lastError().has_value());
    EXPECT_EQ(server.endpointAddress(), QStringLiteral("http://127.0.0.1:%1/mcp").arg(port));
    EXPECT_EQ(parseResponse(exchange(port, "GET /stats HTTP/1.1\r\n\r\n").received).statusLine, "HTTP/1.1 200 OK");
}

TEST(StatsServerStates, BusyIPv6PortIsAFailureToo)
{
    QTcpServer squatter;
    if (!squatter.listen(QHostAddress::LocalHostIPv6, 0))
        GTEST_SKIP() << "no ::1 on this machine";
    StatsServer server(squatter.serverPort(), [] { return test::fullSnapshot(); });
    server.start();
    EXPECT_FALSE(server.isRunning());
    EXPECT_TRUE(server.lastError().has_value());
    // Nothing is left listening on 127.0.0.1 either.
    EXPECT_FALSE(exchange(squatter.serverPort(), "GET / HTTP/1.1\r\n\r\n").connected);
}

} // namespace
} // namespace tallowmere
