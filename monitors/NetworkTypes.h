#pragma once

#include <QHashFunctions>
#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

namespace tallowmere {

// One point of the one-minute throughput graph; rates in bytes per second.
struct NetworkHistoryPoint {
    qint64 id = 0;
    double download = 0;
    double upload = 0;

    bool operator==(const NetworkHistoryPoint&) const = default;
};

// A pair of cumulative byte counters: received and sent.
struct ByteCounts {
    std::uint64_t inBytes = 0;
    std::uint64_t outBytes = 0;

    bool operator==(const ByteCounts&) const = default;
};

// One process (label "name.pid") or application talking to one remote address.
struct FlowKey {
    QString processKey;
    QString remoteIP;

    bool operator==(const FlowKey&) const = default;
};

struct FlowKeyHash {
    std::size_t operator()(const FlowKey& key) const noexcept
    {
        return qHashMulti(0, key.processKey, key.remoteIP);
    }
};

// Cumulative per-connection counters of one sample, summed per (process label, address).
using FlowTable = std::unordered_map<FlowKey, ByteCounts, FlowKeyHash>;

// One application's traffic to one remote address since the previous per-app round.
struct FlowDelta {
    QString app;
    QString ip;
    QString host;
    std::uint64_t inBytes = 0;
    std::uint64_t outBytes = 0;

    bool operator==(const FlowDelta&) const = default;
};

// Receives each round's deltas with the time the round's sample was taken.
using FlowDeltasHandler =
    std::function<void(const std::vector<FlowDelta>&, std::chrono::system_clock::time_point)>;

} // namespace tallowmere
