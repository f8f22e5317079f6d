#include "tests/support/TestSupport.h"

#include <QProcess>
#include <QScopeGuard>
#include <QTcpServer>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tallowmere {
namespace {

const QString kProgram = QStringLiteral(TALLOWMERE_BINARY_DIR "/tallowmere");

// Exit code and output of a child process, waited for.
std::pair<int, QByteArray> run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    const bool finished = process.waitForFinished(30000);
    return {finished ? process.exitCode() : -1, process.readAllStandardOutput()};
}

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
    program.start(kProgram, {QStringLiteral("--headless"), QStringLiteral("--server"), QStringLiteral("on"), QStringLiteral("--port"), port});
    std::pair<int, QByteArray> stats;
    EXPECT_TRUE(test::waitUntil([&] { return (stats = run(QStringLiteral("curl"), {QStringLiteral("-sf"), base + "/stats"})).first == 0; }, 20000));
    const auto document = nlohmann::json::parse(stats.second.toStdString(), nullptr, false);
    ASSERT_TRUE(document.is_object()) << stats.second.constData();
    EXPECT_GT(document.value("/memory/totalGB"_json_pointer, 0.0), 0);
    EXPECT_TRUE(document.contains("timestamp"));

    EXPECT_TRUE(run(QStringLiteral("curl"), {QStringLiteral("-sf"), base + "/metrics"}).second.contains("\ntallowmere_memory_total_bytes "));
    const auto mcp = run(QStringLiteral("curl"), {QStringLiteral("-sf"), QStringLiteral("-d"), QStringLiteral(R"({"id":1,"method":"tools/list"})"), base + "/mcp"});
    EXPECT_TRUE(mcp.second.startsWith(R"({"id":1,"jsonrpc":"2.0","result":{"tools":[{"description")")) << mcp.second.constData();
}

TEST(ServerEndToEnd, SnapshotOptionPrintsOneDocumentWithRealRates)
{
    const auto [exitCode, out] = run(kProgram, {QStringLiteral("--snapshot")});
    EXPECT_EQ(exitCode, 0);
    EXPECT_TRUE(out.startsWith("{\n  \"battery\" : {"));
    const auto document = nlohmann::json::parse(out.toStdString(), nullptr, false);
    ASSERT_TRUE(document.is_object()) << out.constData();
    EXPECT_GT(document.value("/cpu/usagePercent"_json_pointer, 0.0), 0); // a rate needs two samples
}

} // namespace
} // namespace tallowmere
