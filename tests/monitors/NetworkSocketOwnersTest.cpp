#include "monitors/NetworkSocketOwners.h"

#include "tests/support/TestSupport.h"

#include <QDir>
#include <QTemporaryDir>

#include <filesystem>

#include <sys/stat.h>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

struct Inodes : std::vector<LiveSocket> {
    Inodes(std::initializer_list<std::uint64_t> inodes)
    {
        for (const std::uint64_t inode : inodes)
            push_back({inode, std::nullopt});
    }
};

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
    NetworkSocketOwners owners(proc.path(), std::nullopt, [&] { return now; });
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

TEST(NetworkSocketOwners, LooksInTheSocketsCgroupBeforeWalkingEveryProcess)
{
    ProcTree proc;
    proc.process(100, "init", {{3, "socket:[6001]"}});
    proc.process(400, "Web Content", {{7, "socket:[8001]"}});
    QTemporaryDir cgroups;
    test::writeFile(cgroups.path(), "cgroup.procs", "1\n100\n");
    test::writeFile(cgroups.path(), "user.slice/app-web.scope/cgroup.procs", "401\nnot a pid\n400\n");
    test::writeFile(cgroups.path(), "user.slice/cgroup.procs", "");
    // A group's id is the inode number of its folder.
    auto idOf = [&](const char* folder) {
        struct stat info {};
        ::stat(cgroups.filePath(folder).toLocal8Bit().constData(), &info);
        return static_cast<std::uint64_t>(info.st_ino);
    };
    NetworkSocketOwners owners(proc.path(), cgroups.path().toStdString());

    std::vector<LiveSocket> live{{6001, idOf(".")}, {8001, idOf("user.slice/app-web.scope")}};
    owners.update(live);
    EXPECT_EQ(owners.scanCount(), 0) << "no walk of every process";
    ASSERT_NE(owners.labelOf(8001), nullptr);
    EXPECT_EQ(*owners.labelOf(8001), "Web Content.400");
    ASSERT_NE(owners.labelOf(6001), nullptr);

    // A group that says nothing about the socket leaves it to the walk of every process.
    proc.process(500, "ssh", {{3, "socket:[9001]"}});
    live.push_back({9001, idOf("user.slice")});
    owners.update(live);
    EXPECT_EQ(owners.scanCount(), 1);
    EXPECT_NE(owners.labelOf(9001), nullptr);
}

TEST(NetworkSocketOwners, ReadsCgroupProcessLists)
{
    EXPECT_EQ(parseCgroupProcs("12\n\n7x\n0\n345\n"), (std::vector<int>{12, 345}));
}

} // namespace
} // namespace tallowmere
