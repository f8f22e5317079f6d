#include "core/PreferencesStore.h"

#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tallowmere;
using tallowmere::test::readFile;
using tallowmere::test::writeFile;

namespace {
struct PreferencesStoreTest : ::testing::Test {
    QTemporaryDir dir;
    QString path() const { return dir.path() + QStringLiteral("/Tallowmere/preferences.json"); }
};
} // namespace

TEST_F(PreferencesStoreTest, TypedReadsTellMissingFromWrongType)
{
    writeFile(dir.path(), QStringLiteral("Tallowmere/preferences.json"),
              R"({"flag": true, "text": "NO", "whole": 42, "fraction": 2.5, "map": {"a": 1}})");
    PreferencesStore store(path());

    EXPECT_EQ(store.readBool(QStringLiteral("flag")).status, ReadStatus::found);
    EXPECT_TRUE(store.readBool(QStringLiteral("flag")).value);
    EXPECT_EQ(store.readBool(QStringLiteral("text")).status, ReadStatus::wrongType);
    EXPECT_EQ(store.readBool(QStringLiteral("absent")).status, ReadStatus::missing);

    EXPECT_EQ(store.readInteger(QStringLiteral("whole")).valueOr(0), 42);
    // A fraction is a number but not an integer.
    EXPECT_EQ(store.readInteger(QStringLiteral("fraction")).status, ReadStatus::wrongType);
    EXPECT_DOUBLE_EQ(store.readDouble(QStringLiteral("fraction")).value, 2.5);
    EXPECT_EQ(store.readString(QStringLiteral("whole")).status, ReadStatus::wrongType);
    EXPECT_EQ(store.readObject(QStringLiteral("map")).value.value(QStringLiteral("a")).toInt(), 1);
}

TEST_F(PreferencesStoreTest, EveryAssignmentIsOnDiskForTheNextStart)
{
    {
        PreferencesStore store(path());
        EXPECT_TRUE(store.setValue(QStringLiteral("menuBarEnabled"), true));
        EXPECT_TRUE(store.setValue(QStringLiteral("wakeScheduleHour"), 6));
    }
    PreferencesStore reopened(path());
    EXPECT_TRUE(reopened.readBool(QStringLiteral("menuBarEnabled")).value);
    EXPECT_EQ(reopened.readInteger(QStringLiteral("wakeScheduleHour")).value, 6);
    // The atomic write leaves no temporary file behind.
    EXPECT_EQ(QDir(dir.path() + QStringLiteral("/Tallowmere")).entryList(QDir::Files),
              QStringList{QStringLiteral("preferences.json")});
}

TEST_F(PreferencesStoreTest, CorruptFileIsKeptAsideAndDefaultsApply)
{
    for (const QByteArray& bad : {QByteArray("{\"menuBarEnabled\": tru"), QByteArray("[1, 2]"), QByteArray("\xff\xfe")}) {
        writeFile(dir.path(), QStringLiteral("Tallowmere/preferences.json"), bad);
        PreferencesStore store(path());
        EXPECT_EQ(store.readBool(QStringLiteral("menuBarEnabled")).status, ReadStatus::missing);
        EXPECT_FALSE(store.lastError().isEmpty());
        EXPECT_EQ(readFile(path() + QStringLiteral(".corrupt")), bad);
        EXPECT_FALSE(QFile::exists(path()));

        // The next write makes a good file again; the kept copy stays.
        EXPECT_TRUE(store.setValue(QStringLiteral("menuBarEnabled"), true));
        EXPECT_TRUE(PreferencesStore(path()).readBool(QStringLiteral("menuBarEnabled")).value);
        EXPECT_EQ(readFile(path() + QStringLiteral(".corrupt")), bad);
    }
}

TEST_F(PreferencesStoreTest, ReadOnlyFolderKeepsValuesAndTheOldFile)
{
    writeFile(dir.path(), QStringLiteral("Tallowmere/preferences.json"), R"({"menuBarEnabled": false})");
    const QString folder = dir.path() + QStringLiteral("/Tallowmere");
    // Readable and enterable by everyone, writable by nobody.
    QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther);
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther);
    QFile::setPermissions(path(), QFile::ReadOwner | QFile::ReadOther);

    // Root writes anywhere, so the store runs in a child that has given up root.
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
            ::_exit(10);
        PreferencesStore store(path());
        if (store.setValue(QStringLiteral("menuBarEnabled"), true))
            ::_exit(11);
        if (!store.lastError().contains(path()))
            ::_exit(12);
        if (!store.readBool(QStringLiteral("menuBarEnabled")).value)
            ::_exit(13);
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "10: cannot drop root, 11: write succeeded, 12: message lacks the path, "
                                         "13: value lost in memory";
    EXPECT_EQ(readFile(path()), QByteArray(R"({"menuBarEnabled": false})"));
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(PreferencesStoreTest, UnwritableLocationKeepsValuesInMemory)
{
    // A regular file where the folder should be: no user, root or not, can write there.
    writeFile(dir.path(), QStringLiteral("blocker"), "x");
    PreferencesStore store(dir.path() + QStringLiteral("/blocker/Tallowmere/preferences.json"));
    EXPECT_FALSE(store.setValue(QStringLiteral("localServerEnabled"), true));
    EXPECT_TRUE(store.lastError().contains(QStringLiteral("cannot save preferences")));
    EXPECT_TRUE(store.readBool(QStringLiteral("localServerEnabled")).value);
}
