#include "core/PreferencesStore.h"

#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

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

TEST_F(PreferencesStoreTest, UnwritableLocationKeepsValuesInMemory)
{
    // A regular file where the folder should be: no user, root or not, can write there.
    writeFile(dir.path(), QStringLiteral("blocker"), "x");
    const QString unwritable = dir.path() + QStringLiteral("/blocker/Tallowmere/preferences.json");
    PreferencesStore store(unwritable);
    EXPECT_FALSE(store.setValue(QStringLiteral("localServerEnabled"), true));
    EXPECT_TRUE(store.lastError().contains(QStringLiteral("cannot save preferences to ") + unwritable));
    EXPECT_TRUE(store.readBool(QStringLiteral("localServerEnabled")).value);
}
