#include "monitors/NetworkFlowSource.h"
#include "monitors/NetworkFlows.h"
#include "monitors/SockDiagDestroyListener.h"

#include "tests/support/LoopbackConnection.h"

#include <QTemporaryDir>

#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using test::LoopbackConnection;

// Between dumps only the close notices are read: the next dump comes when the count of opened
// connections moved or the refresh interval is over.
TEST(NetworkFlowSource, DumpsOnlyWhenAConnectionOpenedOrTheRefreshIsDue)
{
    QTemporaryDir proc;  // one process, holding the client end of the connection
    auto opened = [&](int count) {
        test::writeFile(proc.path(), "net/snmp",
                        QStringLiteral("Tcp: RtoMin ActiveOpens PassiveOpens\nTcp: 200 %1 3\n").arg(count).toUtf8());
    };
    auto now = std::chrono::steady_clock::time_point{};
    NetworkFlowSource source(proc.path().toStdString(), std::nullopt, [&] { return now; });
    source.setRefreshInterval(std::chrono::seconds(10));
    opened(5);
    source.sample();
    std::optional<LoopbackConnection> connection(std::in_place);
    struct stat client {};
    ::fstat(connection->client.get(), &client);
    test::writeFile(proc.path(), "4242/comm", "tm-fixture\n");
    std::filesystem::create_directory(proc.filePath("4242/fd").toStdString());
    std::filesystem::create_symlink("socket:[" + std::to_string(client.st_ino) + "]", proc.filePath("4242/fd/3").toStdString());
    source.sample();
    EXPECT_EQ(source.dumpCount(), 1);
    opened(6);
    now += NetworkSocketOwners::kFullWalkInterval;
    source.sample();
    EXPECT_EQ(source.dumpCount(), 2);

    connection->exchange(1000, 2000);
    connection.reset();
    const FlowKey key{"tm-fixture.4242", LoopbackConnection::kServerAddress};
    ByteCounts counted;
    EXPECT_TRUE(test::waitUntil([&] {
        const ByteCounts more = source.sample()->deltas[key];
        counted = {counted.inBytes + more.inBytes, counted.outBytes + more.outBytes};
        return counted == ByteCounts{2000, 1000};
    })) << "in " << counted.inBytes << " out " << counted.outBytes;
    EXPECT_EQ(source.dumpCount(), 2);
    now += std::chrono::seconds(10);
    source.sample();
    EXPECT_EQ(source.dumpCount(), 3);
}

TEST(NetworkFlowSource, CountsOpenedConnectionsFromTheSnmpTable)
{
    EXPECT_EQ(parseTcpOpens("Ip: Forwarding DefaultTTL\nIp: 1 64\nTcp: RtoAlgorithm RtoMin ActiveOpens PassiveOpens "
                            "AttemptFails\nTcp: 1 200 4398 4031 346\nUdp: InDatagrams\nUdp: 5\n"),
              8429u);
    EXPECT_EQ(parseTcpOpens("Tcp: RtoAlgorithm ActiveOpens\nTcp: 1 4398\n"), std::nullopt);
    EXPECT_EQ(parseTcpOpens("Tcp: ActiveOpens PassiveOpens\nTcp: 12 x\n"), std::nullopt);
    EXPECT_EQ(parseTcpOpens(""), std::nullopt);
}


// A listener on 127.0.0.2 that drains every connection.
struct Sink {
    UniqueFd listener{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    sockaddr_in address{};
    std::thread thread;

    Sink()
    {
        address.sin_family = AF_INET;
        inet_pton(AF_INET, LoopbackConnection::kServerAddress, &address.sin_addr);
        socklen_t length = sizeof address;
        ::bind(listener.get(), reinterpret_cast<sockaddr*>(&address), length);
        ::listen(listener.get(), 8);
        ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &length);
        thread = std::thread([this] {
            std::vector<std::thread> readers;
            for (int fd; (fd = ::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC)) >= 0;)
                readers.emplace_back([fd] {
                    char buffer[4096];
                    while (::recv(fd, buffer, sizeof buffer, 0) > 0) {
                    }
                    ::close(fd);
                });
            for (std::thread& reader : readers)
                reader.join();
        });
    }
    ~Sink()
    {
        ::shutdown(listener.get(), SHUT_RDWR);
        thread.join();
    }
};

// A child process connected to the sink that sends on command: a byte count to send, 0 to
// close and exit, -1 to hand the connection to a grandchild (which then takes the commands).
class Sender {
public:
    Sender(const Sink& sink, const char* name)
    {
        if (::pipe(commands_) != 0 || ::pipe(acks_) != 0)
            throw std::runtime_error("pipe");
        pid_ = ::fork();
        if (pid_ == 0)
            run(sink, name);
    }
    // Returns once the child has done it.
    void command(std::int64_t value)
    {
        [[maybe_unused]] ssize_t n = ::write(commands_[1], &value, sizeof value);
        char ack;
        n = ::read(acks_[0], &ack, 1);
    }
    // Waits until the child itself has exited (after a hand-over the grandchild carries on).
    void reap()
    {
        if (pid_ > 0)
            ::waitpid(std::exchange(pid_, -1), nullptr, 0);
    }
    ~Sender()
    {
        reap();
        for (int fd : {commands_[0], commands_[1], acks_[0], acks_[1]})
            ::close(fd);
    }
    pid_t pid() const { return pid_; }

private:
    [[noreturn]] void run(const Sink& sink, const char* name)
    {
        ::prctl(PR_SET_NAME, name);
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        ::connect(fd, reinterpret_cast<const sockaddr*>(&sink.address), sizeof sink.address);
        std::vector<char> buffer(64 * 1024, 'x');
        for (std::int64_t value; ::read(commands_[0], &value, sizeof value) == sizeof value;) {
            if (value == -1) {
                if (::fork() != 0)
                    ::_exit(0);  // the grandchild holds the connection from here on
                // Acknowledged only once named, so no round can see the heir under the old name.
                ::prctl(PR_SET_NAME, "tm-heir");
                ::write(acks_[1], "k", 1);
                continue;
            }
            for (std::int64_t left = value; left > 0;)
                left -= ::send(fd, buffer.data(), std::min<std::size_t>(left, buffer.size()), MSG_NOSIGNAL);
            if (value == 0)
                ::close(fd);
            ::write(acks_[1], "k", 1);
            if (value == 0)
                ::_exit(0);
        }
        ::_exit(0);
    }
    int commands_[2];
    int acks_[2];
    pid_t pid_ = -1;
};

// Bytes sent to the sink per process label, summed over samples until `done` holds.
struct Tally {
    NetworkFlowSource& source;
    std::map<QString, std::uint64_t> out = {};
    void sample()
    {
        if (auto taken = source.sample())
            for (const auto& [key, bytes] : taken->deltas)
                if (key.remoteIP == LoopbackConnection::kServerAddress)
                    out[applicationName(key.processKey)] += bytes.outBytes;
    }
};

TEST(NetworkFlowSource, ChildrenThatExitBetweenRoundsOrHandTheirSocketOnAreCountedToTheLastByte)
{
    Sink sink;
    auto now = std::chrono::steady_clock::time_point{};
    NetworkFlowSource source("/proc", std::nullopt, [&] { return now; });
    Tally tally{source};
    // Every round may walk all processes: the children are new to it each time.
    auto round = [&] {
        now += NetworkSocketOwners::kFullWalkInterval;
        tally.sample();
    };
    round();  // the baseline: the children are born after it

    Sender leaver(sink, "tm-leaver");
    Sender handing(sink, "tm-hander");
    leaver.command(100'000);
    handing.command(30'000);
    round();
    // The leaver sends more and exits before the next round; only its close notice tells.
    leaver.command(250'000);
    leaver.command(0);
    handing.command(-1);
    handing.reap();
    handing.command(7'000);
    round();
    EXPECT_EQ(tally.out["tm-hander"], 30'000u);
    EXPECT_EQ(tally.out["tm-heir"], 7'000u) << "bytes after the hand-over count for the process holding it";
    handing.command(0);
    // Rounds apart as they are in the program: the close notice reaches its thread in its own
    // time, and a socket gone from the dump waits only a few rounds for it.
    EXPECT_TRUE(test::waitUntil([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        round();
        return tally.out["tm-leaver"] >= 350'000;
    }));
    EXPECT_EQ(tally.out["tm-leaver"], 350'000u);
}

TEST(SockDiagDestroyListener, ReportsAClosedConnectionWithItsFinalCounts)
{
    SockDiagDestroyListener listener;
    ASSERT_TRUE(listener.isListening());
    std::uint64_t cookie = 0;
    {
        LoopbackConnection connection;
        connection.exchange(12'345, 678);
        SockDiagSocket diag;
        const auto records = diag.dumpAllTcp();
        ASSERT_TRUE(records.has_value());
        // Matched by inode: other programs on the machine talk to the same address.
        struct stat client {};
        ::fstat(connection.client.get(), &client);
        for (const SockDiagRecord& record : *records)
            if (record.inode == client.st_ino)
                cookie = record.cookie;
    }
    ASSERT_NE(cookie, 0u);
    std::optional<SockDiagRecord> closed;
    ASSERT_TRUE(test::waitUntil([&] {
        for (const SockDiagRecord& record : listener.take())
            if (record.cookie == cookie)
                closed = record;
        return closed.has_value();
    }));
    EXPECT_EQ(closed->inode, 0u);
    EXPECT_EQ(closed->bytes, (ByteCounts{678, 12'345}));
}

} // namespace
} // namespace tallowmere
