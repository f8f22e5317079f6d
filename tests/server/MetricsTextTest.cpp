#include "server/MetricsText.h"
#include "tests/server/SnapshotSamples.h"

#include <QProcess>
#include <QStandardPaths>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

// Prometheus's own format checker (installed with the test packages).
QString promtoolVerdict(const QByteArray& text)
{
    const QString promtool = QStandardPaths::findExecutable(QStringLiteral("promtool"));
    if (promtool.isEmpty())
        return QStringLiteral("promtool is missing: scripts/install-deps.sh test");
    QProcess check;
    check.start(promtool, {QStringLiteral("check"), QStringLiteral("metrics")});
    check.write(text);
    check.closeWriteChannel();
    if (!check.waitForFinished(30000) || check.exitCode() != 0)
        return QString::fromUtf8(check.readAllStandardOutput() + check.readAllStandardError());
    return {};
}

TEST(MetricsText, FiguresInBaseUnitsAcceptedByTheFormatChecker)
{
    const QByteArray text = metricsText(test::fullSnapshot());
    EXPECT_EQ(promtoolVerdict(text), QString());
    for (const char* line : {"# HELP tallowmere_cpu_usage_percent Total processor load in percent.\n"
                             "# TYPE tallowmere_cpu_usage_percent gauge\ntallowmere_cpu_usage_percent 12.5\n",
                             "\ntallowmere_memory_used_bytes 10468982784\n",
                             "\n# TYPE tallowmere_network_session_download_bytes_total counter\n"
                             "tallowmere_network_session_download_bytes_total 18446744073709551615\n",
                             "\ntallowmere_battery_charging 0\n", "\ntallowmere_battery_time_remaining_seconds 14700\n",
                             "\ntallowmere_battery_info{health_status=\"Normal\",power_source=\"Battery Power\"} 1\n",
                             R"(computer_name="desk \"7\"\\north"} 1)"})
        EXPECT_TRUE(text.contains(line)) << line;
}

TEST(MetricsText, AbsentFiguresHaveNoSeriesAndOddTextsStayValid)
{
    StatsSnapshot snapshot; // no battery, nothing known about the machine
    snapshot.system.osVersion = QStringLiteral("line one\nquote \" backslash \\ ü");
    snapshot.cpu.usagePercent = std::numeric_limits<double>::quiet_NaN();
    const QByteArray text = metricsText(snapshot);
    EXPECT_EQ(promtoolVerdict(text), QString());
    EXPECT_TRUE(text.contains("\ntallowmere_battery_present 0\n"));
    EXPECT_TRUE(text.contains("\ntallowmere_cpu_usage_percent NaN\n"));
    EXPECT_TRUE(text.contains("tallowmere_system_info{os_version=\"line one\\nquote \\\" backslash \\\\ ü\"} 1\n"));
    for (const char* absent : {"tallowmere_battery_charge_percent", "tallowmere_battery_charging", "model="})
        EXPECT_FALSE(text.contains(absent)) << absent;
}

} // namespace
} // namespace tallowmere
