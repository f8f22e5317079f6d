#include "monitors/NetworkFlowLedger.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <map>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

SockDiagRecord tcp(std::uint64_t cookie, std::uint64_t inode, ByteCounts bytes, const char* remote = "203.0.113.7")
{
    SockDiagRecord record{.family = AF_INET, .inode = inode, .cookie = cookie, .cgroupId = {}, .bytes = bytes};
    inet_pton(AF_INET, remote, record.remote.data());
    return record;
}

// Owners by inode, changeable between rounds.
struct Owners {
    std::map<std::uint64_t, QString> labels;
    NetworkFlowLedger::Labeller labeller()
    {
        return [this](std::uint64_t inode) -> const QString* {
            const auto it = labels.find(inode);
            return it == labels.end() ? nullptr : &it->second;
        };
    }
};

const FlowKey kFirefox{"firefox-esr.812", "203.0.113.7"};

TEST(NetworkFlowLedger, BaselineOnlyAtTheFirstRoundLaterSocketsFromZeroClosesAddTheirLastBytes)
{
    Owners owners{{{11, "firefox-esr.812"}, {12, "firefox-esr.812"}}};
    NetworkFlowLedger ledger;
    // A close reported before the baseline, and a socket alive at it: neither is counted.
    FlowSample first = ledger.apply({tcp(1, 11, {100, 100})}, {tcp(9, 0, {5, 5})}, owners.labeller());
    EXPECT_TRUE(first.deltas.empty());
    EXPECT_EQ(first.unattributed, ByteCounts{});

    // Socket 2 was born after the first round: all of it counts.
    FlowSample second = ledger.apply({tcp(1, 11, {150, 120}), tcp(2, 12, {30, 5})}, {}, owners.labeller());
    EXPECT_EQ(second.deltas, (FlowTable{{kFirefox, {80, 25}}}));

    // Socket 1 closed after its last dump; socket 3 lived and died between two rounds.
    FlowSample third = ledger.apply({tcp(2, 12, {30, 5})}, {tcp(1, 0, {170, 130}), tcp(3, 0, {7, 3})}, owners.labeller());
    EXPECT_EQ(third.deltas, (FlowTable{{kFirefox, {20, 10}}}));
    EXPECT_EQ(third.unattributed, (ByteCounts{7, 3}));
    EXPECT_EQ(ledger.trackedCount(), 1u);

    // A restart takes a new baseline: socket 2's growth while stopped is not counted.
    ledger.restart();
    EXPECT_TRUE(ledger.apply({tcp(2, 12, {90, 9})}, {}, owners.labeller()).deltas.empty());
    EXPECT_EQ(ledger.apply({tcp(2, 12, {91, 9})}, {}, owners.labeller()).deltas, (FlowTable{{kFirefox, {1, 0}}}));
}

TEST(NetworkFlowLedger, OwnersFoundLateHandedOverOrphanedOrNever)
{
    Owners owners;
    NetworkFlowLedger ledger;
    ledger.apply({}, {}, owners.labeller());

    // No owner yet: bytes are held back, then credited in full to the owner found later.
    EXPECT_TRUE(ledger.apply({tcp(1, 11, {10, 1})}, {}, owners.labeller()).deltas.empty());
    owners.labels[11] = "firefox-esr.812";
    EXPECT_EQ(ledger.apply({tcp(1, 11, {15, 2})}, {}, owners.labeller()).deltas, (FlowTable{{kFirefox, {15, 2}}}));

    // Handed to another process: later bytes count for the new holder. Once the socket is
    // closing (inode 0) it keeps the owner it had.
    owners.labels[11] = "sleep.900";
    EXPECT_EQ(ledger.apply({tcp(1, 11, {20, 2})}, {}, owners.labeller()).deltas,
              (FlowTable{{FlowKey{"sleep.900", "203.0.113.7"}, {5, 0}}}));
    EXPECT_EQ(ledger.apply({tcp(1, 0, {21, 2})}, {}, owners.labeller()).deltas,
              (FlowTable{{FlowKey{"sleep.900", "203.0.113.7"}, {1, 0}}}));

    // Never owned: everything it moved is unattributable when it closes.
    ledger.apply({tcp(1, 0, {21, 2}), tcp(2, 77, {40, 4})}, {}, owners.labeller());
    FlowSample closed = ledger.apply({tcp(1, 0, {21, 2})}, {tcp(2, 0, {50, 5})}, owners.labeller());
    EXPECT_TRUE(closed.deltas.empty());
    EXPECT_EQ(closed.unattributed, (ByteCounts{50, 5}));

    // Loopback peers and sockets without counters are not tracked at all.
    SockDiagRecord noCounters = tcp(5, 11, {});
    noCounters.bytes.reset();
    ledger.apply({tcp(4, 11, {1, 1}, "127.0.0.1"), noCounters}, {}, owners.labeller());
    EXPECT_EQ(ledger.trackedCount(), 1u);
}

TEST(NetworkFlowLedger, SocketThatLeftTheDumpWaitsForItsCloseThenIsForgotten)
{
    Owners owners{{{11, "firefox-esr.812"}, {12, "firefox-esr.812"}}};
    NetworkFlowLedger ledger;
    ledger.apply({tcp(1, 11, {0, 0}), tcp(2, 12, {0, 0})}, {}, owners.labeller());
    ledger.apply({tcp(1, 11, {10, 10})}, {}, owners.labeller());
    // The close notice of socket 1 arrives one round late, still matched.
    EXPECT_EQ(ledger.apply({}, {tcp(1, 0, {12, 10})}, owners.labeller()).deltas, (FlowTable{{kFirefox, {2, 0}}}));
    for (int round = 0; round < NetworkFlowLedger::kRoundsToWaitForClose; ++round)
        ledger.apply({}, {}, owners.labeller());
    EXPECT_EQ(ledger.trackedCount(), 0u);

    // Without close notices a socket that left the dump is forgotten at once.
    ledger.apply({tcp(3, 11, {1, 1})}, {}, owners.labeller(), false);
    ledger.apply({}, {}, owners.labeller(), false);
    EXPECT_EQ(ledger.trackedCount(), 0u);
}

} // namespace
} // namespace tallowmere
