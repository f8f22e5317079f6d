#include "monitors/NetworkFlows.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

std::vector<FlowDelta> sorted(std::vector<FlowDelta> deltas)
{
    std::sort(deltas.begin(), deltas.end(),
              [](const FlowDelta& a, const FlowDelta& b) { return std::tie(a.app, a.ip) < std::tie(b.app, b.ip); });
    return deltas;
}

TEST(NetworkFlows, NamesAndAddresses)
{
    for (const auto& [label, app] : {std::pair{"firefox-esr.812", "firefox-esr"}, {"python3.11.4242", "python3.11"},
                                     {"Some.App", "Some.App"}, {"kernel_task", "kernel_task"}})
        EXPECT_EQ(applicationName(QString::fromLatin1(label)), QString::fromLatin1(app));
    for (const char* dropped : {"", "*", "0.0.0.0", "::", "127.0.0.1", "::1"})
        EXPECT_FALSE(isRecordedRemoteAddress(QString::fromLatin1(dropped))) << dropped;
    for (const char* kept : {"127.0.0.2", "fe80::1", "203.0.113.7"})
        EXPECT_TRUE(isRecordedRemoteAddress(QString::fromLatin1(kept))) << kept;
}

TEST(NetworkFlows, RoundSumsProcessesPerApplicationAndAddress)
{
    const FlowTable deltas = {
        {FlowKey{"firefox-esr.812", "203.0.113.7"}, {30, 60}},
        {FlowKey{"firefox-esr.990", "203.0.113.7"}, {10, 5}},
        {FlowKey{"curl.7", "1.1.1.1"}, {0, 10}},
        {FlowKey{"idle.8", "9.9.9.9"}, {0, 0}},  // no traffic, no delta, no lookup
    };
    const QHash<QString, QString> hosts = {{"203.0.113.7", "mirror.example.org"}};
    const FlowRound round = perAppRound(deltas, hosts);

    const std::vector<FlowDelta> expected = {
        FlowDelta{"curl", "1.1.1.1", "1.1.1.1", 0, 10},
        FlowDelta{"firefox-esr", "203.0.113.7", "mirror.example.org", 40, 65},
    };
    EXPECT_EQ(sorted(round.deltas), expected);
    std::vector<QString> addresses = round.addressesWithTraffic;
    std::sort(addresses.begin(), addresses.end());
    EXPECT_EQ(addresses, (std::vector<QString>{"1.1.1.1", "203.0.113.7"}));
}

} // namespace
} // namespace tallowmere
