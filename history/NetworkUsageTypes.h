#pragma once

#include <QString>

#include <chrono>
#include <cstdint>
#include <map>
#include <vector>

namespace tallowmere {

using WallTime = std::chrono::system_clock::time_point;

// Whole seconds since 1970-01-01 00:00 UTC, truncated.
std::int64_t unixSeconds(WallTime time);
WallTime fromUnixSeconds(std::int64_t seconds);

// Traffic of all applications and endpoints in one bucket of a series.
struct UsageBucket {
    std::int64_t id = 0;  // bucket start in seconds since 1970
    WallTime start;
    std::uint64_t bytesIn = 0;
    std::uint64_t bytesOut = 0;

    bool operator==(const UsageBucket&) const = default;
};

// One application's traffic with one remote address over a range.
struct EndpointUsageTotal {
    QString id;  // the address
    QString ip;
    QString host;  // the stored name, or the address when none is known
    std::uint64_t bytesIn = 0;
    std::uint64_t bytesOut = 0;

    bool operator==(const EndpointUsageTotal&) const = default;
};

// One application's traffic over a range: totals over all its endpoints, and its busiest
// endpoints.
struct AppUsageTotal {
    QString id;  // the application name
    QString name;
    std::uint64_t bytesIn = 0;
    std::uint64_t bytesOut = 0;
    std::vector<EndpointUsageTotal> endpoints;

    bool operator==(const AppUsageTotal&) const = default;
};

inline constexpr std::size_t kEndpointsPerApp = 12;

// A gapless series from `start` in steps of `width` through the bucket holding `now`; buckets
// missing from `sums` (keyed by bucket start) are zero.
struct BucketSums {
    std::uint64_t bytesIn = 0;
    std::uint64_t bytesOut = 0;
};
std::vector<UsageBucket> gaplessSeries(std::int64_t start, std::int64_t width, std::int64_t now,
                                       const std::map<std::int64_t, BucketSums>& sums);

// Per-(app, address) totals grouped into applications: each app's totals cover all its
// endpoints, its endpoint list keeps the busiest kEndpointsPerApp, and apps come busiest first.
struct EndpointRow {
    QString app;
    EndpointUsageTotal endpoint;
};
std::vector<AppUsageTotal> rankAppTotals(std::vector<EndpointRow> rows);

} // namespace tallowmere
