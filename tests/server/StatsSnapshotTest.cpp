#include "server/JSONText.h"
#include "server/StatsSnapshot.h"
#include "tests/server/SnapshotSamples.h"

#include <QByteArrayList>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

namespace tallowmere {
namespace {

TEST(StatsSnapshotEncoding, SectionIsPrettyPrintedWithSortedKeysAndSpacedColons)
{
    const StatsSnapshot::CPU cpu{12.5, 8.25, 4.25};
    EXPECT_EQ(encodeJSON(cpu),
              "{\n"
              "  \"systemPercent\" : 4.25,\n"
              "  \"usagePercent\" : 12.5,\n"
              "  \"userPercent\" : 8.25\n"
              "}");
}

TEST(StatsSnapshotEncoding, WholeDocumentNestsSectionsInAlphabeticalOrder)
{
    const QByteArray text = encodeJSON(test::fullSnapshot());
    const QList<QByteArray> lines = text.split('\n');
    QList<QByteArray> topKeys;
    for (const QByteArray& line : lines) {
        if (line.startsWith("  \"") && !line.startsWith("   "))
            topKeys += line.mid(3, line.indexOf('"', 3) - 3);
    }
    EXPECT_EQ(topKeys, (QList<QByteArray>{"battery", "cpu", "disk", "memory", "network", "system", "timestamp"}));
    EXPECT_TRUE(text.contains("  \"cpu\" : {\n    \"systemPercent\" : 4.25,\n"));
    EXPECT_TRUE(text.endsWith("  \"timestamp\" : \"2026-03-01T09:15:42Z\"\n}"));

    // Nested keys are sorted too, byte-wise ("computerName" before "cpuBrand").
    const auto system = text.indexOf("\"system\"");
    EXPECT_LT(text.indexOf("\"computerName\"", system), text.indexOf("\"cpuBrand\"", system));
    EXPECT_LT(text.indexOf("\"logicalCores\"", system), text.indexOf("\"memoryGB\"", system));

    // And it reads back as the same values.
    const auto parsed = nlohmann::json::parse(text.toStdString());
    EXPECT_EQ(parsed, toJSON(test::fullSnapshot()));
}

TEST(StatsSnapshotEncoding, NumbersKeepFullPrecisionInShortestForm)
{
    StatsSnapshot::Memory memory;
    memory.usagePercent = 0.1 + 0.2; // 0.30000000000000004
    memory.usedGB = 100;             // a whole double prints without a fraction
    memory.freeGB = 1e21;
    memory.totalGB = 5e-324;
    memory.activeGB = 15.599999999999999645;
    const auto object = nlohmann::json::parse(encodeJSON(memory).toStdString());
    EXPECT_EQ(object["usagePercent"].get<double>(), 0.1 + 0.2);
    EXPECT_EQ(object["totalGB"].get<double>(), 5e-324);
    const QByteArray text = encodeJSON(memory);
    EXPECT_TRUE(text.contains("\"usagePercent\" : 0.30000000000000004"));
    EXPECT_TRUE(text.contains("\"usedGB\" : 100,"));
    EXPECT_TRUE(text.contains("\"activeGB\" : 15.6,"));
    EXPECT_TRUE(text.contains("\"freeGB\" : 1e+21,"));

    StatsSnapshot::Network network;
    network.sessionDownloadBytes = 18446744073709551615ull; // beyond what a double holds exactly
    EXPECT_TRUE(encodeJSON(network).contains("\"sessionDownloadBytes\" : 18446744073709551615,"));
}

TEST(StatsSnapshotEncoding, AbsentOptionalsHaveNoKeyAndRequiredOnesAlwaysAppear)
{
    StatsSnapshot::Battery none; // a machine without a battery
    const auto battery = nlohmann::json::parse(encodeJSON(none).toStdString());
    EXPECT_EQ(battery, (nlohmann::json{{"healthStatus", "Unknown"}, {"isPresent", false}}));

    StatsSnapshot::Battery partial = test::fullSnapshot().battery;
    partial.percentage.reset();
    const QByteArray text = encodeJSON(partial);
    EXPECT_FALSE(text.contains("percentage"));
    EXPECT_FALSE(text.contains("null"));
    EXPECT_TRUE(text.contains("\"isCharging\" : false"));

    StatsSnapshot::System system;
    const auto object = nlohmann::json::parse(encodeJSON(system).toStdString());
    EXPECT_EQ(object, (nlohmann::json{{"logicalCores", 0}, {"memoryGB", 0}, {"osVersion", ""}}));
}

TEST(StatsSnapshotEncoding, ValueThatCannotBeEncodedGivesEmptyObject)
{
    StatsSnapshot snapshot = test::fullSnapshot();
    snapshot.disk.readBytesPerSec = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(encodeJSON(snapshot), "{}");
    EXPECT_EQ(encodeJSON(snapshot.disk), "{}");
    EXPECT_NE(encodeJSON(snapshot.cpu), "{}"); // other sections are unaffected

    snapshot = test::fullSnapshot();
    snapshot.cpu.userPercent = -std::numeric_limits<double>::infinity();
    EXPECT_EQ(encodeJSON(snapshot.cpu), "{}");

    // Text that is not UTF-8 cannot be written either.
    nlohmann::json broken = {{"name", std::string("\xC3\x28")}};
    EXPECT_FALSE(prettyJSON(broken).has_value());
}

TEST(StatsSnapshotEncoding, TextsAreEscaped)
{
    StatsSnapshot::System system;
    system.osVersion = QStringLiteral("a\"b\\c\nd\te\u0001 – ü");
    const QByteArray text = encodeJSON(system);
    EXPECT_TRUE(text.contains(R"("osVersion" : "a\"b\\c\nd\te\u0001 – ü")"));
    EXPECT_EQ(nlohmann::json::parse(text.toStdString())["osVersion"], system.osVersion.toStdString());
}

TEST(JSONText, ContainersAndUTF8Checks)
{
    EXPECT_EQ(prettyJSONOrEmpty(nlohmann::json::object()), "{}");
    EXPECT_EQ(prettyJSONOrEmpty(nlohmann::json::array({1, nullptr, true})), "[\n  1,\n  null,\n  true\n]");
    EXPECT_EQ(prettyJSONOrEmpty({{"a", nlohmann::json::array()}, {"b", {{"c", -3}}}}),
              "{\n  \"a\" : [],\n  \"b\" : {\n    \"c\" : -3\n  }\n}");
    // Overlong forms, surrogates, truncated sequences and stray continuation bytes.
    for (const char* bad : {"\xC0\xAF", "\xED\xA0\x80", "\xE2\x82", "\x80", "\xF4\x90\x80\x80"})
        EXPECT_FALSE(prettyJSON(nlohmann::json(std::string(bad)))) << bad;
    EXPECT_TRUE(prettyJSON(nlohmann::json(std::string("\xF0\x9F\x94\x8B \xE2\x82\xAC"))));
    EXPECT_EQ(shortestNumber(std::nan("")), std::nullopt);
    EXPECT_EQ(shortestNumber(-0.5), "-0.5");
}

TEST(StatsSnapshotEncoding, TimestampIsUtcWholeSecondsWithZ)
{
    EXPECT_EQ(snapshotTimestamp(1772356542), "2026-03-01T09:15:42Z");
    EXPECT_EQ(snapshotTimestamp(0), "1970-01-01T00:00:00Z");
}

} // namespace
} // namespace tallowmere
