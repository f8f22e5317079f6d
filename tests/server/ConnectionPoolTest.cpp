#include "server/ConnectionPool.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tallowmere {
namespace {

// The client's end of a connection whose other end belongs to the pool.
class ClientEnd {
public:
    explicit ClientEnd(ConnectionPool& pool)
    {
        int fds[2];
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds), 0);
        fd_ = fds[0];
        pool.adopt(fds[1]);
    }
    ~ClientEnd() { ::close(fd_); }

    void send(const QByteArray& bytes) { ASSERT_EQ(::send(fd_, bytes.constData(), bytes.size(), MSG_NOSIGNAL), bytes.size()); }

    // True once the pool has closed its end (after sending whatever it sent).
    bool closedByPool()
    {
        for (;;) {
            pollfd p{fd_, POLLIN, 0};
            if (::poll(&p, 1, 0) <= 0)
                return false;
            char buffer[4096];
            const ssize_t n = ::recv(fd_, buffer, sizeof buffer, MSG_DONTWAIT);
            if (n <= 0)
                return n == 0 || errno != EAGAIN;
            received.append(buffer, n);
        }
    }

    QByteArray received;

private:
    int fd_ = -1;
};

HTTPResponse echoPath(const HTTPRequest& request)
{
    return HTTPResponse::text("200 OK", request.path.toUtf8());
}

TEST(ConnectionPool, ConnectionThatNeverFinishesIsClosedAtItsDeadline)
{
    ConnectionPool::Limits limits;
    limits.deadline = std::chrono::milliseconds(300);
    ConnectionPool pool(echoPath, limits);
    ClientEnd silent(pool);
    ClientEnd dripping(pool);
    dripping.send("GET /a");
    EXPECT_EQ(pool.openConnections(), 2);

    EXPECT_TRUE(test::waitUntil([&] { return silent.closedByPool() && dripping.closedByPool(); }));
    EXPECT_TRUE(silent.received.isEmpty());
    EXPECT_TRUE(dripping.received.isEmpty());
    EXPECT_EQ(pool.openConnections(), 0);
}

TEST(ConnectionPool, NewcomerTakesTheOldestPlaceWhenFull)
{
    ConnectionPool::Limits limits;
    limits.maxConnections = 3;
    ConnectionPool pool(echoPath, limits);
    std::vector<std::unique_ptr<ClientEnd>> waiting;
    for (int i = 0; i < 3; ++i)
        waiting.push_back(std::make_unique<ClientEnd>(pool));
    EXPECT_EQ(pool.openConnections(), 3);

    ClientEnd newcomer(pool);
    EXPECT_EQ(pool.openConnections(), 3);
    EXPECT_TRUE(waiting[0]->closedByPool());
    EXPECT_FALSE(waiting[1]->closedByPool());

    newcomer.send("GET /fresh HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(test::waitUntil([&] { return newcomer.closedByPool(); }));
    EXPECT_TRUE(newcomer.received.endsWith("\r\n\r\n/fresh"));
    EXPECT_EQ(pool.openConnections(), 2);
}

TEST(ConnectionPool, RequestArrivingBeforeAdoptionIsAnsweredAtOnce)
{
    ConnectionPool pool(echoPath);
    int fds[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds), 0);
    const QByteArray request = "GET /early HTTP/1.1\r\n\r\n";
    ASSERT_EQ(::send(fds[0], request.constData(), request.size(), 0), request.size());
    pool.adopt(fds[1]);
    EXPECT_EQ(pool.openConnections(), 0); // answered and closed without waiting for the loop
    char buffer[512];
    const ssize_t n = ::recv(fds[0], buffer, sizeof buffer, 0);
    ASSERT_GT(n, 0);
    EXPECT_TRUE(QByteArray(buffer, n).endsWith("/early"));
    ::close(fds[0]);
}

TEST(ConnectionPool, LargeAnswerIsSentInFullToASlowReader)
{
    const QByteArray big(4 * 1024 * 1024, 'z'); // far beyond a socket buffer
    ConnectionPool pool([&](const HTTPRequest&) { return HTTPResponse::text("200 OK", big); });
    ClientEnd reader(pool);
    reader.send("GET / HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(test::waitUntil([&] { return reader.closedByPool(); }, 20000));
    EXPECT_TRUE(reader.received.endsWith(big));
}

} // namespace
} // namespace tallowmere
