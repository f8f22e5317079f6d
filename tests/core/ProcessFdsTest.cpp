#include "core/Directory.h"
#include "core/ProcessFds.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <set>

using namespace tallowmere;

TEST(ProcessFds, PidOfEntryTakesOnlyPlainPositiveNumbers)
{
    EXPECT_EQ(pidOfEntry("812"), 812);
    for (const char* name : {"", "0", "self", "12a", "-3", "+4", "99999999999"})
        EXPECT_FALSE(pidOfEntry(name)) << name;
}

// A /proc-shaped tree: processes 10 and 20 with descriptor links, entries that are no process,
// and process 30 whose fd directory is missing (gone, or another user's).
TEST(ProcessFds, WalkVisitsEveryLinkAndSkipsOnRequest)
{
    QTemporaryDir root;
    QDir dir(root.path());
    for (const char* fds : {"10/fd", "20/fd", "self/fd", "30"})
        ASSERT_TRUE(dir.mkpath(QString::fromLatin1(fds)));
    QFile::link("socket:[77]", root.filePath("10/fd/3"));
    QFile::link("/dev/video0", root.filePath("10/fd/4"));
    QFile::link("/dev/null", root.filePath("20/fd/0"));
    QFile::link("/dev/video1", root.filePath("20/fd/1"));
    QFile::link("socket:[1]", root.filePath("self/fd/0"));

    std::map<int, std::set<std::string>> seen;
    walkProcessFds(root.path().toStdString(), [&](const Directory& proc, int pid, std::string_view target) {
        EXPECT_TRUE(proc);
        seen[pid].insert(std::string(target));
        return FdWalk::next;
    });
    EXPECT_EQ(seen, (std::map<int, std::set<std::string>>{{10, {"socket:[77]", "/dev/video0"}},
                                                        {20, {"/dev/null", "/dev/video1"}}}));

    int visitsOf20 = 0;
    walkProcessFds(root.path().toStdString(), [&](const Directory&, int pid, std::string_view) {
        visitsOf20 += pid == 20;
        return pid == 20 ? FdWalk::skipProcess : FdWalk::next;
    });
    EXPECT_EQ(visitsOf20, 1);

    Directory missing(root.filePath("nonexistent").toStdString());
    EXPECT_FALSE(missing);
    EXPECT_EQ(missing.next(), nullptr);
    EXPECT_EQ(missing.fd(), -1);
}
