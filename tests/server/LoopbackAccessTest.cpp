#include "server/StatsServer.h"
#include "tests/server/LoopbackClient.h"
#include "tests/server/SnapshotSamples.h"

#include <QTcpServer>

#include <gtest/gtest.h>

#include <optional>

namespace tallowmere {
namespace {

// Host and Origin as a browser, a rebound DNS name or a local client would send them, through
// the real server. "{P}" stands for the listening port, "{Q}" for another one.
TEST(LoopbackAccess, OnlyThisMachinesNamesAndPagesAreServed)
{
    StatsServer server(0, [] { return test::fullSnapshot(); });
    server.start();
    ASSERT_TRUE(server.isRunning());
    const quint16 port = server.listeningPort();
    const bool hasIPv6 = QTcpServer().listen(QHostAddress::LocalHostIPv6, 0);

    struct Case {
        const char* request; // request line
        std::optional<QByteArray> host, origin;
        QByteArray status;
        bool echoed = false; // the origin comes back in Access-Control-Allow-Origin
        QByteArray address = "127.0.0.1";
    };
    const QByteArray ok = "200 OK", misdirected = "421 Misdirected Request", forbidden = "403 Forbidden";
    const char* stats = "GET /stats HTTP/1.1";
    const std::vector<Case> cases = {
        // Local clients: curl, agents, Prometheus; an old client with no Host at all.
        {"GET /stats HTTP/1.0", {}, {}, ok},
        {stats, "127.0.0.1:{P}", {}, ok},
        {stats, "localhost:{P}", {}, ok},
        {stats, "LocalHost:{P}", {}, ok},
        {stats, "[::1]:{P}", {}, ok, false, hasIPv6 ? "::1" : "127.0.0.1"},
        // Names that only resolve here through rebinding, and near misses.
        {stats, "evil.example:{P}", {}, misdirected},
        {stats, "127.0.0.1.evil.example:{P}", {}, misdirected},
        {stats, "localhost.evil.example:{P}", {}, misdirected},
        {stats, "localhost.:{P}", {}, misdirected},
        {stats, "[::ffff:127.0.0.1]:{P}", {}, misdirected},
        {stats, "127.0.0.1:{Q}", {}, misdirected},
        {stats, "127.0.0.1:0{P}", {}, misdirected},
        {stats, "127.0.0.1", {}, misdirected},
        {stats, "[::1]", {}, misdirected},
        {stats, "", {}, misdirected},
        {stats, "evil.example:{P}", "http://localhost:{P}", misdirected},
        // Pages served from this machine may read; every other page is refused.
        {stats, "127.0.0.1:{P}", "http://localhost:3000", ok, true},
        {stats, "127.0.0.1:{P}", "http://127.0.0.1", ok, true},
        {stats, "localhost:{P}", "http://[::1]:{P}", ok, true},
        {stats, "127.0.0.1:{P}", "HTTP://LOCALHOST:8080", ok, true},
        {stats, "127.0.0.1:{P}", "null", forbidden},
        {stats, "127.0.0.1:{P}", "", forbidden},
        {stats, "127.0.0.1:{P}", "https://evil.example", forbidden},
        {stats, "127.0.0.1:{P}", "http://127.0.0.1.evil.example", forbidden},
        {stats, "127.0.0.1:{P}", "http://localhost@evil.example", forbidden},
        {stats, "127.0.0.1:{P}", "https://localhost", forbidden},
        {stats, "127.0.0.1:{P}", "http://localhost:99999", forbidden},
        {stats, "127.0.0.1:{P}", "http://localhost:3000/page", forbidden},
        {stats, {}, "http://evil.example", forbidden},
        {"POST /mcp HTTP/1.1", "127.0.0.1:{P}", "http://evil.example", forbidden},
        // Preflight only for this machine's pages; without an Origin it is no preflight.
        {"OPTIONS /mcp HTTP/1.1", "127.0.0.1:{P}", "http://localhost:5173", "204 No Content", true},
        {"OPTIONS /mcp HTTP/1.1", "127.0.0.1:{P}", "https://evil.example", forbidden},
        {"OPTIONS /mcp HTTP/1.1", "127.0.0.1:{P}", {}, "404 Not Found"},
    };
    const auto fill = [&](QByteArray text) {
        return text.replace("{P}", QByteArray::number(port)).replace("{Q}", QByteArray::number(port + 1));
    };
    for (const Case& c : cases) {
        QByteArray head = QByteArray(c.request) + "\r\n";
        if (c.host)
            head += "Host: " + fill(*c.host) + "\r\n";
        if (c.origin)
            head += "Origin: " + fill(*c.origin) + "\r\n";
        if (head.startsWith("POST"))
            head += "Content-Length: 2\r\n\r\n{}";
        else
            head += "\r\n";
        SCOPED_TRACE(head.constData());
        const test::ClientResult result = test::exchange(port, head, c.address);
        EXPECT_EQ(result.status(), "HTTP/1.1 " + c.status);
        const QByteArray responseHead = result.received.left(result.received.indexOf("\r\n\r\n") + 2);
        const QByteArray allow = c.echoed ? "\r\nAccess-Control-Allow-Origin: " + fill(*c.origin) + "\r\n" : "";
        EXPECT_EQ(responseHead.contains("\r\nAccess-Control-Allow-Origin:"), c.echoed);
        EXPECT_TRUE(responseHead.contains(allow));
        EXPECT_TRUE(responseHead.contains("\r\nVary: Origin\r\n"));
        EXPECT_EQ(responseHead.contains("\r\nAccess-Control-Allow-Methods: GET, POST, DELETE\r\n"),
                  c.status.startsWith("204"));
    }
}

} // namespace
} // namespace tallowmere
