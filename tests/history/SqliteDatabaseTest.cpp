#include "history/SqliteDatabase.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

TEST(SqliteDatabase, BindsStepsAndReadsColumnsIncludingNull)
{
    auto db = SqliteDatabase::open(":memory:");
    ASSERT_TRUE(db);
    ASSERT_TRUE(db->exec("CREATE TABLE t (n INTEGER, s TEXT)"));
    SqliteStatement insert = db->prepare("INSERT INTO t VALUES (?, ?)");
    ASSERT_TRUE(insert);
    insert.bind(1, std::int64_t{9'000'000'000'000});
    insert.bind(2, QStringLiteral("Gr\u00fc\u00dfe"));
    insert.step();
    insert.reset();
    insert.bind(1, std::int64_t{-1});
    insert.bind(2, std::string_view("plain"));
    insert.step();
    db->exec("INSERT INTO t VALUES (0, NULL)");

    SqliteStatement select = db->prepare("SELECT n, s FROM t ORDER BY n DESC");
    ASSERT_TRUE(select.step());
    EXPECT_EQ(select.columnInt64(0), 9'000'000'000'000);
    EXPECT_EQ(select.columnText(1), QStringLiteral("Gr\u00fc\u00dfe"));
    ASSERT_TRUE(select.step());
    EXPECT_EQ(select.columnText(1), std::nullopt);
    ASSERT_TRUE(select.step());
    EXPECT_EQ(select.columnText(1), QStringLiteral("plain"));
    EXPECT_FALSE(select.step());

    EXPECT_FALSE(db->prepare("SELECT nonsense FROM nowhere"));
    EXPECT_FALSE(db->lastError().isEmpty());
}

TEST(SqliteDatabase, TransactionRollsBackUnlessCommitted)
{
    auto db = SqliteDatabase::open(":memory:");
    ASSERT_TRUE(db);
    db->exec("CREATE TABLE t (n INTEGER)");
    {
        SqliteTransaction transaction(*db);
        db->exec("INSERT INTO t VALUES (1)");
    }
    {
        SqliteTransaction transaction(*db);
        db->exec("INSERT INTO t VALUES (2)");
        EXPECT_TRUE(transaction.commit());
        EXPECT_FALSE(transaction.commit());
    }
    SqliteStatement count = db->prepare("SELECT group_concat(n) FROM t");
    ASSERT_TRUE(count.step());
    EXPECT_EQ(count.columnText(0), QStringLiteral("2"));
}

TEST(SqliteDatabase, OpenFailureSaysWhy)
{
    QTemporaryDir dir;
    QString error;
    // A path below a regular file can never be created, even with privileges.
    EXPECT_TRUE(QFile(dir.filePath("file")).open(QIODevice::WriteOnly));
    EXPECT_FALSE(SqliteDatabase::open(dir.filePath("file/db.sqlite"), &error));
    EXPECT_FALSE(error.isEmpty());
}

TEST(SqliteDatabase, MovedFromObjectsOwnNothing)
{
    auto db = SqliteDatabase::open(":memory:");
    ASSERT_TRUE(db);
    SqliteDatabase moved = std::move(*db);
    EXPECT_EQ(db->handle(), nullptr);
    SqliteStatement statement = moved.prepare("SELECT 1");
    SqliteStatement other = std::move(statement);
    EXPECT_FALSE(statement.valid());
    ASSERT_TRUE(other.step());
    EXPECT_EQ(other.columnInt64(0), 1);
}

} // namespace
} // namespace tallowmere
