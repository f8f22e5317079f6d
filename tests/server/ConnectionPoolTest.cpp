#include "server/ConnectionPool.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tallowmere {
namespace {

// The client's end of a socket pair whose other end the pool owns.
struct ClientEnd {
    int fd = -1;
    QByteArray received;

    explicit ClientEnd(ConnectionPool& pool, const QByteArray& early = {})
    {
        int fds[2];
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds), 0);
        fd = fds[0];
        ::send(fd, early.constData(), static_cast<size_t>(early.size()), 0);
        pool.adopt(fds[1]);
    }
    ~ClientEnd() { ::close(fd); }

    // True once the pool closed its end; collects what it sent before.
    bool closedByPool()
    {
        char buffer[65536];
        for (pollfd p{fd, POLLIN, 0}; ::poll(&p, 1, 0) > 0;) {
            const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
            if (n <= 0)
                return true;
            received.append(buffer, n);
        }
        return false;
    }
};

TEST(ConnectionPool, DeadlinesAndTheCapCloseWaitingConnections)
{
    ConnectionPool pool([](const HTTPRequest& request) { return HTTPResponse::text("200 OK", request.path.toUtf8()); },
                        {{}, 3, std::chrono::milliseconds(300)});
    ClientEnd silent(pool), dripping(pool, "GET /a"), third(pool);
    ClientEnd early(pool, "GET /early HTTP/1.1\r\n\r\n"); // answered at once, no place taken
    EXPECT_TRUE(early.closedByPool());
    EXPECT_TRUE(early.received.endsWith("\r\n\r\n/early"));
    EXPECT_EQ(pool.openConnections(), 3);

    ClientEnd newcomer(pool); // the oldest waiting one gives way
    EXPECT_TRUE(silent.closedByPool());
    EXPECT_EQ(pool.openConnections(), 3);
    EXPECT_TRUE(test::waitUntil([&] { return dripping.closedByPool() && third.closedByPool() && newcomer.closedByPool(); }));
    EXPECT_TRUE(silent.received.isEmpty() && dripping.received.isEmpty());
    EXPECT_EQ(pool.openConnections(), 0);
}

TEST(ConnectionPool, LargeAnswerReachesASlowReaderInFull)
{
    const QByteArray big(4 * 1024 * 1024, 'z'); // far beyond a socket buffer
    ConnectionPool pool([&](const HTTPRequest&) { return HTTPResponse::text("200 OK", big); });
    ClientEnd reader(pool, "GET / HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(test::waitUntil([&] { return reader.closedByPool(); }, 20000));
    EXPECT_TRUE(reader.received.endsWith(big));
}

} // namespace
} // namespace tallowmere
