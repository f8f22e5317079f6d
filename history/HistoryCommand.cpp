#include "history/HistoryCommand.h"

#include "history/NetworkHistoryViewModel.h"
#include "history/NetworkUsageStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <nlohmann/json.hpp>

#include <optional>

namespace tallowmere {

namespace {

std::string text(const QString& value)
{
    return value.toStdString();
}

nlohmann::json appJson(const AppUsageTotal& app)
{
    nlohmann::json endpoints = nlohmann::json::array();
    for (const EndpointUsageTotal& endpoint : app.endpoints)
        endpoints.push_back({{"ip", text(endpoint.ip)},
                             {"host", text(endpoint.host)},
                             {"bytesIn", endpoint.bytesIn},
                             {"bytesOut", endpoint.bytesOut}});
    return {{"name", text(app.name)}, {"bytesIn", app.bytesIn}, {"bytesOut", app.bytesOut}, {"endpoints", endpoints}};
}

template <class Result, class Query>
Result answerOf(Query query)
{
    std::optional<Result> result;
    query([&](Result answer) { result = std::move(answer); });
    while (!result)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return std::move(*result);
}

} // namespace

HistoryCommandResult runHistoryCommand(const QString& range, const QString& directory, WallClock clock)
{
    const HistoryRangeInfo* info = nullptr;
    for (const HistoryRangeInfo& candidate : kHistoryRanges) {
        if (range.compare(QLatin1String(candidate.label), Qt::CaseInsensitive) == 0)
            info = &candidate;
    }
    if (!info)
        return {1, {}, QStringLiteral("unknown range \"%1\"; use 1H, 24H, 7D or 30D").arg(range)};
    const QString path = QDir(directory).filePath(QLatin1String(NetworkUsageStore::kFileName));
    if (directory.isEmpty() || !QFileInfo(path).isFile())
        return {1, {}, QStringLiteral("no network history at %1 (recording has never run for this user)").arg(path)};

    NetworkUsageStore store(directory, clock, nullptr, NetworkUsageStore::Access::readOnly);
    const WallTime now = clock();
    const WallTime since = now - std::chrono::seconds(info->spanSeconds);
    const auto buckets = answerOf<std::vector<UsageBucket>>(
        [&](auto done) { store.bucketSeries(since, info->bucketSeconds, done); });
    const auto apps = answerOf<std::vector<AppUsageTotal>>([&](auto done) { store.appTotals(since, done); });

    nlohmann::json series = nlohmann::json::array();
    std::uint64_t totalIn = 0, totalOut = 0;
    for (const UsageBucket& bucket : buckets) {
        series.push_back({{"start", bucket.id}, {"bytesIn", bucket.bytesIn}, {"bytesOut", bucket.bytesOut}});
        totalIn += bucket.bytesIn;
        totalOut += bucket.bytesOut;
    }
    nlohmann::json appList = nlohmann::json::array();
    for (std::size_t i = 0; i < apps.size() && i < NetworkHistoryViewModel::kAppsShown; ++i)
        appList.push_back(appJson(apps[i]));
    const nlohmann::json document = {{"range", info->label},
                                     {"bucketSeconds", info->bucketSeconds},
                                     {"since", unixSeconds(since)},
                                     {"downloaded", totalIn},
                                     {"uploaded", totalOut},
                                     {"buckets", series},
                                     {"apps", appList}};
    return {0, QByteArray::fromStdString(document.dump(2)), {}};
}

} // namespace tallowmere
