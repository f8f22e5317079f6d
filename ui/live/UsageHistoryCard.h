#pragma once

#include "history/NetworkHistoryViewModel.h"
#include "ui/components/Card.h"

#include <QList>

class QAbstractButton;
class QLabel;
class QVBoxLayout;

namespace tallowmere {

class AppSettings;
class NetworkUsageStore;
class UsageBarGraph;
class UsageHistoryRow;

// Recorded traffic on the Network page: the range picker, the bar graph with its peak, the
// range's totals and the busiest applications, each opening onto its busiest endpoints. The
// figures come from the store's worker thread, reloaded while the card is on screen.
class UsageHistoryCard : public Card {
    Q_OBJECT
public:
    UsageHistoryCard(const Theme& theme, const QColor& accent, NetworkUsageStore& store, AppSettings& settings,
                     WallClock clock = systemNow, QWidget* parent = nullptr);

    NetworkHistoryViewModel& model() const { return *model_; }
    QAbstractButton* rangeButton(HistoryRange range) const;
    UsageBarGraph* graph() const { return graph_; }
    QString downloadedText() const;
    QString uploadedText() const;
    // The notices on screen, empty when hidden.
    QString recordingNoticeText() const;
    QString emptyNoticeText() const;
    // The application and endpoint rows, top to bottom.
    QList<UsageHistoryRow*> rows() const;

private:
    QWidget* makeRangePicker();
    QWidget* makeTotals(const QColor& accent);
    void showRange();
    void showSeries();
    void showApps();
    void showRecordingNotice();

    const Theme& theme_;
    NetworkHistoryViewModel* model_;
    QList<QAbstractButton*> rangeButtons_;
    QLabel* recordingNotice_;
    QLabel* emptyNotice_;
    UsageBarGraph* graph_;
    QLabel* downloaded_;
    QLabel* uploaded_;
    QWidget* appsHeader_;
    QWidget* appsBox_;
    QVBoxLayout* appsLayout_;
};

} // namespace tallowmere
