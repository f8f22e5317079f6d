#include "ui/live/LiveCards.h"

#include "power/BatteryMonitoringService.h"
#include "ui/components/Card.h"
#include "ui/components/Icons.h"
#include "ui/components/InfoRow.h"
#include "ui/components/Label.h"
#include "ui/components/ProgressBar.h"
#include "ui/components/Theme.h"
#include "ui/live/WhileShown.h"
#include "ui/pages/InventoryPage.h"
#include "ui/pages/LinuxTexts.h"
#include "ui/popover/PopoverTexts.h"
#include "ui/window/WindowServices.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tallowmere {

namespace {

using Rows = QList<std::pair<QString, QString>>;

QString percentText(int percent)
{
    return QString::number(percent) + u'%';
}

QString milliampHours(int value)
{
    return QString::number(value) + QStringLiteral(" mAh");
}

QColor healthInk(const Theme& theme, BatteryHealthColor color)
{
    switch (color) {
    case BatteryHealthColor::green: return theme.colors.battery;
    case BatteryHealthColor::orange: return theme.colors.warning;
    case BatteryHealthColor::red: return theme.colors.critical;
    case BatteryHealthColor::secondary: break;
    }
    return theme.colors.secondaryText;
}

// A stack of label/value rows that is replaced whole; readings change a few times a minute at
// most, so rebuilding the rows costs nothing worth keeping widgets for.
class RowList : public QWidget {
public:
    RowList(const Theme& theme, QWidget* parent)
        : QWidget(parent)
        , theme_(theme)
        , layout_(new QVBoxLayout(this))
    {
        layout_->setContentsMargins(0, 0, 0, 0);
        layout_->setSpacing(0);
    }

    bool isEmpty() const { return rows_.isEmpty(); }

    void setRows(const Rows& rows)
    {
        setVisible(!rows.isEmpty());
        if (rows == rows_)
            return;
        // The same labels as before (a new reading of the same battery): new values in place.
        const bool sameLabels = std::equal(rows.begin(), rows.end(), rows_.begin(), rows_.end(),
                                           [](const auto& a, const auto& b) { return a.first == b.first; });
        rows_ = rows;
        if (sameLabels) {
            for (qsizetype i = 0; i < rows.size(); ++i)
                static_cast<InfoRow*>(layout_->itemAt(int(i))->widget())->setValue(rows[i].second);
            return;
        }
        while (QLayoutItem* item = layout_->takeAt(0)) {
            delete item->widget();
            delete item;
        }
        for (const auto& [label, value] : rows)
            layout_->addWidget(new InfoRow(theme_, label, value, false, false, this));
    }

private:
    const Theme& theme_;
    QVBoxLayout* layout_;
    Rows rows_;
};

// Charge, level icon and state; without a battery, which of the two absent cases applies.
class BatteryLiveCard : public Card {
public:
    BatteryLiveCard(const Theme& theme, const QColor& accent, QWidget* parent)
        : Card(theme, QStringLiteral("Battery"), QStringLiteral("bolt.fill"), accent, parent)
        , accent_(accent)
        , level_(new QLabel(this))
        , charge_(makeLabel({}, Theme::font(24, QFont::DemiBold), theme.colors.text, this))
        , state_(makeLabel({}, Theme::font(10.5), theme.colors.secondaryText, this))
        , bar_(new ProgressBar(theme, accent, this))
        , absentBox_(new QWidget(this))
        , absent_(makeLabel({}, Theme::font(11.5, QFont::Medium), theme.colors.text, absentBox_))
        , absentNote_(makeLabel(linuxTexts::noInternalBatteryNote(), Theme::font(10), theme.colors.secondaryText, absentBox_))
    {
        level_->setObjectName(QStringLiteral("batteryLevel"));
        charge_->setObjectName(QStringLiteral("batteryCharge"));
        state_->setObjectName(QStringLiteral("batteryState"));
        absent_->setObjectName(QStringLiteral("noBattery"));
        absentNote_->setObjectName(QStringLiteral("noBatteryNote"));
        state_->setWordWrap(true);
        absentNote_->setWordWrap(true);

        auto* head = new QHBoxLayout;
        head->setSpacing(theme.spacing.large);
        head->addWidget(level_);
        auto* texts = new QVBoxLayout;
        texts->setSpacing(2);
        texts->addWidget(charge_);
        texts->addWidget(state_);
        head->addLayout(texts, 1);
        body()->addLayout(head);
        body()->addWidget(bar_);

        // Without a battery: a muted battery with the reason below it, as the other empty states.
        auto* absentLayout = new QVBoxLayout(absentBox_);
        absentLayout->setContentsMargins(0, theme.spacing.medium, 0, theme.spacing.medium);
        absentLayout->setSpacing(theme.spacing.small);
        auto* absentIcon = new QLabel(absentBox_);
        absentIcon->setPixmap(Icons::tinted(QStringLiteral("battery.25percent"), theme.colors.tertiaryText, 32,
                                            devicePixelRatioF()));
        for (QLabel* label : {absentIcon, absent_, absentNote_}) {
            label->setAlignment(Qt::AlignCenter);
            absentLayout->addWidget(label);
        }
        body()->addWidget(absentBox_);
    }

    void display(const BatteryInfo& battery)
    {
        const bool present = battery.isPresent;
        for (QWidget* part : {static_cast<QWidget*>(level_), static_cast<QWidget*>(charge_),
                              static_cast<QWidget*>(state_), static_cast<QWidget*>(bar_)})
            part->setVisible(present);
        const bool onMains = battery.powerSource == QLatin1StringView("AC Power");
        absentBox_->setVisible(!present);
        absentNote_->setVisible(onMains);
        if (!present) {
            absent_->setText(onMains ? QStringLiteral("On AC power \u2014 no battery detected")
                                     : QStringLiteral("No battery detected"));
            return;
        }
        const int percent = battery.percentage.value_or(0);
        const QString icon = batteryLevelIconName(percent);
        if (icon != level_->accessibleName()) {
            level_->setPixmap(Icons::tinted(icon, accent_, 44, devicePixelRatioF()));
            level_->setAccessibleName(icon);
        }
        charge_->setText(battery.percentage ? percentText(percent) : QStringLiteral("\u2014"));
        state_->setText(battery.statusLine());
        bar_->setFraction(percent / 100.0);
    }

private:
    QColor accent_;
    QLabel* level_;
    QLabel* charge_;
    QLabel* state_;
    ProgressBar* bar_;
    QWidget* absentBox_;
    QLabel* absent_;
    QLabel* absentNote_;
};

// The health word with its mark, the capacity figures and the note on how they are estimated.
class BatteryHealthCard : public Card {
public:
    BatteryHealthCard(const Theme& theme, const QColor& accent, QWidget* parent)
        : Card(theme, QStringLiteral("Battery Health"), QStringLiteral("battery.100percent"), accent, parent)
        , theme_(theme)
        , mark_(new QLabel(this))
        , word_(makeLabel({}, Theme::font(15, QFont::DemiBold), theme.colors.text, this))
        , rows_(new RowList(theme, this))
        , note_(makeLabel(linuxTexts::batteryHealthNote(), Theme::font(9.5), theme.colors.tertiaryText, this))
        , unavailable_(makeEmptyState(theme, QString(), QStringLiteral("Battery health unavailable"), this))
    {
        setCaption(QStringLiteral("Health information from system battery data"));
        word_->setObjectName(QStringLiteral("healthWord"));
        mark_->setObjectName(QStringLiteral("healthMark"));
        note_->setObjectName(QStringLiteral("healthNote"));
        note_->setWordWrap(true);
        auto* head = new QHBoxLayout;
        head->setSpacing(theme.spacing.small);
        head->addWidget(mark_);
        head->addWidget(word_, 1);
        body()->addLayout(head);
        body()->addWidget(rows_);
        body()->addWidget(note_);
        body()->addWidget(unavailable_);
    }

    void display(const BatteryInfo& battery)
    {
        const std::optional<int> maximum = battery.maximumCapacityPercent();
        const QString word = battery.healthStatus();
        const bool known = maximum || battery.cycleCount || word != QLatin1StringView("Unknown");
        for (QWidget* part : {static_cast<QWidget*>(mark_), static_cast<QWidget*>(word_), static_cast<QWidget*>(note_)})
            part->setVisible(known);
        unavailable_->setVisible(!known);
        Rows rows;
        if (known) {
            const QColor ink = healthInk(theme_, battery.healthColor());
            const bool fine = battery.healthColor() == BatteryHealthColor::green;
            const QString mark = fine ? QStringLiteral("checkmark.seal.fill") : QStringLiteral("exclamationmark.triangle");
            if (word != word_->text()) {
                mark_->setPixmap(Icons::tinted(mark, ink, 18, devicePixelRatioF()));
                mark_->setAccessibleName(mark);
                word_->setText(word);
                QPalette palette = word_->palette();
                palette.setColor(QPalette::WindowText, ink);
                word_->setPalette(palette);
            }
            if (maximum)
                rows.append({QStringLiteral("Maximum capacity"), percentText(*maximum)});
            if (battery.maxCapacity && battery.designCapacity)
                rows.append({QStringLiteral("Capacity (Max / Design)"),
                             QString::number(*battery.maxCapacity) + QStringLiteral(" / ")
                                 + milliampHours(*battery.designCapacity)});
            if (battery.cycleCount)
                rows.append({QStringLiteral("Cycle count"), QString::number(*battery.cycleCount) + QStringLiteral(" cycles")});
        }
        rows_->setRows(rows);
    }

private:
    const Theme& theme_;
    QLabel* mark_;
    QLabel* word_;
    RowList* rows_;
    QLabel* note_;
    QWidget* unavailable_;
};

Rows detailRows(const BatteryInfo& b)
{
    Rows rows;
    const auto add = [&rows](const char* label, const std::optional<QString>& value) {
        if (value)
            rows.append({QString::fromLatin1(label), *value});
    };
    const auto yesNo = [](const std::optional<bool>& flag) -> std::optional<QString> {
        if (!flag)
            return std::nullopt;
        return *flag ? QStringLiteral("Yes") : QStringLiteral("No");
    };
    const auto number = [](const std::optional<int>& value, const char* unit) -> std::optional<QString> {
        if (!value)
            return std::nullopt;
        return QString::number(*value) + QLatin1StringView(unit);
    };
    add("Power Source", b.powerSource);
    add("AC Power", b.powerSource ? yesNo(*b.powerSource == QLatin1StringView("AC Power")) : std::nullopt);
    add("Charging", yesNo(b.isCharging));
    add("Fully Charged", yesNo(b.isFullyCharged));
    add("Time Remaining", b.isCharging.value_or(false) ? std::nullopt : b.timeRemainingText());
    add("Time to Full Charge", b.isCharging.value_or(false) ? b.timeToFullText() : std::nullopt);
    add("Current Capacity", number(b.currentCapacity, " mAh"));
    add("Max Capacity", number(b.maxCapacity, " mAh"));
    add("Design Capacity", number(b.designCapacity, " mAh"));
    add("Cycle Count", number(b.cycleCount, ""));
    add("Amperage", number(b.amperage, " mA"));
    if (b.voltage)
        rows.append({QStringLiteral("Voltage"), QString::asprintf("%.2f V", *b.voltage / 1000.0)});
    add("Condition", b.health);
    return rows;
}

// Every figure the reading has, one row each.
class BatteryDetailsCard : public Card {
public:
    BatteryDetailsCard(const Theme& theme, const QColor& accent, QWidget* parent)
        : Card(theme, QStringLiteral("Battery Details"), QStringLiteral("list.bullet.rectangle"), accent, parent)
        , rows_(new RowList(theme, this))
        , empty_(makeEmptyState(theme, QString(), QStringLiteral("No battery information available"), this))
    {
        body()->addWidget(rows_);
        body()->addWidget(empty_);
    }

    void display(const BatteryInfo& battery)
    {
        rows_->setRows(detailRows(battery));
        empty_->setVisible(rows_->isEmpty());
    }

private:
    RowList* rows_;
    QWidget* empty_;
};

} // namespace

void addBatteryLiveCards(const Theme& theme, const WindowServices& services, InventoryPage& page)
{
    BatteryMonitoringService* service = services.battery;
    if (!service)
        return;
    const QColor accent = categoryAccent(SpecCategory::battery, theme);
    auto* live = new BatteryLiveCard(theme, accent, &page);
    auto* health = new BatteryHealthCard(theme, accent, &page);
    auto* details = new BatteryDetailsCard(theme, accent, &page);
    page.liveCardsLayout()->addWidget(live);
    auto* pair = new QHBoxLayout;
    pair->setSpacing(theme.spacing.section);
    pair->addWidget(health, 1, Qt::AlignTop);
    pair->addWidget(details, 1, Qt::AlignTop);
    page.liveCardsLayout()->addLayout(pair);

    // Without a battery the health and details cards would only repeat that there is none.
    const auto show = [live, health, details, guard = QPointer<BatteryMonitoringService>(service)] {
        if (!guard)
            return;
        const BatteryInfo& battery = guard->battery();
        live->display(battery);
        health->display(battery);
        details->display(battery);
        health->setVisible(battery.isPresent);
        details->setVisible(battery.isPresent);
    };
    QObject::connect(service, &BatteryMonitoringService::batteryChanged, live, show);
    show();
    // While the page is on screen its figures stay live even with the tray strip switched off.
    whileShown(live, [guard = QPointer<BatteryMonitoringService>(service)](bool shown) {
        if (guard)
            guard->setPageActive(shown);
    });
}

} // namespace tallowmere
