#include "tests/support/TestSupport.h"

#include <QProcess>
#include <QScopeGuard>
#include <QTcpServer>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tallowmere {
namespace {

using test::runProgram;

// The program itself, headless with the server on for this run, answered by curl.
TEST(ServerEndToEnd, HeadlessProgramServesStatsMetricsAndMCP)
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    const QString port = QString::number(probe.serverPort()), base = QStringLiteral("http://127.0.0.1:") + port;
    probe.close();
    QProcess program;
    const auto stop = qScopeGuard([&] {
        program.terminate();
        if (!program.waitForFinished(20000))
            program.kill();
    });
    program.start(test::programPath(), {QStringLiteral("--headless"), QStringLiteral("--server"), QStringLiteral("on"), QStringLiteral("--port"), port});
    test::ProgramRun stats;
    EXPECT_TRUE(test::waitUntil([&] { return (stats = runProgram(QStringLiteral("curl"), {QStringLiteral("-sf"), base + "/stats"})).exitCode == 0; }, 20000));
    const auto document = nlohmann::json::parse(stats.out.toStdString(), nullptr, false);
    ASSERT_TRUE(document.is_object()) << stats.out.constData();
    EXPECT_GT(document.value("/memory/totalGB"_json_pointer, 0.0), 0);
    EXPECT_TRUE(document.contains("timestamp"));

    EXPECT_TRUE(runProgram(QStringLiteral("curl"), {QStringLiteral("-sf"), base + "/metrics"}).out.contains("\ntallowmere_memory_total_bytes "));
    const auto mcp = runProgram(QStringLiteral("curl"), {QStringLiteral("-sf"), QStringLiteral("-d"), QStringLiteral(R"({"id":1,"method":"tools/list"})"), base + "/mcp"});
    EXPECT_TRUE(mcp.out.startsWith(R"({"id":1,"jsonrpc":"2.0","result":{"tools":[{"description")")) << mcp.out.constData();
}

TEST(ServerEndToEnd, SnapshotOptionPrintsOneDocumentWithRealRates)
{
    const auto [exitCode, out, err] = runProgram(test::programPath(), {QStringLiteral("--snapshot")});
    EXPECT_EQ(exitCode, 0) << err.constData();
    EXPECT_TRUE(out.startsWith("{\n  \"battery\" : {"));
    const auto document = nlohmann::json::parse(out.toStdString(), nullptr, false);
    ASSERT_TRUE(document.is_object()) << out.constData();
    EXPECT_GT(document.value("/cpu/usagePercent"_json_pointer, 0.0), 0); // a rate needs two samples
}

} // namespace
} // namespace tallowmere
