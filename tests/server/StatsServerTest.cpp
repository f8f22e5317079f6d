#include "server/MetricsText.h"
#include "server/StatsServer.h"
#include "tests/server/LoopbackClient.h"
#include "tests/server/SnapshotSamples.h"

#include <QSignalSpy>
#include <QTcpServer>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using test::exchange;
using std::chrono::milliseconds;

class StatsServerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        server.start();
        ASSERT_TRUE(server.isRunning());
        port = server.listeningPort();
    }
    StatsServer server{0, [] { return test::fullSnapshot(); }};
    quint16 port = 0;
};

TEST_F(StatsServerTest, EveryRouteOverTheWire)
{
    const HTTPResponse snapshot = HTTPResponse::json(encodeJSON(test::fullSnapshot()));
    const HTTPResponse notFound = HTTPResponse::text("404 Not Found", "Not Found");
    const QByteArray rpc = R"({"method":"notifications/initialized"})";
    const QByteArray notification = "\r\nContent-Length: " + QByteArray::number(rpc.size()) + "\r\n\r\n" + rpc;
    const std::vector<std::pair<QByteArray, HTTPResponse>> rows = {
        {"GET /stats HTTP/1.1\r\n\r\n", snapshot},
        {"GET / HTTP/1.1\r\n\r\n", snapshot},
        {"GET /metrics HTTP/1.1\r\n\r\n",
         {"200 OK", "text/plain; version=0.0.4; charset=utf-8", metricsText(test::fullSnapshot())}},
        {"GET /stats?x=1 HTTP/1.1\r\n\r\n", notFound},
        {"get /stats HTTP/1.1\r\n\r\n", notFound},
        {"GET /mcp?x=1 HTTP/1.1\r\n\r\n", HTTPResponse::text("405 Method Not Allowed")},
        {"DELETE /mcp HTTP/1.1\r\n\r\n", HTTPResponse::text("200 OK")},
        {"PUT /mcp HTTP/1.1\r\n\r\n", notFound},
        {"OPTIONS /mcp HTTP/1.1\r\n\r\n", notFound},
        {"POST /mcp/x HTTP/1.1" + notification, HTTPResponse::text("202 Accepted")},
        {"POST /stats HTTP/1.1" + notification, notFound},
    };
    for (const auto& [request, expected] : rows)
        EXPECT_EQ(exchange(port, request).received, frameResponse(expected)) << request.constData();
}

TEST_F(StatsServerTest, SplitRequestIsAnsweredOnceTheBodyIsIn)
{
    const QByteArray body = R"({"id":7,"method":"ping"})";
    for (const QByteArray& name : {QByteArray("Content-Length"), QByteArray("cOnTeNt-LeNgTh")}) {
        auto client = test::startClient({port, {"POST /mcp HTTP/1.1\r\nHost: localhost:" + QByteArray::number(port) + "\r", "\n" + name + ": 24\r\n\r", "\n",
                                                body.left(10), body.mid(10) + QByteArray(100000, 'x')}});
        const test::ClientResult response = test::finish(client);
        EXPECT_EQ(response.status(), "HTTP/1.1 200 OK") << name.constData();
        EXPECT_EQ(response.body(), R"({"id":7,"jsonrpc":"2.0","result":{}})"); // the extra bytes spoil nothing
    }
}

TEST_F(StatsServerTest, BadInputGetsNoAnswerAndHarmsNoOne)
{
    const std::vector<QByteArray> unanswered = {
        "GET /stats HTTP/1.1\r\nHost: 127.0",                      // partial head, then close
        "POST /mcp HTTP/1.1\r\nContent-Length: 50\r\n\r\n{\"id\"", // body never completes
        "GARBAGE\r\n\r\n", QByteArray("\x00\x01\xff\r\n\r\n", 7), "",
        "GET / HTTP/1.1\r\nX-Pad: " + QByteArray(200000, 'a'), // head beyond the limit
    };
    for (const QByteArray& request : unanswered) {
        auto client = test::startClient({port, {request}, {}, true});
        EXPECT_TRUE(test::finish(client).received.isEmpty()) << request.left(30).constData();
    }
    EXPECT_EQ(exchange(port, "POST /mcp HTTP/1.1\r\nContent-Length: 1073741824\r\n\r\n{").status(),
              "HTTP/1.1 413 Payload Too Large");

    // Twenty silent clients and one slow one do not delay a prompt one.
    std::vector<std::future<test::ClientResult>> idle;
    for (int i = 0; i < 20; ++i)
        idle.push_back(test::startClient({port, {"GET /st"}, {}, false, milliseconds(2000)}));
    auto slow = test::startClient({port, {"GET ", "/stats ", "HTTP/1.1\r\n", "\r\n"}, milliseconds(500)});
    EXPECT_EQ(exchange(port, "GET /stats HTTP/1.1\r\n\r\n").status(), "HTTP/1.1 200 OK");
    EXPECT_NE(slow.wait_for(std::chrono::seconds(0)), std::future_status::ready);
    EXPECT_EQ(test::finish(slow).status(), "HTTP/1.1 200 OK");
    for (auto& client : idle)
        EXPECT_TRUE(test::finish(client).received.isEmpty());
}

TEST_F(StatsServerTest, BoundToLoopbackOnlyWithIPv6WhereTheMachineHasIt)
{
    if (QTcpServer probe; probe.listen(QHostAddress::LocalHostIPv6, 0)) {
        EXPECT_EQ(exchange(port, "GET / HTTP/1.1\r\n\r\n", "::1").status(), "HTTP/1.1 200 OK");
    }
    // Listening on every address would accept this one too.
    EXPECT_FALSE(exchange(port, "GET / HTTP/1.1\r\n\r\n", "127.0.0.2").connected);
}

TEST(StatsServerStates, StartAndStopAreIdempotent)
{
    StatsServer server(0, [] { return test::fullSnapshot(); });
    QSignalSpy running(&server, &StatsServer::isRunningChanged);
    server.start();
    const quint16 port = server.listeningPort();
    server.start();
    EXPECT_EQ(server.listeningPort(), port);
    EXPECT_EQ(running.count(), 1);
    server.stop();
    server.stop();
    EXPECT_FALSE(server.isRunning());
    EXPECT_EQ(running.count(), 2);
    EXPECT_FALSE(exchange(port, "GET / HTTP/1.1\r\n\r\n").connected);
}

TEST(StatsServerStates, BusyPortGivesTheSystemsErrorAndALaterStartRecovers)
{
    for (const auto address : {QHostAddress::LocalHost, QHostAddress::LocalHostIPv6}) {
        QTcpServer squatter;
        if (!squatter.listen(address, 0))
            continue; // no ::1 here
        const quint16 port = squatter.serverPort();
        StatsServer server(port, [] { return test::fullSnapshot(); });
        server.start();
        EXPECT_FALSE(server.isRunning());
        EXPECT_EQ(server.lastError(), QStringLiteral("The bound address is already in use"));
        auto nobody = test::startClient({port, {"GET / HTTP/1.1\r\n\r\n"}, {}, false, milliseconds(300)});
        EXPECT_TRUE(test::finish(nobody).received.isEmpty()); // the squatter holds it, not us
        squatter.close();
        server.start();
        EXPECT_TRUE(server.isRunning());
        EXPECT_FALSE(server.lastError().has_value());
        EXPECT_EQ(exchange(port, "GET / HTTP/1.1\r\n\r\n").status(), "HTTP/1.1 200 OK");
        EXPECT_EQ(server.endpointAddress(), QStringLiteral("http://127.0.0.1:%1/mcp").arg(port));
    }
}

} // namespace
} // namespace tallowmere
