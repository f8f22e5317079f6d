#include "tests/support/TestSupport.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTcpServer>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <memory>

namespace tallowmere {
namespace {

const QString kProgram = QStringLiteral(TALLOWMERE_BINARY_DIR "/tallowmere");

quint16 freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

struct Curl {
    int exitCode = -1;
    QByteArray out;
};

Curl curl(const QStringList& arguments)
{
    QProcess process;
    process.start(QStandardPaths::findExecutable(QStringLiteral("curl")), arguments);
    Curl result;
    if (!process.waitForFinished(20000))
        return result;
    result.exitCode = process.exitCode();
    result.out = process.readAllStandardOutput();
    return result;
}

bool programOffers(const char* option)
{
    QProcess help;
    help.start(kProgram, {QStringLiteral("--help")});
    help.waitForFinished(20000);
    return (help.readAllStandardOutput() + help.readAllStandardError()).contains(option);
}

// The program itself, headless with the server switched on for this run, answered by curl.
TEST(ServerEndToEnd, HeadlessProgramServesStatsMetricsAndMCP)
{
    const quint16 port = freePort();
    const QString base = QStringLiteral("http://127.0.0.1:%1").arg(port);
    QProcess program;
    // Whatever happens below, the program does not outlive the test.
    const std::unique_ptr<QProcess, void (*)(QProcess*)> reaper(&program, [](QProcess* p) {
        if (p->state() != QProcess::NotRunning) {
            p->kill();
            p->waitForFinished(5000);
        }
    });
    program.start(kProgram, {QStringLiteral("--headless"), QStringLiteral("--server"), QStringLiteral("on"),
                             QStringLiteral("--port"), QString::number(port)});
    ASSERT_TRUE(program.waitForStarted());

    Curl stats;
    ASSERT_TRUE(test::waitUntil(
        [&] {
            stats = curl({QStringLiteral("-sf"), base + QStringLiteral("/stats")});
            return stats.exitCode == 0;
        },
        20000))
        << program.readAllStandardError().toStdString();
    const auto document = nlohmann::json::parse(stats.out.toStdString());
    for (const char* key : {"battery", "cpu", "disk", "memory", "network", "system", "timestamp"})
        EXPECT_TRUE(document.contains(key)) << key;
    EXPECT_GT(document["memory"]["totalGB"].get<double>(), 0);

    const Curl metrics = curl({QStringLiteral("-sf"), base + QStringLiteral("/metrics")});
    EXPECT_EQ(metrics.exitCode, 0);
    EXPECT_TRUE(metrics.out.contains("\n# TYPE tallowmere_memory_total_bytes gauge\n"));

    const Curl mcp = curl({QStringLiteral("-sf"), QStringLiteral("-H"), QStringLiteral("Content-Type: application/json"),
                           QStringLiteral("-d"), QStringLiteral(R"({"jsonrpc":"2.0","id":1,"method":"tools/list"})"),
                           base + QStringLiteral("/mcp")});
    ASSERT_EQ(mcp.exitCode, 0);
    EXPECT_EQ(nlohmann::json::parse(mcp.out.toStdString())["result"]["tools"].size(), 6u);

    const Curl wrongMethod = curl({QStringLiteral("-s"), QStringLiteral("-o"), QStringLiteral("/dev/null"),
                                   QStringLiteral("-w"), QStringLiteral("%{http_code}"), base + QStringLiteral("/mcp")});
    EXPECT_EQ(wrongMethod.out, "405");

    ::kill(static_cast<pid_t>(program.processId()), SIGTERM);
    EXPECT_TRUE(program.waitForFinished(20000));
}

TEST(ServerEndToEnd, SnapshotOptionPrintsOneDocumentWithRealRates)
{
    if (!programOffers("--snapshot"))
        GTEST_SKIP() << "this build of the program has no --snapshot option yet";
    QProcess program;
    program.start(kProgram, {QStringLiteral("--snapshot")});
    ASSERT_TRUE(program.waitForFinished(30000));
    EXPECT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
    const QByteArray out = program.readAllStandardOutput();
    ASSERT_TRUE(out.startsWith("{\n  \"battery\" : {"));
    const auto document = nlohmann::json::parse(out.toStdString());
    EXPECT_GT(document["cpu"]["usagePercent"].get<double>(), 0); // a real rate needs two samples
    EXPECT_GT(document["disk"]["totalGB"].get<double>(), 0);
}

} // namespace
} // namespace tallowmere
