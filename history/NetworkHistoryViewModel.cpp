#include "history/NetworkHistoryViewModel.h"

#include "core/LoopTask.h"
#include "core/Property.h"
#include "core/AppSettings.h"
#include "history/NetworkUsageStore.h"
#include "monitors/NetworkFormat.h"

#include <QPointer>

#include <algorithm>

namespace tallowmere {

const HistoryRangeInfo& historyRangeInfo(HistoryRange range)
{
    return kHistoryRanges[static_cast<std::size_t>(range)];
}

NetworkHistoryViewModel::NetworkHistoryViewModel(NetworkUsageStore& store, AppSettings& settings, WallClock clock,
                                                 QObject* parent)
    : QObject(parent)
    , store_(store)
    , settings_(settings)
    , clock_(std::move(clock))
{
    connect(&settings_, &AppSettings::networkRecordingEnabledChanged, this,
            &NetworkHistoryViewModel::recordingNoticeChanged);
}

NetworkHistoryViewModel::~NetworkHistoryViewModel() = default;

void NetworkHistoryViewModel::setRange(HistoryRange range)
{
    if (!assignProperty(this, range_, range, &NetworkHistoryViewModel::rangeChanged))
        return;
    if (refresh_)
        restartRefresh();
}

void NetworkHistoryViewModel::toggleExpanded(const QString& appId)
{
    if (!expanded_.remove(appId))
        expanded_.insert(appId);
    emit expandedChanged();
}

std::uint64_t NetworkHistoryViewModel::totalIn() const
{
    std::uint64_t total = 0;
    for (const UsageBucket& bucket : buckets_)
        total += bucket.bytesIn;
    return total;
}

std::uint64_t NetworkHistoryViewModel::totalOut() const
{
    std::uint64_t total = 0;
    for (const UsageBucket& bucket : buckets_)
        total += bucket.bytesOut;
    return total;
}

bool NetworkHistoryViewModel::hasData() const
{
    return std::any_of(buckets_.begin(), buckets_.end(),
                       [](const UsageBucket& bucket) { return bucket.bytesIn != 0 || bucket.bytesOut != 0; });
}

std::uint64_t NetworkHistoryViewModel::peak() const
{
    std::uint64_t peak = 0;
    for (const UsageBucket& bucket : buckets_)
        peak = std::max(peak, bucket.bytesIn + bucket.bytesOut);
    return peak;
}

QString NetworkHistoryViewModel::peakLabel() const
{
    const std::uint64_t value = peak();
    return value == 0 ? QString() : QStringLiteral("Peak ") + formatBytes(static_cast<double>(value));
}

QString NetworkHistoryViewModel::recordingNotice() const
{
    return settings_.networkRecordingEnabled() ? QString() : kRecordingOffNotice;
}

QString NetworkHistoryViewModel::emptyNotice() const
{
    return hasData() ? QString() : kNoActivityText;
}

void NetworkHistoryViewModel::setShown(bool shown)
{
    if (shown == isShown())
        return;
    if (shown)
        restartRefresh();
    else
        refresh_.reset();
}

void NetworkHistoryViewModel::restartRefresh()
{
    refresh_.reset();
    refresh_ = LoopTask::start(kRefreshPeriod, [this] { reload(); });
}

void NetworkHistoryViewModel::reload()
{
    const HistoryRangeInfo& info = historyRangeInfo(range_);
    const WallTime since = clock_() - std::chrono::seconds(info.spanSeconds);
    QPointer<NetworkHistoryViewModel> self(this);
    store_.bucketSeries(since, info.bucketSeconds, [self](std::vector<UsageBucket> buckets) {
        if (self)
            replaceProperty(self.data(), self->buckets_, std::move(buckets), &NetworkHistoryViewModel::bucketsChanged);
    });
    store_.appTotals(since, [self](std::vector<AppUsageTotal> apps) {
        if (!self)
            return;
        if (apps.size() > kAppsShown)
            apps.resize(kAppsShown);
        replaceProperty(self.data(), self->apps_, std::move(apps), &NetworkHistoryViewModel::appsChanged);
    });
}

} // namespace tallowmere
