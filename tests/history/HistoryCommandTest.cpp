#include "history/HistoryCommand.h"

#include "tests/history/HistoryTestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

constexpr std::int64_t kNow = 1'700'000'000;

TEST(HistoryCommand, PrintsTheCardsDataOfARangeWithoutChangingTheFile)
{
    QTemporaryDir dir;
    {
        NetworkUsageStore store(dir.path(), test::stoppedClock(kNow));
        store.record({{"firefox", "93.184.216.34", "example.org", 5000, 700}, {"ssh", "10.0.0.2", "10.0.0.2", 10, 20}},
                     fromUnixSeconds(kNow - 3 * 86400));
        store.record({{"firefox", "93.184.216.34", "example.org", 1, 1}}, fromUnixSeconds(kNow - 40 * 86400));
    }
    const QString file = dir.filePath("network-usage.sqlite");
    const auto sizeBefore = QFileInfo(file).size();

    const HistoryCommandResult result = runHistoryCommand("7d", dir.path(), test::stoppedClock(kNow));
    ASSERT_EQ(result.status, 0) << qPrintable(result.error);
    const QJsonObject document = QJsonDocument::fromJson(result.json).object();
    EXPECT_EQ(document["range"].toString(), "7D");
    EXPECT_EQ(document["buckets"].toArray().size(), 57);
    EXPECT_EQ(document["downloaded"].toInteger(), 5010);
    const QJsonArray apps = document["apps"].toArray();
    ASSERT_EQ(apps.size(), 2);
    const QJsonObject firefox = apps[0].toObject();
    EXPECT_EQ(firefox["name"].toString(), "firefox");
    EXPECT_EQ(firefox["bytesOut"].toInteger(), 700);
    EXPECT_EQ(firefox["endpoints"].toArray()[0].toObject()["host"].toString(), "example.org");
    EXPECT_EQ(QFileInfo(file).size(), sizeBefore);

    const HistoryCommandResult unknown = runHistoryCommand("2W", dir.path(), test::stoppedClock(kNow));
    EXPECT_EQ(unknown.status, 1);
    EXPECT_TRUE(unknown.error.contains("1H, 24H, 7D or 30D")) << qPrintable(unknown.error);
}

} // namespace
} // namespace tallowmere
