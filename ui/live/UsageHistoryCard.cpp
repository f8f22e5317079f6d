#include "ui/live/UsageHistoryCard.h"

#include "monitors/NetworkFormat.h"
#include "ui/components/HoverButton.h"
#include "ui/components/Label.h"
#include "ui/components/SectionLabel.h"
#include "ui/components/Theme.h"
#include "ui/components/UsageBarGraph.h"
#include "ui/live/UsageHistoryRow.h"
#include "ui/live/WhileShown.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>

namespace tallowmere {

namespace {

QString amount(std::uint64_t bytes)
{
    return formatBytes(static_cast<double>(bytes));
}

// "Downloaded" over its figure, the figure after a dot in the series colour.
QLabel* addTotal(const Theme& theme, QHBoxLayout* row, const QString& caption, const QColor& color, QWidget* parent)
{
    auto* column = new QVBoxLayout;
    column->setSpacing(1);
    auto* head = new QHBoxLayout;
    head->setSpacing(theme.spacing.tight + 2);
    QLabel* dot = makeLabel(QStringLiteral("\u25CF"), Theme::font(8), color, parent);
    head->addWidget(dot);
    head->addWidget(makeLabel(caption, Theme::font(10), theme.colors.secondaryText, parent));
    head->addStretch();
    column->addLayout(head);
    QLabel* value = makeLabel({}, Theme::font(15, QFont::DemiBold), theme.colors.text, parent);
    value->setObjectName(caption + QStringLiteral(".value"));
    column->addWidget(value);
    row->addLayout(column);
    return value;
}

QLabel* columnHeader(const Theme& theme, const QString& text, int width, QWidget* parent)
{
    QLabel* label = makeLabel(text, Theme::font(9.5, QFont::Medium), theme.colors.tertiaryText, parent);
    label->setFixedWidth(width);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

} // namespace

UsageHistoryCard::UsageHistoryCard(const Theme& theme, const QColor& accent, NetworkUsageStore& store,
                                   AppSettings& settings, WallClock clock, QWidget* parent)
    : Card(theme, QStringLiteral("Usage History"), QStringLiteral("clock.arrow.circlepath"), accent, parent)
    , theme_(theme)
    , model_(new NetworkHistoryViewModel(store, settings, std::move(clock), this))
    , recordingNotice_(makeLabel({}, Theme::font(10), theme.colors.warning, this))
    , emptyNotice_(makeLabel(NetworkHistoryViewModel::kNoActivityText, Theme::font(10.5), theme.colors.tertiaryText, this))
    , graph_(new UsageBarGraph(theme, accent, theme.colors.upload, this))
    , appsHeader_(new QWidget(this))
    , appsBox_(new QWidget(this))
    , appsLayout_(new QVBoxLayout(appsBox_))
{
    recordingNotice_->setObjectName(QStringLiteral("notice.recording"));
    recordingNotice_->setWordWrap(true);
    emptyNotice_->setObjectName(QStringLiteral("notice.empty"));
    emptyNotice_->setAlignment(Qt::AlignCenter);
    graph_->setMinimumHeight(150);
    emptyNotice_->setMinimumHeight(graph_->minimumHeight());

    body()->addWidget(makeRangePicker());
    body()->addWidget(recordingNotice_);
    body()->addWidget(graph_);
    body()->addWidget(emptyNotice_);
    body()->addWidget(makeTotals(accent));
    body()->addWidget(new Separator(theme, Qt::Horizontal, this));

    auto* header = new QHBoxLayout(appsHeader_);
    header->setContentsMargins(0, 0, 4, 0);
    header->setSpacing(0);
    header->addWidget(makeLabel(QStringLiteral("Top Apps"), Theme::font(10.5, QFont::DemiBold), theme.colors.text, appsHeader_));
    header->addStretch();
    header->addWidget(columnHeader(theme, QStringLiteral("Download"), UsageHistoryRow::kColumnWidth, appsHeader_));
    header->addWidget(columnHeader(theme, QStringLiteral("Upload"), UsageHistoryRow::kColumnWidth - 4, appsHeader_));
    body()->addWidget(appsHeader_);
    appsLayout_->setContentsMargins(0, 0, 0, 0);
    appsLayout_->setSpacing(0);
    body()->addWidget(appsBox_);

    connect(model_, &NetworkHistoryViewModel::rangeChanged, this, &UsageHistoryCard::showRange);
    connect(model_, &NetworkHistoryViewModel::bucketsChanged, this, &UsageHistoryCard::showSeries);
    connect(model_, &NetworkHistoryViewModel::appsChanged, this, &UsageHistoryCard::showApps);
    connect(model_, &NetworkHistoryViewModel::expandedChanged, this, &UsageHistoryCard::showApps);
    connect(model_, &NetworkHistoryViewModel::recordingNoticeChanged, this, &UsageHistoryCard::showRecordingNotice);
    showRange();
    showSeries();
    showApps();
    showRecordingNotice();
    whileShown(this, [model = QPointer<NetworkHistoryViewModel>(model_)](bool shown) {
        if (model)
            model->setShown(shown);
    });
}

QWidget* UsageHistoryCard::makeRangePicker()
{
    auto* picker = new QWidget(this);
    auto* row = new QHBoxLayout(picker);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(theme_.spacing.tight);
    row->addWidget(makeLabel(QStringLiteral("Range"), Theme::font(10), theme_.colors.secondaryText, picker));
    row->addSpacing(theme_.spacing.small);
    auto* group = new QButtonGroup(picker);
    for (const HistoryRangeInfo& info : kHistoryRanges) {
        auto* button = new HoverButton(theme_, QString::fromLatin1(info.label), picker);
        button->setCheckable(true);
        button->setFont(Theme::font(10, QFont::Medium));
        button->setMinimumWidth(46);
        group->addButton(button);
        rangeButtons_.append(button);
        row->addWidget(button);
        connect(button, &QAbstractButton::clicked, this, [this, range = info.range] { model_->setRange(range); });
    }
    row->addStretch();
    return picker;
}

QWidget* UsageHistoryCard::makeTotals(const QColor& accent)
{
    auto* totals = new QWidget(this);
    auto* row = new QHBoxLayout(totals);
    row->setContentsMargins(0, theme_.spacing.tight, 0, 0);
    row->setSpacing(theme_.spacing.section + 10);
    downloaded_ = addTotal(theme_, row, QStringLiteral("Downloaded"), accent, totals);
    uploaded_ = addTotal(theme_, row, QStringLiteral("Uploaded"), theme_.colors.upload, totals);
    row->addStretch();
    return totals;
}

QAbstractButton* UsageHistoryCard::rangeButton(HistoryRange range) const
{
    return rangeButtons_.value(static_cast<qsizetype>(range));
}

void UsageHistoryCard::showRange()
{
    if (QAbstractButton* button = rangeButton(model_->range()))
        button->setChecked(true);
}

void UsageHistoryCard::showSeries()
{
    QList<UsageBar> bars;
    bars.reserve(static_cast<qsizetype>(model_->buckets().size()));
    for (const UsageBucket& bucket : model_->buckets())
        bars.append({bucket.bytesIn, bucket.bytesOut});
    graph_->setBars(std::move(bars), model_->peakLabel());
    const bool hasData = model_->hasData();
    graph_->setVisible(hasData);
    emptyNotice_->setVisible(!hasData);
    downloaded_->setText(amount(model_->totalIn()));
    uploaded_->setText(amount(model_->totalOut()));
}

void UsageHistoryCard::showApps()
{
    // At most ten apps and twelve endpoints each: rebuilding the rows is cheaper than diffing them.
    // The row that was pressed is still inside its click when the list is rebuilt, so rows go later.
    while (QLayoutItem* item = appsLayout_->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    for (const AppUsageTotal& app : model_->apps()) {
        const bool open = model_->isExpanded(app.id);
        auto* row = new UsageHistoryRow(theme_, UsageHistoryRow::Kind::app, app.name, amount(app.bytesIn),
                                        amount(app.bytesOut), open, appsBox_);
        connect(row, &QAbstractButton::clicked, model_, [model = model_, id = app.id] { model->toggleExpanded(id); });
        appsLayout_->addWidget(row);
        if (!open)
            continue;
        for (const EndpointUsageTotal& endpoint : app.endpoints)
            appsLayout_->addWidget(new UsageHistoryRow(theme_, UsageHistoryRow::Kind::endpoint, endpoint.host,
                                                       amount(endpoint.bytesIn), amount(endpoint.bytesOut), false, appsBox_));
    }
    appsHeader_->setVisible(!model_->apps().empty());
}

void UsageHistoryCard::showRecordingNotice()
{
    const QString notice = model_->recordingNotice();
    recordingNotice_->setText(notice);
    recordingNotice_->setVisible(!notice.isEmpty());
}

QString UsageHistoryCard::downloadedText() const
{
    return downloaded_->text();
}

QString UsageHistoryCard::uploadedText() const
{
    return uploaded_->text();
}

QString UsageHistoryCard::recordingNoticeText() const
{
    return recordingNotice_->isVisibleTo(this) ? recordingNotice_->text() : QString();
}

QString UsageHistoryCard::emptyNoticeText() const
{
    return emptyNotice_->isVisibleTo(this) ? emptyNotice_->text() : QString();
}

QList<UsageHistoryRow*> UsageHistoryCard::rows() const
{
    QList<UsageHistoryRow*> rows;
    for (int i = 0; i < appsLayout_->count(); ++i)
        if (auto* row = qobject_cast<UsageHistoryRow*>(appsLayout_->itemAt(i)->widget()))
            rows.append(row);
    return rows;
}

} // namespace tallowmere
