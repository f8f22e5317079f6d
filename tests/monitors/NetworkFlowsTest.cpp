#include "monitors/NetworkFlows.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <algorithm>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

SockDiagRecord tcpSocket(std::uint64_t inode, int family, const char* remote, std::optional<ByteCounts> bytes)
{
    SockDiagRecord record{.family = family, .inode = inode, .bytes = bytes};
    inet_pton(family, remote, record.remote.data());
    return record;
}

std::vector<FlowDelta> sorted(std::vector<FlowDelta> deltas)
{
    std::sort(deltas.begin(), deltas.end(),
              [](const FlowDelta& a, const FlowDelta& b) { return std::tie(a.app, a.ip) < std::tie(b.app, b.ip); });
    return deltas;
}

TEST(NetworkFlows, NamesAndAddresses)
{
    for (const auto& [label, app] : {std::pair{"Safari.812", "Safari"}, {"python3.11.4242", "python3.11"},
                                     {"Some.App", "Some.App"}, {"kernel_task", "kernel_task"}})
        EXPECT_EQ(applicationName(QString::fromLatin1(label)), QString::fromLatin1(app));
    for (const char* dropped : {"", "*", "0.0.0.0", "::", "127.0.0.1", "::1"})
        EXPECT_FALSE(isRecordedRemoteAddress(QString::fromLatin1(dropped))) << dropped;
    for (const char* kept : {"127.0.0.2", "fe80::1", "17.253.1.2"})
        EXPECT_TRUE(isRecordedRemoteAddress(QString::fromLatin1(kept))) << kept;
}

TEST(NetworkFlows, TableSumsConnectionsPerProcessAndAddress)
{
    const std::vector<SockDiagRecord> records = {
        tcpSocket(1, AF_INET, "17.253.1.2", ByteCounts{10, 20}),
        tcpSocket(2, AF_INET, "17.253.1.2", ByteCounts{5, 1}),      // second connection, same process and peer
        tcpSocket(3, AF_INET, "17.253.1.2", ByteCounts{100, 100}),  // another process
        tcpSocket(4, AF_INET6, "2606:4700::1", ByteCounts{7, 8}),
        tcpSocket(5, AF_INET, "127.0.0.1", ByteCounts{9, 9}),  // loopback peer
        tcpSocket(6, AF_INET, "0.0.0.0", ByteCounts{9, 9}),
        tcpSocket(7, AF_INET, "8.8.8.8", ByteCounts{9, 9}),    // nobody we know holds it
        tcpSocket(0, AF_INET, "8.8.4.4", ByteCounts{9, 9}),    // held by no process at all
        tcpSocket(1, AF_INET, "1.1.1.1", std::nullopt),        // no counters
    };

    const QString safari = "Safari.812", curl = "curl.90";
    const FlowTable table = buildFlowTable(records, [&](std::uint64_t inode) -> const QString* {
        if (inode == 3)
            return &curl;
        return inode == 7 || inode == 0 ? nullptr : &safari;
    });
    EXPECT_EQ(table, (FlowTable{{FlowKey{"Safari.812", "17.253.1.2"}, {15, 21}},
                                {FlowKey{"curl.90", "17.253.1.2"}, {100, 100}},
                                {FlowKey{"Safari.812", "2606:4700::1"}, {7, 8}}}));
}

TEST(NetworkFlows, RoundTurnsGrowthIntoPerAppDeltas)
{
    const FlowTable previous = {
        {FlowKey{"Safari.812", "17.253.1.2"}, {100, 200}},
        {FlowKey{"Safari.990", "17.253.1.2"}, {50, 50}},
        {FlowKey{"curl.7", "1.1.1.1"}, {500, 500}},
        {FlowKey{"idle.8", "9.9.9.9"}, {1, 1}},
    };
    const FlowTable current = {
        {FlowKey{"Safari.812", "17.253.1.2"}, {130, 260}},
        {FlowKey{"Safari.990", "17.253.1.2"}, {60, 55}},
        {FlowKey{"curl.7", "1.1.1.1"}, {400, 510}},  // reused slot: in went backwards
        {FlowKey{"idle.8", "9.9.9.9"}, {1, 1}},       // no traffic
        {FlowKey{"new.9", "8.8.8.8"}, {1000, 1000}},  // first sight only sets the baseline
    };
    const QHash<QString, QString> hosts = {{"17.253.1.2", "apple.example"}};
    const FlowRound round = computeFlowRound(previous, current, hosts);

    const std::vector<FlowDelta> expected = {
        FlowDelta{"Safari", "17.253.1.2", "apple.example", 40, 65},
        FlowDelta{"curl", "1.1.1.1", "1.1.1.1", 0, 10},
    };
    EXPECT_EQ(sorted(round.deltas), expected);
    std::vector<QString> addresses = round.addressesWithTraffic;
    std::sort(addresses.begin(), addresses.end());
    EXPECT_EQ(addresses, (std::vector<QString>{"1.1.1.1", "17.253.1.2"}));

    EXPECT_TRUE(computeFlowRound({}, current, hosts).deltas.empty());
}

} // namespace
} // namespace tallowmere
