#include "monitors/NetworkSocketOwners.h"

#include "tests/support/TestSupport.h"

#include <QDir>
#include <QTemporaryDir>

#include <filesystem>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using Inodes = std::vector<std::uint64_t>;

// A /proc lookalike: process folders with comm files and fd links.
class ProcTree {
public:
    void process(int pid, const char* comm, std::initializer_list<std::pair<int, std::string>> fds)
    {
        const QString dir = QString::number(pid);
        test::writeFile(root_.path(), dir + "/comm", QByteArray(comm) + '\n');
        QDir(root_.path()).mkpath(dir + "/fd");
        for (const auto& [fd, target] : fds)
            std::filesystem::create_symlink(target, path() + "/" + std::to_string(pid) + "/fd/" + std::to_string(fd));
    }
    void end(int pid) { QDir(root_.path() + '/' + QString::number(pid)).removeRecursively(); }
    std::string path() const { return root_.path().toStdString(); }

private:
    QTemporaryDir root_;
};

TEST(NetworkSocketOwners, ParsesLinks)
{
    EXPECT_EQ(socketInodeOfLink("socket:[12345]"), 12345u);
    for (const char* other : {"socket:[]", "socket:[12a]", "pipe:[12345]", "/dev/null"})
        EXPECT_EQ(socketInodeOfLink(other), 0u) << other;
}

TEST(NetworkSocketOwners, FindsOwnersInRecentProcessesFirstAndWalksEveryProcessAtMostOncePerInterval)
{
    ProcTree proc;
    proc.process(100, "Web Content", {{3, "socket:[5001]"}, {4, "/dev/null"}, {5, "socket:[5002]"}});
    proc.process(200, "curl", {{3, "socket:[6001]"}, {4, "pipe:[77]"}});
    test::writeFile(QString::fromStdString(proc.path()), "self/comm", "not a pid\n");
    auto now = std::chrono::steady_clock::time_point{};
    NetworkSocketOwners owners(proc.path(), [&] { return now; });
    auto label = [&](std::uint64_t inode) { return owners.labelOf(inode) ? *owners.labelOf(inode) : QString(); };

    owners.update(Inodes{5001, 5002, 6001, 9999});
    EXPECT_EQ(owners.scanCount(), 1);
    EXPECT_EQ(label(5001), "Web Content.100");
    EXPECT_EQ(label(5002), "Web Content.100");
    EXPECT_EQ(label(6001), "curl.200");
    // Held by nobody we can see (another user's process): unattributed, and remembered as such.
    EXPECT_EQ(owners.labelOf(9999), nullptr);

    // A new socket of a process that held sockets before is found without walking everything.
    proc.process(200, "curl", {{5, "socket:[6002]"}});
    owners.update(Inodes{5001, 6001, 6002, 9999});
    EXPECT_EQ(owners.scanCount(), 1);
    EXPECT_EQ(label(6002), "curl.200");
    EXPECT_EQ(owners.labelOf(5002), nullptr) << "a socket gone from the dump is forgotten";

    // A new process is found by the next full walk, which waits for its interval.
    proc.process(300, "ssh", {{3, "socket:[7001]"}});
    owners.update(Inodes{5001, 6001, 7001});
    EXPECT_EQ(owners.labelOf(7001), nullptr);
    now += NetworkSocketOwners::kFullWalkInterval;
    owners.update(Inodes{5001, 6001, 7001});
    EXPECT_EQ(owners.scanCount(), 2);
    EXPECT_EQ(label(7001), "ssh.300");

    // The owner ended and its child kept the inherited socket: asked again, not the dead label.
    proc.end(100);
    proc.process(101, "sleep", {{0, "socket:[5001]"}});
    now += NetworkSocketOwners::kFullWalkInterval;
    owners.update(Inodes{5001, 6001, 7001});
    EXPECT_EQ(owners.scanCount(), 3);
    EXPECT_EQ(label(5001), "sleep.101");
}

} // namespace
} // namespace tallowmere
