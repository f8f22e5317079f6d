#include "server/JSONText.h"
#include "server/StatsSnapshot.h"
#include "server/MetricsText.h"
#include "tests/server/SnapshotSamples.h"
#include "tests/support/CommaLocale.h"

#include <QLocale>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>

namespace tallowmere {
namespace {

TEST(StatsSnapshotEncoding, PrettyPrintedWithSortedKeysAtEveryLevel)
{
    EXPECT_EQ(encodeJSON(StatsSnapshot::CPU{12.5, 8.25, 4.25}),
              "{\n  \"systemPercent\" : 4.25,\n  \"usagePercent\" : 12.5,\n  \"userPercent\" : 8.25\n}");
    const QByteArray text = encodeJSON(test::fullSnapshot());
    qsizetype at = 0;
    for (const char* key : {"\n  \"battery\" : {\n    \"cycleCount\"", "\n  \"cpu\" : {", "\n  \"disk\" : {",
                            "\n  \"memory\" : {", "\n  \"network\" : {", "\n  \"system\" : {\n    \"computerName\"",
                            "\"cpuBrand\"", "\n  \"timestamp\" : \"2026-03-01T09:15:42Z\"\n}"}) {
        const qsizetype next = text.indexOf(key, at);
        EXPECT_GT(next, at) << key;
        at = next;
    }
    EXPECT_EQ(nlohmann::json::parse(text.toStdString()), toJSON(test::fullSnapshot()));
}

TEST(StatsSnapshotEncoding, NumbersAtFullPrecisionInShortestForm)
{
    StatsSnapshot::Memory memory{0.1 + 0.2, 100, 1e21, 5e-324, 15.6};
    const QByteArray text = encodeJSON(memory);
    for (const char* expected : {"\"usagePercent\" : 0.30000000000000004", "\"usedGB\" : 100,",
                                 "\"freeGB\" : 1e+21,", "\"totalGB\" : 5e-324,", "\"activeGB\" : 15.6,"})
        EXPECT_TRUE(text.contains(expected)) << expected;
    EXPECT_TRUE(encodeJSON(test::fullSnapshot().network).contains("\"sessionDownloadBytes\" : 18446744073709551615,"));
}

// What is served does not depend on the user's locale: byte for byte the same under a
// locale whose decimal separator is a comma.
TEST(StatsSnapshotEncoding, SameBytesUnderACommaLocale)
{
    const StatsSnapshot snapshot = test::fullSnapshot();
    const QByteArray pretty = encodeJSON(snapshot);
    const QByteArray metrics = metricsText(snapshot);
    const test::ScopedCommaLocale comma;
    if (!comma.unavailable().isEmpty())
        GTEST_SKIP() << comma.unavailable().toStdString();
    ASSERT_EQ(QLocale().toString(1.5), QStringLiteral("1,5")) << "the locale is not in force";
    EXPECT_EQ(encodeJSON(snapshot), pretty);
    EXPECT_EQ(metricsText(snapshot), metrics);
    EXPECT_TRUE(pretty.contains("12.5"));
}

TEST(StatsSnapshotEncoding, AbsentOptionalsAreLeftOutAndTextsEscaped)
{
    EXPECT_EQ(nlohmann::json::parse(encodeJSON(StatsSnapshot::Battery{}).toStdString()),
              (nlohmann::json{{"healthStatus", "Unknown"}, {"isPresent", false}}));
    StatsSnapshot::System system;
    system.osVersion = QStringLiteral("a\"b\\c\nd\u0001 – ü");
    EXPECT_EQ(encodeJSON(system),
              "{\n  \"logicalCores\" : 0,\n  \"memoryGB\" : 0,\n  \"osVersion\" : \"a\\\"b\\\\c\\nd\\u0001 – ü\"\n}");
}

TEST(StatsSnapshotEncoding, WhatCannotBeEncodedGivesEmptyObject)
{
    StatsSnapshot snapshot = test::fullSnapshot();
    snapshot.disk.readBytesPerSec = std::numeric_limits<double>::quiet_NaN();
    snapshot.cpu.userPercent = -std::numeric_limits<double>::infinity();
    EXPECT_EQ(encodeJSON(snapshot), "{}");
    EXPECT_EQ(encodeJSON(snapshot.cpu), "{}");
    EXPECT_NE(encodeJSON(snapshot.memory), "{}");
    // Overlong forms, surrogates, truncated sequences, stray continuation bytes.
    for (const char* bad : {"\xC0\xAF", "\xED\xA0\x80", "\xE2\x82", "\x80", "\xF4\x90\x80\x80"})
        EXPECT_FALSE(prettyJSON(nlohmann::json{{"k", bad}})) << bad;
    EXPECT_TRUE(prettyJSON(nlohmann::json{{"k", "\xF0\x9F\x94\x8B \xE2\x82\xAC"}}));
    EXPECT_EQ(snapshotTimestamp(1772356542), "2026-03-01T09:15:42Z");
}

} // namespace
} // namespace tallowmere
