#pragma once

#include "history/NetworkUsageTypes.h"
#include "monitors/MonitorCommon.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <array>
#include <memory>
#include <vector>

namespace tallowmere {

class AppSettings;
class LoopTask;
class NetworkUsageStore;

// The ranges of the usage-history card, in picker order.
enum class HistoryRange { hour, day, week, month };

struct HistoryRangeInfo {
    HistoryRange range;
    const char* label;  // also the picker text
    std::int64_t spanSeconds;
    std::int64_t bucketSeconds;
};

inline constexpr std::array<HistoryRangeInfo, 4> kHistoryRanges{{
    {HistoryRange::hour, "1H", 3600, 60},
    {HistoryRange::day, "24H", 86400, 1800},
    {HistoryRange::week, "7D", 604800, 10800},
    {HistoryRange::month, "30D", 2592000, 43200},
}};

const HistoryRangeInfo& historyRangeInfo(HistoryRange range);

// What the usage-history card shows: the series and top apps of the chosen range, reloaded at
// once when shown or when the range changes and then every 15 seconds while shown, which apps
// are expanded, and the notices. Holds no widgets; the Network page binds to it.
class NetworkHistoryViewModel : public QObject {
    Q_OBJECT
public:
    static constexpr std::size_t kAppsShown = 10;
    static constexpr std::chrono::milliseconds kRefreshPeriod{15'000};
    static inline const QString kRecordingOffNotice = QStringLiteral(
        "Background recording is off \u2014 history only accumulates while recording is enabled in Settings.");
    static inline const QString kNoActivityText = QStringLiteral("No recorded activity in this range yet.");

    NetworkHistoryViewModel(NetworkUsageStore& store, AppSettings& settings, WallClock clock = systemNow,
                            QObject* parent = nullptr);
    ~NetworkHistoryViewModel() override;

    HistoryRange range() const { return range_; }
    void setRange(HistoryRange range);

    const std::vector<UsageBucket>& buckets() const { return buckets_; }
    const std::vector<AppUsageTotal>& apps() const { return apps_; }

    const QSet<QString>& expanded() const { return expanded_; }
    bool isExpanded(const QString& appId) const { return expanded_.contains(appId); }
    void toggleExpanded(const QString& appId);

    // Derived from the series.
    std::uint64_t totalIn() const;
    std::uint64_t totalOut() const;
    bool hasData() const;
    std::uint64_t peak() const;
    // "Peak 1.5 MB", or empty when there is nothing to draw.
    QString peakLabel() const;

    // The notices the card shows; empty when none applies.
    QString recordingNotice() const;
    QString emptyNotice() const;

    // The card came on screen or left it: starts or stops the 15-second refresh.
    void setShown(bool shown);
    bool isShown() const { return refresh_ != nullptr; }

    // Asks the store for the current range's series and app totals.
    void reload();

signals:
    void rangeChanged();
    void bucketsChanged();
    void appsChanged();
    void expandedChanged();
    // The recording switch changed, and with it recordingNotice().
    void recordingNoticeChanged();

private:
    void restartRefresh();

    NetworkUsageStore& store_;
    AppSettings& settings_;
    WallClock clock_;
    HistoryRange range_ = HistoryRange::hour;
    std::vector<UsageBucket> buckets_;
    std::vector<AppUsageTotal> apps_;
    QSet<QString> expanded_;
    std::unique_ptr<LoopTask> refresh_;
};

} // namespace tallowmere
