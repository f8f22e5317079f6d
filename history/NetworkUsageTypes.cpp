#include "history/NetworkUsageTypes.h"

#include <QHash>

#include <algorithm>
#include <limits>

namespace tallowmere {

namespace {

std::uint64_t saturatingAdd(std::uint64_t a, std::uint64_t b)
{
    return b > std::numeric_limits<std::uint64_t>::max() - a ? std::numeric_limits<std::uint64_t>::max() : a + b;
}

template <class Record>
std::uint64_t trafficOf(const Record& record)
{
    return saturatingAdd(record.bytesIn, record.bytesOut);
}

template <class Record>
bool busierFirst(const Record& a, const Record& b)
{
    return trafficOf(a) > trafficOf(b);
}

} // namespace

std::int64_t unixSeconds(WallTime time)
{
    return std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
}

WallTime fromUnixSeconds(std::int64_t seconds)
{
    return WallTime(std::chrono::seconds(seconds));
}

std::vector<UsageBucket> gaplessSeries(std::int64_t start, std::int64_t width, std::int64_t now,
                                       const std::map<std::int64_t, BucketSums>& sums)
{
    std::vector<UsageBucket> series;
    if (width <= 0 || now < start)
        return series;
    series.reserve(static_cast<std::size_t>((now - start) / width + 1));
    for (std::int64_t t = start; t <= now; t += width) {
        const auto it = sums.find(t);
        const BucketSums sum = it == sums.end() ? BucketSums{} : it->second;
        series.push_back(UsageBucket{t, fromUnixSeconds(t), sum.bytesIn, sum.bytesOut});
    }
    return series;
}

std::vector<AppUsageTotal> rankAppTotals(std::vector<EndpointRow> rows)
{
    std::vector<AppUsageTotal> apps;
    QHash<QString, std::size_t> indexOf;
    for (EndpointRow& row : rows) {
        auto it = indexOf.find(row.app);
        if (it == indexOf.end()) {
            it = indexOf.insert(row.app, apps.size());
            apps.push_back(AppUsageTotal{row.app, row.app, 0, 0, {}});
        }
        AppUsageTotal& app = apps[*it];
        app.bytesIn = saturatingAdd(app.bytesIn, row.endpoint.bytesIn);
        app.bytesOut = saturatingAdd(app.bytesOut, row.endpoint.bytesOut);
        app.endpoints.push_back(std::move(row.endpoint));
    }
    for (AppUsageTotal& app : apps) {
        auto& endpoints = app.endpoints;
        const std::size_t kept = std::min(endpoints.size(), kEndpointsPerApp);
        std::partial_sort(endpoints.begin(), endpoints.begin() + static_cast<std::ptrdiff_t>(kept), endpoints.end(),
                          busierFirst<EndpointUsageTotal>);
        endpoints.resize(kept);
    }
    std::stable_sort(apps.begin(), apps.end(), busierFirst<AppUsageTotal>);
    return apps;
}

} // namespace tallowmere
