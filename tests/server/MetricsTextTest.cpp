#include "server/MetricsText.h"
#include "tests/server/SnapshotSamples.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace tallowmere {
namespace {

struct Sample {
    QString name;
    std::map<QString, QString> labels;
    double value = 0;
};

// A reader of the text exposition format, strict enough to refuse what a scraper refuses:
// bad names, unescaped label values, samples before their TYPE, families split apart.
// Returns the samples, or a message saying what is wrong.
std::variant<std::vector<Sample>, QString> readExposition(const QByteArray& text)
{
    static const QRegularExpression help(R"(^# HELP ([a-zA-Z_:][a-zA-Z0-9_:]*) (.*)$)");
    static const QRegularExpression type(R"(^# TYPE ([a-zA-Z_:][a-zA-Z0-9_:]*) (counter|gauge|histogram|summary|untyped)$)");
    static const QRegularExpression sample(
        R"(^([a-zA-Z_:][a-zA-Z0-9_:]*)(?:\{((?:[a-zA-Z_][a-zA-Z0-9_]*="(?:[^"\\\n]|\\[\\"n])*",?)*)\})? (\S+)$)");
    static const QRegularExpression label(R"(([a-zA-Z_][a-zA-Z0-9_]*)="((?:[^"\\]|\\[\\"n])*)\")");

    if (!text.endsWith('\n'))
        return QStringLiteral("missing final line feed");
    std::vector<Sample> samples;
    std::set<QString> typed, finished;
    QString current;
    for (const QByteArray& raw : text.chopped(1).split('\n')) {
        const QString line = QString::fromUtf8(raw);
        if (const auto m = help.match(line); m.hasMatch())
            continue;
        if (const auto m = type.match(line); m.hasMatch()) {
            if (!typed.insert(m.captured(1)).second)
                return "second TYPE for " + m.captured(1);
            if (!current.isEmpty())
                finished.insert(current);
            current = m.captured(1);
            continue;
        }
        const auto m = sample.match(line);
        if (!m.hasMatch())
            return "unreadable line: " + line;
        Sample s;
        s.name = m.captured(1);
        if (s.name != current || finished.count(s.name))
            return "sample outside its family: " + line;
        for (auto it = label.globalMatch(m.captured(2)); it.hasNext();) {
            const auto l = it.next();
            const QString escaped = l.captured(2);
            QString value;
            for (qsizetype i = 0; i < escaped.size(); ++i) {
                if (escaped[i] == u'\\' && i + 1 < escaped.size())
                    value += escaped[++i] == u'n' ? QChar(u'\n') : escaped[i];
                else
                    value += escaped[i];
            }
            s.labels[l.captured(1)] = value;
        }
        bool ok = false;
        s.value = m.captured(3).toDouble(&ok);
        if (!ok && m.captured(3) != "NaN" && m.captured(3) != "+Inf" && m.captured(3) != "-Inf")
            return "bad value: " + line;
        samples.push_back(std::move(s));
    }
    return samples;
}

std::vector<Sample> readOrFail(const QByteArray& text)
{
    auto result = readExposition(text);
    if (auto* error = std::get_if<QString>(&result)) {
        ADD_FAILURE() << error->toStdString() << "\n" << text.toStdString();
        return {};
    }
    return std::get<std::vector<Sample>>(result);
}

const Sample* find(const std::vector<Sample>& samples, const char* name)
{
    for (const Sample& s : samples) {
        if (s.name == QLatin1String(name))
            return &s;
    }
    return nullptr;
}

TEST(MetricsText, ValidatorRefusesWhatScrapersRefuse)
{
    for (const char* bad : {"x 1", "# TYPE x gauge\n1x 2\n", "# TYPE x gauge\nx{a=\"b\\q\"} 1\n",
                            "# TYPE x gauge\nx{a=\"b\"c\"} 1\n", "x 1\n", "# TYPE x gauge\nx one\n",
                            "# TYPE x gauge\nx 1\n# TYPE y gauge\ny 1\nx 2\n", "# TYPE x gauge\n# TYPE x gauge\n"})
        EXPECT_TRUE(std::holds_alternative<QString>(readExposition(bad))) << bad;
}

TEST(MetricsText, SnapshotNumbersAppearInBaseUnits)
{
    const StatsSnapshot snapshot = test::fullSnapshot();
    const auto samples = readOrFail(metricsText(snapshot));
    ASSERT_FALSE(samples.empty());
    const auto value = [&](const char* name) {
        const Sample* s = find(samples, name);
        EXPECT_NE(s, nullptr) << name;
        return s ? s->value : -1;
    };
    EXPECT_EQ(value("tallowmere_cpu_usage_percent"), 12.5);
    EXPECT_EQ(value("tallowmere_memory_used_bytes"), 9.75 * 1073741824.0);
    EXPECT_EQ(value("tallowmere_disk_read_bytes_per_second"), 1048576.5);
    EXPECT_EQ(value("tallowmere_disk_write_bytes_per_second"), 0.1);
    EXPECT_EQ(value("tallowmere_network_session_upload_bytes_total"), 42);
    EXPECT_EQ(value("tallowmere_battery_present"), 1);
    EXPECT_EQ(value("tallowmere_battery_charging"), 0);
    EXPECT_EQ(value("tallowmere_battery_time_remaining_seconds"), 245 * 60);
    EXPECT_EQ(value("tallowmere_system_logical_cores"), 8);
    // A 64-bit counter is written as an integer, not rounded through a double.
    EXPECT_TRUE(metricsText(snapshot).contains("\ntallowmere_network_session_download_bytes_total 18446744073709551615\n"));

    const Sample* system = find(samples, "tallowmere_system_info");
    ASSERT_NE(system, nullptr);
    EXPECT_EQ(system->value, 1);
    EXPECT_EQ(system->labels.at("computer_name"), snapshot.system.computerName.value());
    EXPECT_EQ(system->labels.at("cpu_brand"), snapshot.system.cpuBrand.value());
    EXPECT_EQ(find(samples, "tallowmere_battery_info")->labels.at("health_status"), "Normal");
}

TEST(MetricsText, AbsentFiguresHaveNoSeriesAndOddTextsStayValid)
{
    StatsSnapshot snapshot; // no battery, nothing known about the machine
    snapshot.system.osVersion = QStringLiteral("line one\nline \"two\" \\ end ü");
    snapshot.cpu.usagePercent = std::numeric_limits<double>::quiet_NaN();
    const QByteArray text = metricsText(snapshot);
    const auto samples = readOrFail(text);
    EXPECT_EQ(find(samples, "tallowmere_battery_charge_percent"), nullptr);
    EXPECT_EQ(find(samples, "tallowmere_battery_charging"), nullptr);
    EXPECT_FALSE(text.contains("tallowmere_battery_charge_cycles"));
    EXPECT_EQ(find(samples, "tallowmere_battery_present")->value, 0);
    const Sample* system = find(samples, "tallowmere_system_info");
    ASSERT_NE(system, nullptr);
    EXPECT_EQ(system->labels.count("model"), 0u);
    EXPECT_EQ(system->labels.at("os_version"), snapshot.system.osVersion);
    EXPECT_TRUE(text.contains("\ntallowmere_cpu_usage_percent NaN\n"));
    EXPECT_EQ(escapeLabelValue(QStringLiteral("a\\\"\n")), "a\\\\\\\"\\n");
}

// The format checker that ships with Prometheus, when installed (scripts/install-deps.sh test).
TEST(MetricsText, PrometheusOwnCheckerAcceptsTheText)
{
    const QString promtool = QStandardPaths::findExecutable(QStringLiteral("promtool"));
    if (promtool.isEmpty())
        GTEST_SKIP() << "promtool is not installed";
    StatsSnapshot odd;
    odd.system.osVersion = QStringLiteral("quote \" backslash \\ newline \n end");
    for (const StatsSnapshot& snapshot : {test::fullSnapshot(), odd}) {
        QProcess check;
        check.start(promtool, {QStringLiteral("check"), QStringLiteral("metrics")});
        ASSERT_TRUE(check.waitForStarted());
        check.write(metricsText(snapshot));
        check.closeWriteChannel();
        ASSERT_TRUE(check.waitForFinished(30000));
        EXPECT_EQ(check.exitCode(), 0) << check.readAllStandardOutput().toStdString()
                                       << check.readAllStandardError().toStdString();
    }
}

} // namespace
} // namespace tallowmere
